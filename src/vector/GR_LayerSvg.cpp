#include "vector/GR_LayerSvg.h"

#include "colour/CM_Color.h"
#include "colour/CM_PaletteList.h"
#include "vector/GR_BezierFlattener.h"
#include "vector/GR_Layer.h"
#include "vector/GR_VectorStroke.h"

#include <algorithm>
#include <cstdio>
#include <sstream>

namespace {

constexpr double kPictureSize = 800.0;
constexpr double kMargin = 40.0;

class Canvas {
public:
    explicit Canvas(const GR_Box2d& box) : box_(box) {
        const double extent = box.empty ? 0.0 : std::max(box.xmax - box.xmin, box.ymax - box.ymin);
        scale_ = extent > 0.0 ? kPictureSize / extent : 1.0;
    }
    GR_Point2d Map(const GR_Point2d& p) const {
        return {(p.x - box_.xmin) * scale_ + kMargin, (box_.ymax - p.y) * scale_ + kMargin};
    }
    double Width() const { return (box_.empty ? 0.0 : (box_.xmax - box_.xmin) * scale_) + 2 * kMargin; }
    double Height() const { return (box_.empty ? 0.0 : (box_.ymax - box_.ymin) * scale_) + 2 * kMargin; }

private:
    GR_Box2d box_;
    double scale_;
};

std::string Number(double v) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", v);
    return text;
}

// The points of a half-edge from its end to the other end.
std::vector<GR_Point2d> HalfEdgePoints(const GR_StrokeEnd& h) {
    std::vector<GR_Point2d> points;
    GR_BezierFlattener(1.0).FlattenPath(h.stroke->Path(), points);
    if (h.end == 1)
        std::reverse(points.begin(), points.end());
    return points;
}

std::string ColourOf(const GR_ColorRef& colour, const CM_PaletteList* palettes) {
    if (!colour)
        return "none";
    char text[8];
    if (palettes) {
        if (const auto* entry = dynamic_cast<const CM_Color*>(palettes->Resolve(colour->GetId()))) {
            const BM_Rgba c = entry->ColorAt(0.0);
            std::snprintf(text, sizeof text, "#%02x%02x%02x", c.r, c.g, c.b);
            return text;
        }
    }
    // Without palettes, a colour made up from the id, the same every time.
    const uint64_t v = colour->GetId().Value() * 0x9E3779B97F4A7C15ull;
    std::snprintf(text, sizeof text, "#%02x%02x%02x", unsigned((v >> 40) & 0x7F) + 96,
                  unsigned((v >> 24) & 0x7F) + 96, unsigned((v >> 8) & 0x7F) + 96);
    return text;
}

const char* LineColour(uint8_t kind) {
    switch (kind) {
    case GR_LineStyle::kContour:
        return "#888888";
    case GR_LineStyle::kCut:
        return "#d02020";
    case GR_LineStyle::kStroke:
        return "#2060d0";
    default:
        return "#000000";
    }
}

std::string ZoneName(const GR_Zone* zone) {
    if (!zone)
        return "-";
    return (zone->IsOuter() ? "o" : "z") + std::to_string(zone->index);
}

} // namespace

