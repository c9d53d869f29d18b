// Speed of the motion paths an animator edits: rebuilding the sampled form of a long
// Catmull-Rom path after one key moves, which happens on every drag in the path view.
// The goal is about 10 ms for a 2,000-key path.

#include "motion/CCatmullCurve.h"
#include "motion/CSpline.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <memory>

namespace {

void BM_RebuildCatmullPathAfterOneMove(benchmark::State& state) {
    const int keys = static_cast<int>(state.range(0));
    const int frames = keys * 10;
    CFunctionPlace velocity = std::make_unique<CSpline>(0, 0.0, frames, 100.0);
    CCatmullCurve path(0, C3DPoint(0, 0, 0), frames, C3DPoint(0, 0, 0), &velocity, 0);
    for (int k = 1; k < keys - 1; ++k)
        path.AddKey(C3DPoint(100.0 * std::cos(k * 0.1), 100.0 * std::sin(k * 0.13), k), 10.0 * k, nullptr,
                    k % 50 == 0);
    path.Discretize(0);
    int round = 0;
    for (auto _ : state) {
        path.MoveKey(keys / 2, C3DPoint(5.0 * (round++ % 7), 0, 0), nullptr);
        path.Discretize(0);
        benchmark::DoNotOptimize(path.GetCache().RecordCount());
    }
    state.counters["records"] = static_cast<double>(path.GetCache().RecordCount());
}
BENCHMARK(BM_RebuildCatmullPathAfterOneMove)->Arg(200)->Arg(2000)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
