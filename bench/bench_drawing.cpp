// Speed of the drawing model on the sizes of real drawings: one stroke added to a layer that
// already holds 5,000 (what every pen stroke costs), and loading, saving and building the
// zones of a drawing of 20,000 strokes.

#include "colour/CM_PaletteList.h"
#include "core/CPersistentType.h"
#include "core/DB_Archive.h"
#include "core/DB_MemFile.h"
#include "render/BM_QMTBitmap.h"
#include "vector/GR_DrawingAccess.h"
#include "vector/GR_Layer.h"
#include "vector/GR_VectorDrawingObj.h"
#include "vector/VectorTypes.h"

#include <algorithm>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cmath>
#include <random>

namespace {

void RegisterTypes() {
    CoreRegisterTypes();
    PixelsRegisterTypes();
    ColourRegisterTypes();
    VectorRegisterTypes();
}

// A wandering pen stroke of cubic segments about `step` long, inside a square of `size`.
GR_BezierPath2d Wander(std::mt19937& rng, int segments, double step, double size) {
    std::uniform_real_distribution<double> where(0.05 * size, 0.95 * size), heading(0.0, 6.2832);
    std::normal_distribution<double> turn(0.0, 0.5);
    GR_BezierPath2d path;
    GR_Point2d p{where(rng), where(rng)};
    double h = heading(rng);
    for (int i = 0; i < segments; ++i) {
        const double h1 = h + turn(rng) * 0.5, h2 = h1 + turn(rng) * 0.5;
        const GR_Point2d end = p + GR_Point2d{std::cos(h1), std::sin(h1)} * step;
        const GR_Point2d c1 = p + GR_Point2d{std::cos(h), std::sin(h)} * (step / 3.0);
        const GR_Point2d c2 = end - GR_Point2d{std::cos(h2), std::sin(h2)} * (step / 3.0);
        path.AppendSegment(
            GR_Bezier2d(GR_SnapToGrid(p), GR_SnapToGrid(c1), GR_SnapToGrid(c2), GR_SnapToGrid(end)));
        p = GR_SnapToGrid(end);
        h = h2;
    }
    return path;
}

std::vector<GR_StrokeDesc> Strokes(std::mt19937& rng, size_t count, double size) {
    std::uniform_int_distribution<int> segments(1, 4);
    std::vector<GR_StrokeDesc> descs;
    for (size_t i = 0; i < count; ++i)
        descs.push_back(GR_StrokeDesc(Wander(rng, segments(rng), 25.0, size),
                                      GR_LineStyle(GR_LineStyle::kPenLine, 2.0f, UT_UniqueId(5))));
    return descs;
}

void BM_AddOneStrokeToA5000StrokeLayer(benchmark::State& state) {
    RegisterTypes();
    std::mt19937 rng(11);
    GR_VectorDrawingObj drawing;
    GR_DrawingAccess access;
    access.SetDrawing(&drawing);
    // 2,400 wandering strokes cut one another into a layer of a little over 5,000.
    GR_Layer* layer = access.AddStrokes(Strokes(rng, 2400, 2500.0), GR_Layer::kBrush);
    // Paint a share of the zones, as a coloured drawing has.
    access.BeginEdit();
    size_t painted = 0;
    for (GR_Zone* zone : layer->Zones())
        if (!zone->IsOuter() && painted++ % 2 == 0)
            access.SetZoneColor(zone, std::make_shared<GR_Color>(UT_UniqueId(9)));
    access.Commit();
    const size_t before = layer->StrokeCount();
    std::vector<double> times;
    for (auto _ : state) {
        const GR_StrokeDesc desc(Wander(rng, 8, 40.0, 2500.0),
                                 GR_LineStyle(GR_LineStyle::kPenLine, 2.0f, UT_UniqueId(5)));
        const auto start = std::chrono::steady_clock::now();
        access.BeginEdit();
        access.AddStroke(desc, layer);
        access.Commit();
        const auto end = std::chrono::steady_clock::now();
        times.push_back(std::chrono::duration<double, std::milli>(end - start).count());
    }
    std::sort(times.begin(), times.end());
    state.counters["median_ms"] = times.empty() ? 0.0 : times[times.size() / 2];
    state.counters["strokes_before"] = static_cast<double>(before);
    state.counters["zones"] = static_cast<double>(layer->Zones().size());
}
BENCHMARK(BM_AddOneStrokeToA5000StrokeLayer)->Iterations(200)->Unit(benchmark::kMillisecond);

// A drawing of 20,000 strokes in 20 layers, with painted zones, and its bytes.
struct BigDrawing {
    CM_PaletteList palettes;
    GR_VectorDrawingObj drawing;
    std::vector<uint8_t> bytes;
    BigDrawing() {
        RegisterTypes();
        palettes.AddDefaultPalette();
        const UT_UniqueId paint = palettes.GetPalette(0)->GetEntry(4)->GetId();
        std::mt19937 rng(12);
        GR_DrawingAccess access(&palettes);
        access.SetDrawing(&drawing);
        for (int i = 0; i < 20; ++i) {
            GR_Layer* layer = access.AddStrokes(Strokes(rng, 1000, 2500.0), GR_Layer::kBrush);
            access.BeginEdit();
            size_t n = 0;
            for (GR_Zone* zone : layer->Zones())
                if (!zone->IsOuter() && n++ % 3 == 0)
                    access.SetZoneColor(zone, std::make_shared<GR_Color>(paint));
            access.Commit();
        }
        DB_MemFile file;
        DB_Archive archive(&file, false);
        archive.SetContext(&palettes);
        archive.WriteTyped(drawing);
        bytes.assign(file.Data(), file.Data() + file.Size());
    }
    size_t StrokeCount() const {
        size_t n = 0;
        for (GR_Layer* layer = drawing.FirstLayer(); layer; layer = drawing.NextLayer(layer))
            n += layer->StrokeCount();
        return n;
    }
};

BigDrawing& Big() {
    static BigDrawing big;
    return big;
}

void BM_Load20000Strokes(benchmark::State& state) {
    BigDrawing& big = Big();
    for (auto _ : state) {
        DB_MemFile file;
        file.Write(big.bytes.data(), big.bytes.size());
        file.Rewind();
        DB_Archive archive(&file, false);
        archive.SetContext(&big.palettes);
        GR_VectorDrawingObj drawing;
        archive.ReadTyped(drawing);
        benchmark::DoNotOptimize(drawing.FirstLayer());
    }
    state.counters["strokes"] = static_cast<double>(big.StrokeCount());
    state.counters["bytes"] = static_cast<double>(big.bytes.size());
}
BENCHMARK(BM_Load20000Strokes)->Unit(benchmark::kMillisecond);

void BM_Save20000Strokes(benchmark::State& state) {
    BigDrawing& big = Big();
    for (auto _ : state) {
        DB_MemFile file;
        DB_Archive archive(&file, false);
        archive.SetContext(&big.palettes);
        archive.WriteTyped(big.drawing);
        benchmark::DoNotOptimize(file.Size());
    }
    state.counters["strokes"] = static_cast<double>(big.StrokeCount());
}
BENCHMARK(BM_Save20000Strokes)->Unit(benchmark::kMillisecond);

void BM_BuildZonesOf20000Strokes(benchmark::State& state) {
    BigDrawing& big = Big();
    size_t zones = 0;
    for (auto _ : state) {
        zones = 0;
        for (GR_Layer* layer = big.drawing.FirstLayer(); layer; layer = big.drawing.NextLayer(layer)) {
            layer->InvalidateZones();
            zones += layer->Zones().size();
        }
    }
    state.counters["strokes"] = static_cast<double>(big.StrokeCount());
    state.counters["zones"] = static_cast<double>(zones);
}
BENCHMARK(BM_BuildZonesOf20000Strokes)->Unit(benchmark::kMillisecond);

void BM_BuildZonesOfOne20000StrokeLayer(benchmark::State& state) {
    RegisterTypes();
    std::mt19937 rng(13);
    GR_VectorDrawingObj drawing;
    GR_DrawingAccess access;
    access.SetDrawing(&drawing);
    GR_Layer* layer = access.AddStrokes(Strokes(rng, 20000, 5000.0), GR_Layer::kBrush);
    for (auto _ : state) {
        layer->InvalidateZones();
        benchmark::DoNotOptimize(layer->Zones().size());
    }
    state.counters["strokes"] = static_cast<double>(layer->StrokeCount());
    state.counters["zones"] = static_cast<double>(layer->Zones().size());
}
BENCHMARK(BM_BuildZonesOfOne20000StrokeLayer)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