std::string GR_LayerSvg(GR_Layer& layer, const CM_PaletteList* palettes) {
    layer.EnsureZones();
    const Canvas canvas(layer.Bounds());
    std::ostringstream svg;
    svg << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << Number(canvas.Width()) << "\" height=\""
        << Number(canvas.Height()) << "\" font-family=\"sans-serif\">\n"
        << "<defs><marker id=\"arrow\" viewBox=\"0 0 10 10\" refX=\"10\" refY=\"5\" markerWidth=\"8\" "
           "markerHeight=\"8\" orient=\"auto\"><path d=\"M0,0 L10,5 L0,10 z\" "
           "fill=\"#000\"/></marker></defs>\n"
        << "<rect width=\"100%\" height=\"100%\" fill=\"#ffffff\"/>\n";

    // Bounded zones, outside first so that nested zones lie on top.
    svg << "<g id=\"zones\">\n";
    for (GR_Zone* zone : layer.Zones()) {
        if (zone->IsOuter())
            continue;
        std::vector<GR_StrokeEnd> cycle;
        zone->ForEachHalfEdge([&](const GR_StrokeEnd& h) { cycle.push_back(h); });
        // The walk meets the boundary backwards: each half-edge ends where the previous began.
        std::reverse(cycle.begin(), cycle.end());
        svg << "<path fill=\"" << ColourOf(zone->Color(), palettes)
            << "\" fill-opacity=\"0.45\" stroke=\"none\" d=\"";
        bool first = true;
        for (const GR_StrokeEnd& h : cycle)
            for (const GR_Point2d& p : HalfEdgePoints(h)) {
                const GR_Point2d q = canvas.Map(p);
                svg << (first ? "M" : " L") << Number(q.x) << "," << Number(q.y);
                first = false;
            }
        svg << " Z\"><title>" << ZoneName(zone) << "</title></path>\n";
        const GR_Point2d centre =
            canvas.Map({(zone->box.xmin + zone->box.xmax) / 2, (zone->box.ymin + zone->box.ymax) / 2});
        svg << "<text x=\"" << Number(centre.x) << "\" y=\"" << Number(centre.y)
            << "\" font-size=\"14\" fill=\"#004000\">" << ZoneName(zone) << "</text>\n";
    }
    svg << "</g>\n";

    // Strokes with their direction and the zones on either side.
    svg << "<g id=\"strokes\">\n";
    for (GR_VectorStroke* s = layer.FirstStroke(); s; s = s->next) {
        const std::vector<GR_Point2d> points = HalfEdgePoints({s, 0});
        svg << "<polyline fill=\"none\" stroke=\"" << LineColour(s->style.kind)
            << "\" stroke-width=\"1.5\" marker-end=\"url(#arrow)\" points=\"";
        for (size_t i = 0; i < points.size(); ++i) {
            const GR_Point2d q = canvas.Map(points[i]);
            svg << (i ? " " : "") << Number(q.x) << "," << Number(q.y);
        }
        svg << "\"><title>stroke " << s->Serial() << " kind " << int(s->style.kind)
            << "</title></polyline>\n";
        if (points.size() < 2)
            continue;
        const size_t middle = points.size() / 2;
        const GR_Point2d a = canvas.Map(points[middle - 1]), b = canvas.Map(points[middle]);
        const GR_Point2d mid = (a + b) * 0.5, d = b - a;
        const double length = GR_Length(d);
        // On the screen y runs downward, so the left of the stroke is the other normal.
        const GR_Point2d left = length > 0.0 ? GR_Point2d{d.y / length, -d.x / length} * 10.0 : GR_Point2d{};
        const GR_Point2d l = mid + left, r = mid - left;
        svg << "<text x=\"" << Number(l.x) << "\" y=\"" << Number(l.y)
            << "\" font-size=\"9\" fill=\"#800080\">" << ZoneName(s->zone[0]) << "</text>";
        svg << "<text x=\"" << Number(r.x) << "\" y=\"" << Number(r.y)
            << "\" font-size=\"9\" fill=\"#800080\">" << ZoneName(s->zone[1]) << "</text>\n";
    }
    svg << "</g>\n";

    // Vertices with the order of their rings.
    svg << "<g id=\"vertices\">\n";
    for (const auto& [point, head] : layer.Vertices()) {
        const GR_Point2d v = canvas.Map(GR_ToDouble(point));
        svg << "<circle cx=\"" << Number(v.x) << "\" cy=\"" << Number(v.y)
            << "\" r=\"3\" fill=\"#c00000\"/>\n";
        GR_StrokeEnd walk = head;
        int position = 0;
        do {
            const GR_Point2d t = GR_ToDouble(walk.Tangent());
            const double length = GR_Length(t);
            const GR_Point2d at = length > 0.0 ? v + GR_Point2d{t.x / length, -t.y / length} * 14.0 : v;
            svg << "<text x=\"" << Number(at.x) << "\" y=\"" << Number(at.y)
                << "\" font-size=\"8\" fill=\"#c00000\">" << position++ << "</text>\n";
            walk = walk.Next();
        } while (walk != head && position < 1000);
    }
    svg << "</g>\n</svg>\n";
    return svg.str();
}
