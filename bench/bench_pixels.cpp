// Speed of the pixel loops on a 4096 x 4096 image, against memcpy of the same bytes in the
// same run: BGRA to RGBA conversion and the box-average scale.

#include "render/BM_Convert.h"
#include "render/BM_PixelMap.h"

#include <benchmark/benchmark.h>
#include <cstring>
#include <random>

namespace {

constexpr uint32_t kSide = 4096;

const BM_PixelMap<BM_PixelBgra32>& Source() {
    static const BM_PixelMap<BM_PixelBgra32> map = [] {
        BM_PixelMap<BM_PixelBgra32> m(kSide, kSide);
        std::mt19937 rng(1);
        for (uint32_t i = 0; i < m.Size(); i += 4) {
            const uint32_t v = rng();
            std::memcpy(m.Data() + i, &v, 4);
        }
        return m;
    }();
    return map;
}

void PixelsMemcpy(benchmark::State& state) {
    const auto& src = Source();
    std::vector<uint8_t> dst(src.Size());
    for (auto _ : state) {
        std::memcpy(dst.data(), src.Data(), src.Size());
        benchmark::DoNotOptimize(dst.data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * src.Size());
}
BENCHMARK(PixelsMemcpy)->Unit(benchmark::kMillisecond);

void PixelsConvertBgraToRgba(benchmark::State& state) {
    const auto& src = Source();
    BM_PixelMap<BM_PixelRgba32> dst(kSide, kSide);
    for (auto _ : state) {
        BM_Convert(dst, src);
        benchmark::DoNotOptimize(dst.Data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * src.Size());
}
BENCHMARK(PixelsConvertBgraToRgba)->Unit(benchmark::kMillisecond);

// Bytes of the source read per second.
void PixelsBoxAverage(benchmark::State& state) {
    const auto& src = Source();
    const auto side = uint32_t(state.range(0));
    BM_PixelMap<BM_PixelBgra32> dst(side, side);
    for (auto _ : state) {
        BM_Scale(src, side, side, dst);
        benchmark::DoNotOptimize(dst.Data());
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(int64_t(state.iterations()) * src.Size());
}
BENCHMARK(PixelsBoxAverage)->Arg(2048)->Arg(1000)->Arg(64)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
