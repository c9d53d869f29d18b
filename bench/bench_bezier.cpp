// Speed of the geometry kernel on the sizes the drawing tools meet: crossing two long
// strokes, the inside test on a big outline, and fitting one long brush stroke at button up.

#include "vector/GR_BezierPath2d.h"
#include "vector/GR_BezierPath2dFitter.h"

#include <benchmark/benchmark.h>
#include <cmath>
#include <random>

namespace {

// A wandering stroke of cubic segments, each about `length` long, on the grid.
GR_BezierPath2d Wander(uint32_t seed, int segments, double length) {
    std::mt19937 rng(seed);
    std::normal_distribution<double> turn(0.0, 0.6);
    GR_BezierPath2d path;
    GR_Point2d p{2500.0, 2500.0};
    double heading = 0.0;
    for (int i = 0; i < segments; ++i) {
        const double h1 = heading + turn(rng) * 0.5, h2 = h1 + turn(rng) * 0.5;
        const GR_Point2d c1 = p + GR_Point2d{std::cos(heading), std::sin(heading)} * (length / 3.0);
        const GR_Point2d end = p + GR_Point2d{std::cos(h1), std::sin(h1)} * length;
        const GR_Point2d c2 = end - GR_Point2d{std::cos(h2), std::sin(h2)} * (length / 3.0);
        path.AppendSegment(
            GR_Bezier2d(GR_SnapToGrid(p), GR_SnapToGrid(c1), GR_SnapToGrid(c2), GR_SnapToGrid(end)));
        p = GR_SnapToGrid(end);
        heading = h2;
        // Stay inside the reference drawing.
        if (p.x < 500 || p.x > 4500 || p.y < 500 || p.y > 4500)
            heading += 3.14159;
    }
    return path;
}

void BM_IntersectTwo2000SegmentPaths(benchmark::State& state) {
    const GR_BezierPath2d a = Wander(1, 2000, 40.0), b = Wander(2, 2000, 40.0);
    size_t hits = 0;
    for (auto _ : state) {
        std::vector<GR_PathHit> out;
        a.IntersectAll(b, false, out);
        hits = out.size();
        benchmark::DoNotOptimize(out.data());
    }
    state.counters["hits"] = static_cast<double>(hits);
}
BENCHMARK(BM_IntersectTwo2000SegmentPaths)->Unit(benchmark::kMillisecond);

void BM_Contains10000PointPath(benchmark::State& state) {
    // A closed wobbly outline of 10,000 straight edges.
    std::vector<GR_Point2d> points;
    for (int i = 0; i < 10000; ++i) {
        const double a = 2.0 * 3.14159265358979 * i / 10000.0;
        const double r = 2000.0 + 300.0 * std::sin(37.0 * a);
        points.push_back(GR_SnapToGrid(GR_Point2d{2500.0 + r * std::cos(a), 2500.0 + r * std::sin(a)}));
    }
    points.push_back(points.front());
    const GR_BezierPath2d outline = GR_BezierPath2d::Polyline(points);
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> c(0.0, 5000.0);
    std::vector<GR_Point2d> queries;
    for (int i = 0; i < 256; ++i)
        queries.push_back(GR_SnapToGrid(GR_Point2d{c(rng), c(rng)}));
    size_t k = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(outline.Contains(queries[k++ % queries.size()], false));
    }
}
BENCHMARK(BM_Contains10000PointPath)->Unit(benchmark::kMicrosecond);

void BM_Fit10000PointerSamples(benchmark::State& state) {
    // One long brush stroke: pointer samples about 1.5 units apart with hand jitter.
    const GR_BezierPath2d truth = Wander(4, 400, 40.0);
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> jitter(-0.3, 0.3);
    std::vector<GR_Point2d> samples;
    for (size_t i = 0; i < truth.SegmentCount() && samples.size() < 10000; ++i) {
        GR_Bezier2d segment;
        truth.Segment(i, segment);
        for (int k = 0; k < 25 && samples.size() < 10000; ++k)
            samples.push_back(segment.Evaluate(k / 25.0) + GR_Point2d{jitter(rng), jitter(rng)});
    }
    const GR_BezierPath2d raw = GR_BezierPath2d::Polyline(samples);
    const GR_BezierPath2dFitter fitter(static_cast<double>(state.range(0)) / 10.0);
    size_t segments = 0;
    for (auto _ : state) {
        GR_BezierPath2d fitted;
        fitter.Fit(raw, fitted);
        segments = fitted.SegmentCount();
    }
    state.counters["points"] = static_cast<double>(samples.size());
    state.counters["segments"] = static_cast<double>(segments);
}
BENCHMARK(BM_Fit10000PointerSamples)->Arg(5)->Arg(10)->Arg(20)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
