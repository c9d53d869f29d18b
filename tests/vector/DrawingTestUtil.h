#pragma once

#include "colour/CM_PaletteList.h"
#include "core/CPersistentType.h"
#include "core/DB_Archive.h"
#include "core/DB_MemFile.h"
#include "render/BM_QMTBitmap.h"
#include "vector/GR_DrawingAccess.h"
#include "vector/GR_Layer.h"
#include "vector/GR_LayerNode.h"
#include "vector/GR_Listener.h"
#include "vector/GR_VectorDrawingObj.h"
#include "vector/GR_VectorStroke.h"
#include "vector/VectorTypes.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace drawtest {

inline void RegisterTypes() {
    CoreRegisterTypes();
    PixelsRegisterTypes();
    ColourRegisterTypes();
    VectorRegisterTypes();
}

inline GR_LineStyle PenLine(float width = 2.0f, UT_UniqueId colour = UT_UniqueId(7)) {
    return GR_LineStyle(GR_LineStyle::kPenLine, width, colour);
}

// A path of straight edges through the points.
inline GR_StrokeDesc Poly(std::initializer_list<GR_Point2d> points, const GR_LineStyle& style = PenLine()) {
    return GR_StrokeDesc(GR_BezierPath2d::Polyline(points), style);
}

inline GR_StrokeDesc Line(double x0, double y0, double x1, double y1, const GR_LineStyle& style = PenLine()) {
    return Poly({{x0, y0}, {x1, y1}}, style);
}

inline GR_StrokeDesc Curve(const GR_Point2d& a, const GR_Point2d& b, const GR_Point2d& c, const GR_Point2d& d,
                           const GR_LineStyle& style = PenLine()) {
    GR_BezierPath2d path;
    path.AppendSegment(GR_Bezier2d(a, b, c, d));
    return GR_StrokeDesc(path, style);
}

// The four sides of an axis-aligned square, counter-clockwise from its lower left corner.
inline std::vector<GR_StrokeDesc> Square(double x0, double y0, double size,
                                         const GR_LineStyle& style = PenLine()) {
    const double x1 = x0 + size, y1 = y0 + size;
    return {Line(x0, y0, x1, y0, style), Line(x1, y0, x1, y1, style), Line(x1, y1, x0, y1, style),
            Line(x0, y1, x0, y0, style)};
}

inline ::testing::AssertionResult Planar(GR_Layer& layer) {
    layer.EnsureZones();
    std::string report;
    if (layer.CheckInvariants(&report))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << report;
}

inline size_t InnerZoneCount(GR_Layer& layer) {
    size_t count = 0;
    for (const auto& zone : layer.Zones())
        count += zone->IsOuter() ? 0 : 1;
    return count;
}

inline std::vector<uint8_t> BytesOf(const DB_MemFile& file) {
    return std::vector<uint8_t>(file.Data(), file.Data() + file.Size());
}

// The drawing as a typed object in a fresh archive of its own.
inline std::vector<uint8_t> Typed(GR_VectorDrawingObj& drawing, CM_PaletteList* palettes = nullptr) {
    DB_MemFile file;
    DB_Archive archive(&file, false);
    archive.SetContext(palettes);
    archive.WriteTyped(drawing);
    return BytesOf(file);
}

inline std::unique_ptr<GR_VectorDrawingObj>
ReadTyped(const std::vector<uint8_t>& bytes, CM_PaletteList* palettes = nullptr, int32_t version = 51) {
    DB_MemFile file;
    file.Write(bytes.data(), bytes.size());
    file.Rewind();
    DB_Archive archive(&file, false);
    archive.SetVersion(version);
    archive.SetContext(palettes);
    return archive.ReadNewAs<GR_VectorDrawingObj>();
}

// Every stroke of a layer, in list order.
inline std::vector<GR_VectorStroke*> Strokes(const GR_Layer& layer) {
    std::vector<GR_VectorStroke*> out;
    for (GR_VectorStroke* s = layer.FirstStroke(); s; s = s->next)
        out.push_back(s);
    return out;
}

} // namespace drawtest
