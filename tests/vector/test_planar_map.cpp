// The planar map of one layer: rings of ends around vertices, zones as boundary cycles,
// components with their outer zones and their nesting, and the point queries on them.

#include "DrawingTestUtil.h"
#include "vector/GR_BezierAccess.h"

#include <gtest/gtest.h>

// Failures name an end by its stroke's serial.
void PrintTo(const GR_StrokeEnd& end, std::ostream* out) {
    *out << "stroke " << (end.stroke ? end.stroke->Serial() : 0) << " end " << int(end.end);
}

namespace {

using namespace drawtest;

std::unique_ptr<GR_Layer> LayerOf(const std::vector<GR_StrokeDesc>& descs) {
    auto layer = std::make_unique<GR_Layer>();
    for (const GR_StrokeDesc& desc : descs)
        EXPECT_NE(layer->AddStroke(desc), nullptr);
    return layer;
}

// The ends of the ring at a point, from its head.
std::vector<GR_StrokeEnd> Ring(const GR_Layer& layer, GR_Point2f point) {
    std::vector<GR_StrokeEnd> ring;
    const GR_StrokeEnd head = layer.VertexAt(point);
    if (head.IsNull())
        return ring;
    GR_StrokeEnd walk = head;
    do {
        ring.push_back(walk);
        walk = walk.Next();
    } while (walk != head);
    return ring;
}

TEST(PlanarMap, SquareHasAnInnerAndAnOuterZone) {
    auto layer = LayerOf(Square(0, 0, 10));
    EXPECT_EQ(layer->Vertices().size(), 4u);
    ASSERT_TRUE(Planar(*layer));
    ASSERT_EQ(layer->Components().size(), 1u);
    ASSERT_EQ(layer->Zones().size(), 2u);
    const GR_Component& component = *layer->Components()[0];
    ASSERT_NE(component.outer, nullptr);
    ASSERT_EQ(component.inner.size(), 1u);
    // The sides run counter-clockwise, so the inside is on the left of each stroke.
    component.inner[0]->ForEachHalfEdge([](const GR_StrokeEnd& h) { EXPECT_EQ(h.end, 0); });
    component.outer->ForEachHalfEdge([](const GR_StrokeEnd& h) { EXPECT_EQ(h.end, 1); });
    EXPECT_EQ(layer->ZoneAt({5, 5}), component.inner[0]);
    EXPECT_EQ(layer->ZoneAt({15, 5}), nullptr);
    EXPECT_EQ(layer->ZoneAt({-0.5, 5}), nullptr);
    EXPECT_EQ(layer->TopComponents().size(), 1u);
    // Every vertex joins two ends.
    for (const auto& [point, head] : layer->Vertices())
        EXPECT_EQ(head.Degree(), 2u);
}

TEST(PlanarMap, RingRunsCounterClockwiseFromTheXAxis) {
    // Spokes out of the origin, added in a scrambled order.
    const std::vector<GR_Point2d> tips = {{-1, -3}, {5, 0}, {0, -4}, {-3, 0}, {2, 2}, {0, 6}, {1, -5}};
    std::vector<GR_StrokeDesc> spokes;
    for (const GR_Point2d& tip : tips)
        spokes.push_back(Line(0, 0, tip.x, tip.y));
    auto layer = LayerOf(spokes);
    const std::vector<GR_StrokeEnd> ring = Ring(*layer, {0, 0});
    ASSERT_EQ(ring.size(), tips.size());
    // Expected by angle: (5,0) 0, (2,2) 45, (0,6) 90, (-3,0) 180, (-1,-3) 251.6, (0,-4) 270, (1,-5) 281.3.
    const std::vector<GR_Point2f> expected = {{5, 0}, {2, 2}, {0, 6}, {-3, 0}, {-1, -3}, {0, -4}, {1, -5}};
    for (size_t i = 0; i < ring.size(); ++i)
        EXPECT_EQ(ring[i].Twin().Point(), expected[i]) << i;
    // Removing ends keeps the order; the head follows.
    layer->DeleteStroke(ring[0].stroke);
    layer->DeleteStroke(ring[3].stroke);
    const std::vector<GR_StrokeEnd> after = Ring(*layer, {0, 0});
    ASSERT_EQ(after.size(), 5u);
    EXPECT_EQ(after[0].Twin().Point(), (GR_Point2f{2, 2}));
    EXPECT_EQ(after[2].Twin().Point(), (GR_Point2f{-1, -3}));
    EXPECT_TRUE(Planar(*layer));
}

TEST(PlanarMap, EndsWithTheSameDirectionTieByEndThenSerial) {
    // Two strokes leave the origin along +x, one straight, one turning up later; two more
    // arrive at the origin from +x, so that their end 1 points along +x as well.
    auto layer = std::make_unique<GR_Layer>();
    GR_VectorStroke* straight = layer->AddStroke(Line(0, 0, 10, 0));
    GR_VectorStroke* bent = layer->AddStroke(Poly({{0, 0}, {4, 0}, {4, 6}}));
    GR_VectorStroke* in1 = layer->AddStroke(Line(20, 0, 0, 0));
    GR_VectorStroke* in2 = layer->AddStroke(Poly({{6, -6}, {6, 0}, {0, 0}}));
    ASSERT_TRUE(straight && bent && in1 && in2);
    const std::vector<GR_StrokeEnd> ring = Ring(*layer, {0, 0});
    ASSERT_EQ(ring.size(), 4u);
    // End 0 before end 1; lower serial first among ends 0, higher first among ends 1.
    EXPECT_EQ(ring[0], (GR_StrokeEnd{straight, 0}));
    EXPECT_EQ(ring[1], (GR_StrokeEnd{bent, 0}));
    EXPECT_EQ(ring[2], (GR_StrokeEnd{in2, 1}));
    EXPECT_EQ(ring[3], (GR_StrokeEnd{in1, 1}));
}

TEST(PlanarMap, EndsAreOrderedByTheFirstChordOfTheirCurve) {
    // A cubic leaving along +x but bending up: beside a line just above its start tangent,
    // what counts is the direction in which its chord polyline leaves, which lies above.
    auto layer = std::make_unique<GR_Layer>();
    GR_VectorStroke* curve = layer->AddStroke(Curve({0, 0}, {3, 0}, {6, 4}, {9, 8}));
    GR_VectorStroke* line = layer->AddStroke(Line(0, 0, 10, 1));
    const std::vector<GR_StrokeEnd> ring = Ring(*layer, {0, 0});
    ASSERT_EQ(ring.size(), 2u);
    EXPECT_EQ(ring[0].stroke, line);
    EXPECT_EQ(ring[1].stroke, curve);
    EXPECT_GT(curve->tangent[0].y, 0.0f);
}

TEST(PlanarMap, ClosedStrokeMakesTwoZonesAtOneVertex) {
    auto layer = LayerOf({Poly({{0, 0}, {10, 0}, {10, 10}, {0, 10}, {0, 0}})});
    ASSERT_EQ(layer->Vertices().size(), 1u);
    EXPECT_EQ(layer->Vertices().begin()->second.Degree(), 2u);
    ASSERT_TRUE(Planar(*layer));
    ASSERT_EQ(layer->Zones().size(), 2u);
    ASSERT_EQ(InnerZoneCount(*layer), 1u);
    GR_Zone* inside = layer->ZoneAt({5, 5});
    ASSERT_NE(inside, nullptr);
    EXPECT_EQ(inside->HalfEdgeCount(), 1u);
    EXPECT_EQ(inside->first.end, 0);
}

TEST(PlanarMap, DanglingStrokesBelongToTheZoneAroundThem) {
    // A square with a whisker inside from one corner and one outside from another.
    std::vector<GR_StrokeDesc> descs = Square(0, 0, 10);
    descs.push_back(Line(0, 0, 4, 3));
    descs.push_back(Line(10, 10, 14, 13));
    auto layer = LayerOf(descs);
    ASSERT_TRUE(Planar(*layer));
    ASSERT_EQ(layer->Zones().size(), 2u);
    GR_Zone* inside = layer->ZoneAt({6, 2});
    ASSERT_NE(inside, nullptr);
    EXPECT_EQ(inside->HalfEdgeCount(), 6u);
    EXPECT_EQ(layer->Components()[0]->outer->HalfEdgeCount(), 6u);
    // The inside's test of a point beside the whisker is not disturbed by it.
    EXPECT_EQ(layer->ZoneAt({4, 2}), inside);
}

TEST(PlanarMap, ZoneTouchingItselfIsOneCycle) {
    // Two triangles meeting at one vertex: the outside touches itself there.
    auto layer =
        LayerOf({Poly({{0, 0}, {4, 2}, {4, -2}, {0, 0}}), Poly({{0, 0}, {-4, -2}, {-4, 2}, {0, 0}})});
    ASSERT_TRUE(Planar(*layer));
    ASSERT_EQ(layer->Components().size(), 1u);
    const GR_Component& component = *layer->Components()[0];
    EXPECT_EQ(component.inner.size(), 2u);
    ASSERT_NE(component.outer, nullptr);
    EXPECT_EQ(component.outer->HalfEdgeCount(), 2u);
    EXPECT_NE(layer->ZoneAt({2, 0}), layer->ZoneAt({-2, 0}));
    EXPECT_EQ(layer->ZoneAt({0, 3}), nullptr);
}

TEST(PlanarMap, NestedComponentsFollowTheirZone) {
    std::vector<GR_StrokeDesc> descs = Square(0, 0, 100);
    for (const GR_StrokeDesc& d : Square(20, 20, 60))
        descs.push_back(d);
    for (const GR_StrokeDesc& d : Square(40, 40, 20))
        descs.push_back(d);
    // A square beside the big one, not inside it.
    for (const GR_StrokeDesc& d : Square(200, 0, 10))
        descs.push_back(d);
    auto layer = LayerOf(descs);
    ASSERT_TRUE(Planar(*layer));
    ASSERT_EQ(layer->Components().size(), 4u);
    EXPECT_EQ(layer->TopComponents().size(), 2u);
    GR_Zone* outerRing = layer->ZoneAt({10, 50});
    GR_Zone* middleRing = layer->ZoneAt({30, 50});
    GR_Zone* centre = layer->ZoneAt({50, 50});
    ASSERT_TRUE(outerRing && middleRing && centre);
    EXPECT_NE(outerRing, middleRing);
    EXPECT_NE(middleRing, centre);
    ASSERT_EQ(outerRing->children.size(), 1u);
    EXPECT_EQ(outerRing->children[0], middleRing->component);
    EXPECT_EQ(middleRing->component->parent, outerRing);
    EXPECT_EQ(centre->component->parent, middleRing);
    EXPECT_EQ(layer->ZoneAt({205, 5})->component->parent, nullptr);
    // Nesting order: a zone stands after the zones around it.
    EXPECT_LT(outerRing->index, middleRing->index);
    EXPECT_LT(middleRing->index, centre->index);
    EXPECT_LT(middleRing->component->outer->index, middleRing->index);
}

TEST(PlanarMap, OuterZoneOfACurvedComponent) {
    // A lens of two cubics bulging beyond the knot box to the left, with a whisker: the
    // scan for the outer cycle runs just inside the knot box on that side.
    auto layer = LayerOf({Curve({0, 0}, {-40, 10}, {-40, 30}, {0, 40}),
                          Curve({0, 40}, {-10, 30}, {-10, 10}, {0, 0}), Line(0, 40, 5, 45)});
    ASSERT_TRUE(Planar(*layer));
    const GR_Component& component = *layer->Components()[0];
    ASSERT_EQ(component.inner.size(), 1u);
    EXPECT_EQ(layer->ZoneAt({-15, 20}), component.inner[0]);
    EXPECT_EQ(layer->ZoneAt({-5, 20}), nullptr);
    EXPECT_EQ(component.outer->HalfEdgeCount(), 4u);
}

TEST(PlanarMap, DegenerateStrokesAreNeverAdded) {
    GR_Layer layer;
    EXPECT_EQ(layer.AddStroke(Poly({{1, 1}})), nullptr);
    EXPECT_EQ(layer.AddStroke(Line(1, 1, 1, 1)), nullptr);
    // Points that round to the same grid point.
    EXPECT_EQ(layer.AddStroke(Line(1, 1, 1.0001, 1)), nullptr);
    EXPECT_EQ(layer.AddStroke(Line(0, 0, std::nan(""), 1)), nullptr);
    // Far beyond any drawing: no drawing data.
    EXPECT_EQ(layer.AddStroke(Line(0, 0, 1e30, 1)), nullptr);
    EXPECT_NE(layer.AddStroke(Line(0, 0, GR_SharedPathSet::kMaxCoordinate, 1)), nullptr);
    layer.DeleteStroke(layer.FirstStroke());
    EXPECT_EQ(layer.StrokeCount(), 0u);
    EXPECT_EQ(layer.Paths().Size(), 0u);
}

TEST(PlanarMap, EqualPathsShareOneRecord) {
    GR_Layer layer;
    GR_VectorStroke* a = layer.AddStroke(Line(0, 0, 10, 0.0001));
    GR_VectorStroke* b = layer.AddStroke(Line(0, 0, 10, 0));
    ASSERT_TRUE(a && b);
    EXPECT_EQ(a->SharedPath(), b->SharedPath());
    EXPECT_EQ(a->SharedPath()->StrokeCount(), 2u);
    EXPECT_EQ(layer.Paths().Size(), 1u);
    layer.DeleteStroke(a);
    EXPECT_EQ(layer.Paths().Size(), 1u);
    layer.DeleteStroke(b);
    EXPECT_EQ(layer.Paths().Size(), 0u);
}

TEST(PlanarMap, SingleLineColour) {
    GR_Layer layer;
    EXPECT_EQ(layer.SingleLineColor(), kCM_NoColorId);
    layer.AddStroke(Line(0, 0, 1, 0, GR_LineStyle(GR_LineStyle::kContour, 1, UT_UniqueId(3))));
    EXPECT_EQ(layer.SingleLineColor(), kCM_NoColorId);
    layer.AddStroke(Line(0, 1, 1, 1, PenLine(2, UT_UniqueId(5))));
    layer.AddStroke(Line(0, 2, 1, 2, GR_LineStyle(GR_LineStyle::kThinLine, 1, UT_UniqueId(5))));
    EXPECT_EQ(layer.SingleLineColor(), UT_UniqueId(5));
    layer.AddStroke(Line(0, 3, 1, 3, PenLine(2, UT_UniqueId(6))));
    EXPECT_EQ(layer.SingleLineColor(), kCM_NoColorId);
}

TEST(PlanarMap, CloneIsEqualAndIndependent) {
    auto layer = LayerOf(Square(0, 0, 10));
    layer->SetKind(GR_Layer::kBrush);
    std::unique_ptr<GR_Layer> copy = layer->Clone();
    EXPECT_EQ(copy->GetKind(), GR_Layer::kBrush);
    ASSERT_EQ(copy->StrokeCount(), 4u);
    const auto a = Strokes(*layer), b = Strokes(*copy);
    for (size_t i = 0; i < a.size(); ++i) {
        EXPECT_EQ(a[i]->Path(), b[i]->Path());
        EXPECT_NE(a[i]->SharedPath(), b[i]->SharedPath());
    }
    layer.reset();
    EXPECT_TRUE(Planar(*copy));
    EXPECT_EQ(InnerZoneCount(*copy), 1u);
}

TEST(BezierAccess, WalksFromEitherEnd) {
    GR_Layer layer;
    GR_BezierPath2d path = GR_BezierPath2d::Polyline({{0, 0}, {1, 0}});
    path.AppendSegment(GR_Bezier2d({1, 0}, {2, 1}, {3, 1}, {4, 0}));
    GR_VectorStroke* s = layer.AddStroke(GR_StrokeDesc(path, PenLine()));
    ASSERT_NE(s, nullptr);
    GR_BezierAccess forward({s, 0});
    GR_Bezier2d segment;
    forward.Segment(segment);
    EXPECT_EQ(forward.Index(), 0u);
    EXPECT_EQ(segment.degree, 1u);
    forward.Advance();
    forward.Segment(segment);
    EXPECT_EQ(segment.degree, 3u);
    EXPECT_EQ(segment.First(), (GR_Point2d{1, 0}));
    forward.Advance();
    EXPECT_TRUE(forward.AtEnd());

    GR_BezierAccess backward({s, 1});
    EXPECT_EQ(backward.Index(), 1u);
    backward.Segment(segment);
    EXPECT_EQ(segment.First(), (GR_Point2d{4, 0}));
    EXPECT_EQ(segment.Last(), (GR_Point2d{1, 0}));
    EXPECT_EQ(backward.PathParameter(0.25), 1.75);
    backward.Advance();
    backward.Segment(segment);
    EXPECT_EQ(segment.First(), (GR_Point2d{1, 0}));
    backward.Advance();
    EXPECT_TRUE(backward.AtEnd());
}

} // namespace
