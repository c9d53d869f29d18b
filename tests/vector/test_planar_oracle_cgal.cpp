// The planar map of a layer against CGAL's arrangement, which is exact. Random sets of
// strokes (crossing segments, shared end points, T-junctions, collinear overlaps, nested
// loops, curves) are committed all at once and one at a time; each result must have the
// vertices with their degrees, the bounded faces with their areas and holes, and the
// components of the arrangement.
//
// For straight strokes the arrangement is built from the input itself: our crossings are
// rounded to the grid, so positions and areas are compared within that rounding. For
// curves the geometry that the map works on is the chord polyline of each stroke, and a
// piece of a curve cut at a crossing has chords of its own, which may no longer cross a
// neighbour that its parent's chords crossed twice within a few units. The arrangement is
// then built from the chord polylines of the strokes of the result, which shows any
// crossing that the map missed and any zone that it got wrong.

#include "DrawingTestUtil.h"
#include "GeometryTestUtil.h"

#include <CGAL/Arr_segment_traits_2.h>
#include <CGAL/Arrangement_2.h>
#include <CGAL/Exact_predicates_exact_constructions_kernel.h>
#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>
#include <sstream>

namespace {

using namespace drawtest;
using Kernel = CGAL::Exact_predicates_exact_constructions_kernel;
using Traits = CGAL::Arr_segment_traits_2<Kernel>;
using Arrangement = CGAL::Arrangement_2<Traits>;

// How far rounded crossings may lie from the exact ones. Each rounding moves a crossing by
// half a grid step on each axis, and turns the pieces that end there a little, which moves
// the crossings further along them, the more the shallower they cross.
constexpr double kRounding = 0.02;

struct Vertex {
    GR_Point2d point;
    size_t degree;
};

struct Face {
    double area;
    size_t holes;
    double perimeter;
};

// What both sides are compared on.
struct Summary {
    std::vector<Vertex> vertices;
    std::vector<Face> faces;
    size_t edges = 0;
    size_t components = 0;
    size_t topComponents = 0;
};

double Area(const std::vector<GR_Point2d>& ring, double& perimeter) {
    double sum = 0.0;
    perimeter = 0.0;
    for (size_t i = 0; i < ring.size(); ++i) {
        const GR_Point2d& a = ring[i];
        const GR_Point2d& b = ring[(i + 1) % ring.size()];
        sum += a.x * b.y - a.y * b.x;
        perimeter += GR_Length(b - a);
    }
    return std::abs(sum) / 2.0;
}

Summary OfLayer(GR_Layer& layer) {
    Summary s;
    for (const auto& [point, head] : layer.Vertices())
        s.vertices.push_back({GR_ToDouble(point), head.Degree()});
    s.edges = layer.StrokeCount();
    s.components = layer.Components().size();
    s.topComponents = layer.TopComponents().size();
    for (GR_Zone* zone : layer.Zones()) {
        if (zone->IsOuter())
            continue;
        std::vector<GR_StrokeEnd> cycle;
        zone->ForEachHalfEdge([&](const GR_StrokeEnd& h) { cycle.push_back(h); });
        std::reverse(cycle.begin(), cycle.end());
        std::vector<GR_Point2d> ring;
        for (const GR_StrokeEnd& h : cycle) {
            std::vector<GR_Point2d> chords = geomtest::ChordPolyline(h.stroke->Path());
            if (h.end == 1)
                std::reverse(chords.begin(), chords.end());
            ring.insert(ring.end(), chords.begin(), chords.end() - 1);
        }
        Face face;
        face.area = Area(ring, face.perimeter);
        face.holes = zone->children.size();
        s.faces.push_back(face);
    }
    return s;
}

Summary OfArrangement(const std::vector<std::pair<GR_Point2d, GR_Point2d>>& segments) {
    std::vector<Traits::X_monotone_curve_2> curves;
    for (const auto& [a, b] : segments)
        if (a != b)
            curves.emplace_back(Kernel::Point_2(a.x, a.y), Kernel::Point_2(b.x, b.y));
    Arrangement arrangement;
    CGAL::insert(arrangement, curves.begin(), curves.end());
    Summary s;
    for (auto v = arrangement.vertices_begin(); v != arrangement.vertices_end(); ++v)
        s.vertices.push_back(
            {{CGAL::to_double(v->point().x()), CGAL::to_double(v->point().y())}, v->degree()});
    s.edges = arrangement.number_of_edges();
    for (auto f = arrangement.faces_begin(); f != arrangement.faces_end(); ++f) {
        s.components += f->number_of_inner_ccbs();
        if (f->is_unbounded()) {
            s.topComponents += f->number_of_inner_ccbs();
            continue;
        }
        std::vector<GR_Point2d> ring;
        auto edge = f->outer_ccb();
        const auto first = edge;
        do {
            ring.push_back(
                {CGAL::to_double(edge->source()->point().x()), CGAL::to_double(edge->source()->point().y())});
        } while (++edge != first);
        Face face;
        face.area = Area(ring, face.perimeter);
        face.holes = f->number_of_inner_ccbs();
        s.faces.push_back(face);
    }
    return s;
}

// Compares within `tolerance` of position; a vertex of degree 2 of the arrangement that the
// map lacks is a joint of a polyline, and it merges two of the arrangement's edges.
::testing::AssertionResult SameMap(Summary ours, Summary theirs, double tolerance) {
    std::ostringstream why;
    // Each vertex is matched with the nearest one not yet taken.
    std::vector<bool> used(theirs.vertices.size(), false);
    for (const Vertex& v : ours.vertices) {
        size_t best = theirs.vertices.size();
        double bestDistance = tolerance;
        for (size_t i = 0; i < theirs.vertices.size(); ++i) {
            const double d = std::max(std::abs(theirs.vertices[i].point.x - v.point.x),
                                      std::abs(theirs.vertices[i].point.y - v.point.y));
            if (!used[i] && d <= bestDistance) {
                best = i;
                bestDistance = d;
            }
        }
        if (best == theirs.vertices.size()) {
            why << "vertex (" << v.point.x << ", " << v.point.y << ") is not in the arrangement\n";
            continue;
        }
        used[best] = true;
        if (theirs.vertices[best].degree != v.degree)
            why << "vertex (" << v.point.x << ", " << v.point.y << ") has degree " << v.degree
                << ", expected " << theirs.vertices[best].degree << "\n";
    }
    size_t joints = 0;
    for (size_t i = 0; i < theirs.vertices.size(); ++i) {
        if (used[i])
            continue;
        if (theirs.vertices[i].degree == 2)
            ++joints;
        else
            why << "missing vertex (" << theirs.vertices[i].point.x << ", " << theirs.vertices[i].point.y
                << ") of degree " << theirs.vertices[i].degree << "\n";
    }
    if (ours.edges != theirs.edges - joints)
        why << "edges: " << ours.edges << ", expected " << theirs.edges - joints << "\n";
    if (ours.components != theirs.components)
        why << "components: " << ours.components << ", expected " << theirs.components << "\n";
    if (ours.topComponents != theirs.topComponents)
        why << "top components: " << ours.topComponents << ", expected " << theirs.topComponents << "\n";
    if (ours.faces.size() != theirs.faces.size())
        why << "bounded faces: " << ours.faces.size() << ", expected " << theirs.faces.size() << "\n";
    // Each face is matched with the face of the same number of holes nearest in area.
    std::vector<bool> matched(theirs.faces.size(), false);
    const auto byArea = [](const Face& a, const Face& b) { return a.area < b.area; };
    std::sort(ours.faces.begin(), ours.faces.end(), byArea);
    for (const Face& a : ours.faces) {
        size_t best = theirs.faces.size();
        for (size_t i = 0; i < theirs.faces.size(); ++i)
            if (!matched[i] && theirs.faces[i].holes == a.holes &&
                (best == theirs.faces.size() ||
                 std::abs(theirs.faces[i].area - a.area) < std::abs(theirs.faces[best].area - a.area)))
                best = i;
        if (best == theirs.faces.size() ||
            std::abs(theirs.faces[best].area - a.area) > tolerance * theirs.faces[best].perimeter + 1e-9) {
            why << "face of area " << a.area << " with " << a.holes << " holes is not in the arrangement\n";
            continue;
        }
        matched[best] = true;
    }
    const std::string text = why.str();
    if (text.empty())
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << text;
}

std::vector<std::pair<GR_Point2d, GR_Point2d>> Chords(const std::vector<GR_BezierPath2d>& paths) {
    std::vector<std::pair<GR_Point2d, GR_Point2d>> segments;
    for (const GR_BezierPath2d& path : paths) {
        const std::vector<GR_Point2d> polyline = geomtest::ChordPolyline(path);
        for (size_t i = 0; i + 1 < polyline.size(); ++i)
            segments.push_back({polyline[i], polyline[i + 1]});
    }
    return segments;
}

std::vector<GR_BezierPath2d> PathsOf(const GR_Layer& layer) {
    std::vector<GR_BezierPath2d> paths;
    for (const GR_VectorStroke* s = layer.FirstStroke(); s; s = s->next)
        paths.push_back(s->Path());
    return paths;
}

// A layer with all the strokes in one commit, and one with a commit per stroke.
struct Results {
    GR_VectorDrawingObj allDrawing, oneDrawing;
    GR_Layer* all = nullptr;
    GR_Layer* one = nullptr;
};

void Commit(const std::vector<GR_StrokeDesc>& descs, Results& r) {
    GR_DrawingAccess all, one;
    all.SetDrawing(&r.allDrawing);
    r.all = all.AddStrokes(descs, GR_Layer::kBrush);
    one.SetDrawing(&r.oneDrawing);
    r.one = one.AddStrokes({descs.front()}, GR_Layer::kBrush);
    for (size_t i = 1; i < descs.size(); ++i) {
        one.BeginEdit();
        one.AddStroke(descs[i], r.one);
        one.Commit();
    }
}

// Straight strokes: random crossings on the grid, axis-parallel strokes on a lattice that
// share end points, end on each other and overlap, and nested squares as closed polylines.
std::vector<GR_StrokeDesc> RandomStraightStrokes(std::mt19937& rng, size_t count) {
    std::uniform_real_distribution<double> anywhere(0.0, 256.0);
    std::uniform_int_distribution<int> lattice(0, 16), choice(0, 9), extent(1, 6);
    std::vector<GR_StrokeDesc> descs;
    while (descs.size() < count) {
        const int c = choice(rng);
        if (c < 4) {
            descs.push_back(Line(GR_SnapToGrid(anywhere(rng)), GR_SnapToGrid(anywhere(rng)),
                                 GR_SnapToGrid(anywhere(rng)), GR_SnapToGrid(anywhere(rng))));
        } else if (c < 8) {
            const double x = lattice(rng) * 16.0, y = lattice(rng) * 16.0, d = extent(rng) * 16.0;
            descs.push_back(c % 2 ? Line(x, y, x + d, y) : Line(x, y, x, y + d));
        } else if (c == 8) {
            const double x = lattice(rng) * 16.0, y = lattice(rng) * 16.0;
            descs.push_back(Line(x, y, GR_SnapToGrid(anywhere(rng)), GR_SnapToGrid(anywhere(rng))));
        } else {
            const double cx = lattice(rng) * 16.0, cy = lattice(rng) * 16.0, r = extent(rng) * 4.0 + 2.0;
            descs.push_back(Poly(
                {{cx - r, cy - r}, {cx + r, cy - r}, {cx + r, cy + r}, {cx - r, cy + r}, {cx - r, cy - r}}));
        }
    }
    return descs;
}

TEST(PlanarOracle, StraightStrokesMatchTheArrangementOfTheInput) {
    RegisterTypes();
    std::mt19937 rng(4242);
    for (int round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        const std::vector<GR_StrokeDesc> descs = RandomStraightStrokes(rng, 6 + round % 30);
        std::vector<GR_BezierPath2d> input(descs.begin(), descs.end());
        const Summary expected = OfArrangement(Chords(input));
        Results r;
        Commit(descs, r);
        ASSERT_TRUE(r.all && r.one);
        ASSERT_TRUE(Planar(*r.all));
        ASSERT_TRUE(Planar(*r.one));
        // Crossings are rounded to the grid, half a step on each axis; a piece that ends at
        // a rounded crossing turns a little, which moves the crossings along it.
        EXPECT_TRUE(SameMap(OfLayer(*r.all), expected, kRounding));
        EXPECT_TRUE(SameMap(OfLayer(*r.one), expected, kRounding));
    }
}

TEST(PlanarOracle, NestedLoopsNestLikeTheArrangement) {
    RegisterTypes();
    std::mt19937 rng(77);
    std::uniform_int_distribution<int> cell(0, 5), size(1, 7);
    for (int round = 0; round < 30; ++round) {
        SCOPED_TRACE(round);
        std::vector<GR_StrokeDesc> descs;
        // Squares around a few centres, some inside others, some crossing, some apart.
        for (int i = 0; i < 8 + round % 8; ++i) {
            const double cx = 40.0 + cell(rng) * 40.0, cy = 40.0 + cell(rng) * 40.0,
                         r = size(rng) * 3.0 + 0.5;
            descs.push_back(Poly(
                {{cx - r, cy - r}, {cx + r, cy - r}, {cx + r, cy + r}, {cx - r, cy + r}, {cx - r, cy - r}}));
        }
        descs.push_back(Line(0, 60, 300, 60.5));
        std::vector<GR_BezierPath2d> input(descs.begin(), descs.end());
        Results r;
        Commit(descs, r);
        ASSERT_TRUE(r.all && r.one);
        const Summary expected = OfArrangement(Chords(input));
        EXPECT_TRUE(SameMap(OfLayer(*r.all), expected, kRounding));
        EXPECT_TRUE(SameMap(OfLayer(*r.one), expected, kRounding));
    }
}

// A drawn curve: control points spread along the chord, bent to either side, sometimes
// twisted into a loop; never folding back on itself, as fitted strokes do not.
GR_BezierPath2d SmoothCurve(std::mt19937& rng) {
    std::uniform_real_distribution<double> anywhere(0.0, 300.0), length(30.0, 160.0), turn(0.0, 6.2832),
        bend(-0.45, 0.45);
    const GR_Point2d a{anywhere(rng), anywhere(rng)};
    const bool loop = std::uniform_int_distribution<int>(0, 5)(rng) == 0;
    const double angle = turn(rng), l = length(rng) + (loop ? 60.0 : 0.0);
    const GR_Point2d d{std::cos(angle) * l, std::sin(angle) * l}, n{-d.y, d.x};
    // A loop bends well away from its chord and is large: a loop too small for the chords
    // of the intersection pass to follow would fold onto one of them.
    const double b1 = loop ? std::copysign(0.6 + std::abs(bend(rng)) / 1.5, bend(rng)) : bend(rng);
    const double b2 = loop ? b1 : bend(rng);
    const GR_Point2d c1 = a + d * (loop ? 1.3 : 0.33) + n * b1, c2 = a + d * (loop ? -0.3 : 0.67) + n * b2;
    GR_BezierPath2d path;
    path.AppendSegment(
        GR_Bezier2d(GR_SnapToGrid(a), GR_SnapToGrid(c1), GR_SnapToGrid(c2), GR_SnapToGrid(a + d)));
    return path;
}

TEST(PlanarOracle, CurvesMatchTheArrangementOfTheirChords) {
    RegisterTypes();
    std::mt19937 rng(9001);
    for (int round = 0; round < 40; ++round) {
        SCOPED_TRACE(round);
        std::vector<GR_StrokeDesc> descs;
        for (int i = 0; i < 5 + round % 10; ++i)
            descs.push_back(GR_StrokeDesc(SmoothCurve(rng), PenLine()));
        for (const GR_StrokeDesc& d : RandomStraightStrokes(rng, 4))
            descs.push_back(d);
        Results r;
        Commit(descs, r);
        ASSERT_TRUE(r.all && r.one);
        for (GR_Layer* layer : {r.all, r.one}) {
            ASSERT_TRUE(Planar(*layer));
            EXPECT_TRUE(SameMap(OfLayer(*layer), OfArrangement(Chords(PathsOf(*layer))), 0.0));
        }
        // Nothing of the input got lost: the strokes of the result are as long as the
        // input without its overlaps, within what the chords of the pieces change.
        double input = 0.0, all = 0.0, one = 0.0;
        for (const GR_StrokeDesc& d : descs)
            input += GR_SharedPathSet::NormalForm(d).PolygonLength();
        for (const GR_BezierPath2d& p : PathsOf(*r.all))
            all += p.PolygonLength();
        for (const GR_BezierPath2d& p : PathsOf(*r.one))
            one += p.PolygonLength();
        EXPECT_LE(all, input * 1.05);
        EXPECT_GE(all, input * 0.5);
        EXPECT_NEAR(all, one, input * 0.05);
    }
}

} // namespace
