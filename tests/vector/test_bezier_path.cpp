// The path, its segments and boxes, editing, the disk form, and the exact queries on
// small hand-made cases whose answers follow from the rules.

#include "GeometryTestUtil.h"
#include "core/DB_Archive.h"
#include "core/DB_Exception.h"
#include "core/DB_MemFile.h"
#include "vector/GR_BezierPath2d.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace {

GR_BezierPath2d Line(std::initializer_list<GR_Point2d> points) {
    return GR_BezierPath2d::Polyline(points);
}

GR_BezierPath2d Cubic(const GR_Point2d& a, const GR_Point2d& b, const GR_Point2d& c, const GR_Point2d& d) {
    GR_BezierPath2d path;
    path.AppendSegment(GR_Bezier2d(a, b, c, d));
    return path;
}

std::vector<uint8_t> Written(const GR_BezierPath2d& path) {
    DB_MemFile file;
    DB_Archive archive(&file, true);
    path.Write(archive);
    return {file.Data(), file.Data() + file.Size()};
}

GR_BezierPath2d ReadBack(const std::vector<uint8_t>& bytes) {
    DB_MemFile file;
    DB_Archive writer(&file, true);
    writer.WriteRaw(bytes.data(), bytes.size());
    file.Rewind();
    DB_Archive reader(&file, true);
    GR_BezierPath2d path;
    path.Read(reader);
    return path;
}

TEST(Grid, RoundsHalfUpNotAwayFromZero) {
    const double half = kGR_Grid / 2.0;
    EXPECT_EQ(GR_SnapToGrid(-half), 0.0);
    EXPECT_EQ(std::round(-half / kGR_Grid) * kGR_Grid, -kGR_Grid); // where std::round differs
    EXPECT_EQ(GR_SnapToGrid(half), kGR_Grid);
    EXPECT_EQ(GR_SnapToGrid(-half - 1e-9), -kGR_Grid);
    EXPECT_EQ(GR_SnapToGrid(2500.00048828125), 2500.0009765625);
    GR_BezierPath2d path = Line({{1.23456789, -7.654321}});
    path.SnapPoint(0);
    EXPECT_EQ(path.points[0].x, static_cast<float>(std::floor(1.23456789 / kGR_Grid + 0.5) * kGR_Grid));
    EXPECT_EQ(static_cast<double>(path.points[0].y) / kGR_Grid, std::floor(path.points[0].y / kGR_Grid));
}

TEST(Box, ClosedAndOpenSides) {
    GR_Box2d box;
    EXPECT_FALSE(box.Contains({0, 0}));
    box.Add({0, 0}, 0);
    box.Add({10, 5}, 1);
    EXPECT_FALSE(box.Contains({0, 2})); // on the open side
    EXPECT_FALSE(box.Contains({3, 0}));
    EXPECT_TRUE(box.Contains({10, 5}));
    EXPECT_TRUE(box.Contains({0.001, 0.001}));
    box.Add({0, 3}, 1); // a closed point on the same side closes it
    EXPECT_TRUE(box.Contains({0, 2}));

    GR_Box2d left, right;
    left.Add({-5, 0});
    left.Add({0, 1}, 0);
    right.Add({0, 0});
    right.Add({5, 1});
    EXPECT_FALSE(left.Overlaps(right));
    EXPECT_FALSE(right.Overlaps(left));
    left.Add({0, 1}, 1);
    EXPECT_TRUE(left.Overlaps(right));
    EXPECT_TRUE(right.Overlaps(left));
    right.Grow(-0.5);
    EXPECT_FALSE(left.Overlaps(right));
    EXPECT_EQ(right.DistanceSquared({0, 5}), 0.25 + 20.25);
}

TEST(Bezier, SplitSnappedPiecesMeetOnTheGrid) {
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> c(-400.0, 400.0);
    for (int i = 0; i < 200; ++i) {
        const GR_Bezier2d curve({c(rng), c(rng)}, {c(rng), c(rng)}, {c(rng), c(rng)}, {c(rng), c(rng)});
        GR_Bezier2d l, r, ll, lr;
        curve.SplitSnapped(0.5, l, r);
        EXPECT_EQ(l.Last(), r.First());
        EXPECT_EQ(l.Last(), GR_SnapToGrid(curve.Evaluate(0.5)));
        EXPECT_EQ(std::floor(l.Last().x / kGR_Grid) * kGR_Grid, l.Last().x);
        l.SplitSnapped(0.5, ll, lr);
        EXPECT_EQ(ll.t0, 0.0);
        EXPECT_EQ(ll.t1, 0.25);
        EXPECT_EQ(lr.t1, 0.5);
        EXPECT_EQ(r.t0, 0.5);
        EXPECT_EQ(ll.closedEnd, 1u);
        EXPECT_EQ(lr.closedStart, 1u);
        // The unsnapped split keeps the curve: the halves evaluate to the same points.
        curve.Split(0.3, l, r);
        EXPECT_NEAR(l.Evaluate(0.5).x, curve.Evaluate(0.15).x, 1e-9);
        EXPECT_NEAR(r.Evaluate(0.5).y, curve.Evaluate(0.65).y, 1e-9);
    }
}

TEST(Bezier, EndDerivativesSkipCoincidentControlPoints) {
    const GR_Bezier2d curve({0, 0}, {0, 0}, {4, 2}, {4, 2});
    EXPECT_EQ(curve.StartDerivative(), (GR_Point2d{12, 6}));
    EXPECT_EQ(curve.EndDerivative(), (GR_Point2d{12, 6}));
    EXPECT_EQ(curve.DerivativeAt(0.0), (GR_Point2d{0, 0}));
    const GR_Bezier2d dot({1, 1}, {1, 1}, {1, 1}, {1, 1});
    EXPECT_EQ(dot.StartDerivative(), (GR_Point2d{0, 0}));
    EXPECT_EQ(dot.EndDerivative(), (GR_Point2d{0, 0}));
}

TEST(Bezier, ChordRuleAt32Units) {
    EXPECT_TRUE(GR_Bezier2d({0, 0}, {100, 0}).IsSmall());
    EXPECT_TRUE(GR_Bezier2d({0, 0}, {8, 7.99}, {0, 0}, {0, 0}).IsSmall());
    EXPECT_FALSE(GR_Bezier2d({0, 0}, {8, 8}, {0, 0}, {0, 0}).IsSmall());
}

TEST(Path, KnotFormsAndEditing) {
    GR_BezierPath2d path;
    EXPECT_EQ(path.KnotCount(), 0u);
    EXPECT_TRUE(path.AppendSegment(GR_Bezier2d({0, 0}, {1, 1}, {2, 1}, {3, 0})));
    EXPECT_TRUE(path.AppendSegment(GR_Bezier2d({3, 0}, {4, -1}, {5, -1}, {6, 0})));
    EXPECT_EQ(path.points.size(), 7u);
    EXPECT_EQ(path.knots, (std::vector<uint16_t>{0, 3, 6}));
    path.CompressKnots();
    EXPECT_EQ(path.step, 3u);
    EXPECT_TRUE(path.knots.empty());
    EXPECT_EQ(path.KnotCount(), 3u);
    EXPECT_EQ(path.LastKnotPoint(), 6u);
    // A straight segment breaks the uniform step.
    EXPECT_TRUE(path.AppendSegment(GR_Bezier2d({6, 0}, {7, 0})));
    EXPECT_EQ(path.step, 0u);
    EXPECT_EQ(path.knots, (std::vector<uint16_t>{0, 3, 6, 7}));

    GR_Bezier2d segment;
    path.Segment(1, segment);
    EXPECT_EQ(segment.degree, 3u);
    EXPECT_EQ(segment.First(), (GR_Point2d{3, 0}));
    EXPECT_EQ(segment.closedStart, 1u);

    EXPECT_TRUE(path.ReplaceSegment(1, GR_Bezier2d({3, 0}, {6, 0})));
    EXPECT_EQ(path.knots, (std::vector<uint16_t>{0, 3, 4, 5}));
    EXPECT_EQ(path.Point(4), (GR_Point2d{6, 0}));

    path.Reverse();
    EXPECT_EQ(path.knots, (std::vector<uint16_t>{0, 1, 2, 5}));
    EXPECT_EQ(path.Point(0), (GR_Point2d{7, 0}));
    EXPECT_EQ(path.Point(5), (GR_Point2d{0, 0}));

    path.RemovePoints(0, 1);
    EXPECT_EQ(path.knots, (std::vector<uint16_t>{0, 3}));
    EXPECT_EQ(path.points.size(), 4u);

    GR_BezierPath2d full;
    for (size_t i = 0; i + 1 < GR_BezierPath2d::kMaxPoints; ++i)
        full.points.push_back({0.0f, static_cast<float>(i)});
    full.step = 1;
    EXPECT_TRUE(full.AppendSegment(GR_Bezier2d({0, 0}, {1, 1})));
    EXPECT_FALSE(full.AppendSegment(GR_Bezier2d({1, 1}, {2, 2})));
    EXPECT_EQ(full.points.size(), GR_BezierPath2d::kMaxPoints);
}

TEST(Path, CleanUpDropsDegenerateSegments) {
    GR_BezierPath2d path;
    path.AppendSegment(GR_Bezier2d({0, 0}, {0, 0}, {0, 0}, {0, 0}));
    path.AppendSegment(GR_Bezier2d({0, 0}, {5, 0}));
    path.AppendSegment(GR_Bezier2d({5, 0}, {5, 0}));
    path.AppendSegment(GR_Bezier2d({5, 0}, {5, 5}));
    path.CleanUp();
    EXPECT_EQ(path.points.size(), 3u);
    EXPECT_EQ(path.step, 1u);
    EXPECT_EQ(path.Point(2), (GR_Point2d{5, 5}));
    GR_BezierPath2d dot;
    dot.AppendSegment(GR_Bezier2d({2, 2}, {2, 2}));
    dot.CleanUp();
    EXPECT_EQ(dot.points.size(), 1u);
    EXPECT_EQ(dot.SegmentCount(), 0u);
}

TEST(Path, MeasuresAndTransform) {
    const GR_BezierPath2d square = Line({{0, 0}, {4, 0}, {4, 4}, {0, 4}, {0, 0}});
    EXPECT_EQ(square.PolygonLength(), 16.0);
    EXPECT_EQ(square.SignedArea(), 16.0);
    EXPECT_FALSE(square.IsClockwise());
    GR_BezierPath2d reversed = square;
    reversed.Reverse();
    EXPECT_TRUE(reversed.IsClockwise());
    const GR_BezierPath2d moved = square.TransformedCopy({2, 0, 0, 1, 10, -1});
    EXPECT_EQ(moved.Point(2), (GR_Point2d{18, 3}));
    const GR_Box2d box = moved.Bounds();
    EXPECT_EQ(box.xmin, 10.0);
    EXPECT_EQ(box.ymax, 3.0);
}

TEST(Path, TangentsAtKnotsAndEnds) {
    GR_BezierPath2d path = Line({{0, 0}, {4, 0}});
    path.AppendSegment(GR_Bezier2d({4, 0}, {4, 0}, {4, 3}, {4, 6}));
    GR_Point2d p, in, out;
    path.TangentsAt(1.0, p, in, out);
    EXPECT_EQ(p, (GR_Point2d{4, 0}));
    EXPECT_EQ(in, (GR_Point2d{-4, 0}));
    EXPECT_EQ(out, (GR_Point2d{0, 9})); // 3 * (P2 - P0): P1 coincides with P0
    path.TangentsAt(0.0, p, in, out);
    EXPECT_EQ(in, (GR_Point2d{0, 0}));
    path.TangentsAt(2.0, p, in, out);
    EXPECT_EQ(p, (GR_Point2d{4, 6}));
    EXPECT_EQ(out, (GR_Point2d{0, 0}));
    EXPECT_EQ(in, (GR_Point2d{0, -9}));
    path.TangentsAt(0.25, p, in, out);
    EXPECT_EQ(p, (GR_Point2d{1, 0}));
    EXPECT_EQ(in, -out);
}

TEST(Path, KeepRangeAndCuts) {
    GR_BezierPath2d path = Line({{0, 0}, {8, 0}, {8, 8}, {0, 8}});
    GR_BezierPath2d kept = path;
    kept.KeepRange(2.5, 0.5);
    ASSERT_EQ(kept.SegmentCount(), 3u);
    EXPECT_EQ(kept.Point(0), (GR_Point2d{4, 0}));
    EXPECT_EQ(kept.Point(1), (GR_Point2d{8, 0}));
    EXPECT_EQ(kept.Point(3), (GR_Point2d{4, 8}));

    kept = path;
    kept.KeepRange(1.25, 1.75);
    ASSERT_EQ(kept.SegmentCount(), 1u);
    EXPECT_EQ(kept.Point(0), (GR_Point2d{8, 2}));
    EXPECT_EQ(kept.Point(1), (GR_Point2d{8, 6}));

    kept = path;
    kept.CutAfter(1.0);
    EXPECT_EQ(kept.SegmentCount(), 1u);
    kept = path;
    kept.CutBefore(3.0);
    EXPECT_EQ(kept.SegmentCount(), 0u);
    EXPECT_EQ(kept.points.size(), 1u);

    // A cut curve keeps its shape: the cut piece matches the original between the bounds.
    const GR_BezierPath2d curve = Cubic({0, 0}, {0, 100}, {100, 100}, {100, 0});
    kept = curve;
    kept.KeepRange(0.2, 0.7);
    GR_Bezier2d original, piece;
    curve.Segment(0, original);
    kept.Segment(0, piece);
    for (double u : {0.0, 0.3, 0.5, 1.0}) {
        const GR_Point2d a = piece.Evaluate(u), b = original.Evaluate(0.2 + 0.5 * u);
        EXPECT_NEAR(a.x, b.x, 0.002);
        EXPECT_NEAR(a.y, b.y, 0.002);
    }
}

TEST(DiskForm, BytesBothWays) {
    GR_BezierPath2d path;
    path.AppendSegment(GR_Bezier2d({0, 0}, {1, 0}, {1, 1}, {0, 1}));
    path.AppendSegment(GR_Bezier2d({0, 1}, {-1, 1}, {-1, 0}, {0, -2}));
    path.AppendSegment(GR_Bezier2d({0, -2}, {0.5f, 0}));
    const std::vector<uint8_t> bytes = Written(path);
    // 8 points: knots 0, 3, 6, 7 -> one mask byte 0b11001001.
    ASSERT_EQ(bytes.size(), 2u + 1u + 8u * 8u);
    EXPECT_EQ(bytes[0], 8);
    EXPECT_EQ(bytes[1], 0);
    EXPECT_EQ(bytes[2], 0xC9);
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin() + 11, bytes.begin() + 19),
              (std::vector<uint8_t>{0x00, 0x00, 0x80, 0x3F, 0x00, 0x00, 0x00, 0x00})); // (1, 0)
    EXPECT_EQ(ReadBack(bytes), path);

    // Knots 0, 3, 6 come back as a uniform step with no explicit list.
    GR_BezierPath2d uniform;
    uniform.points.resize(7);
    uniform.knots = {0, 3, 6};
    const GR_BezierPath2d read = ReadBack(Written(uniform));
    EXPECT_EQ(read.step, 3u);
    EXPECT_TRUE(read.knots.empty());
    EXPECT_EQ(Written(read), Written(uniform));

    // Nine points need a second mask byte holding the remainder.
    const GR_BezierPath2d nine = GR_BezierPath2d::Polyline(std::vector<GR_Point2d>(9));
    const std::vector<uint8_t> nineBytes = Written(nine);
    EXPECT_EQ(nineBytes.size(), 2u + 2u + 72u);
    EXPECT_EQ(nineBytes[2], 0xFF);
    EXPECT_EQ(nineBytes[3], 0x01);
    EXPECT_EQ(ReadBack(nineBytes), nine);
    EXPECT_EQ(ReadBack(Written(GR_BezierPath2d())), GR_BezierPath2d());
}

TEST(DiskForm, DamagedDataIsRefused) {
    // First point not a knot, last point not a knot, a gap of 4, and a cut-off stream.
    const std::vector<std::vector<uint8_t>> bad = {
        {2, 0, 0x02, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
        {2, 0, 0x01, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0},
        {5, 0, 0x11},
        {3, 0, 0x07, 0, 0, 0},
    };
    for (size_t i = 0; i < bad.size(); ++i) {
        std::vector<uint8_t> bytes = bad[i];
        if (i == 2)
            bytes.resize(3 + 40, 0);
        EXPECT_THROW(ReadBack(bytes), DB_Exception) << i;
    }
}

TEST(Queries, KnotCrossedByALineGivesOneHitWithBothTangents) {
    const GR_BezierPath2d path = Line({{0, 0}, {10, 10}, {20, 0}});
    const GR_BezierPath2d line = Line({{10, 20}, {10, -5}});
    std::vector<GR_PathHit> hits;
    path.IntersectAll(line, false, hits);
    ASSERT_EQ(hits.size(), 1u);
    EXPECT_EQ(hits[0].firstParameter, 1.0);
    EXPECT_EQ(hits[0].firstPoint, (GR_Point2d{10, 10}));
    EXPECT_EQ(hits[0].firstTangentIn, (GR_Point2d{-10, -10}));
    EXPECT_EQ(hits[0].firstTangentOut, (GR_Point2d{10, -10}));
    EXPECT_EQ(hits[0].secondParameter, 0.4);
    // Along a horizontal path the boxes of both segments hold the knot: the half-open
    // chords keep it to one.
    hits.clear();
    Line({{0, 0}, {10, 0}, {20, 0}}).IntersectAll(Line({{5, -5}, {15, 5}}), false, hits);
    ASSERT_EQ(hits.size(), 1u);
    EXPECT_EQ(hits[0].firstParameter, 1.0);
    EXPECT_EQ(hits[0].secondParameter, 0.5);
    // A line ending on the path's end point meets it there.
    hits.clear();
    path.IntersectAll(Line({{20, 0}, {30, 0}}), false, hits);
    ASSERT_EQ(hits.size(), 1u);
    EXPECT_EQ(hits[0].firstParameter, 2.0);
    EXPECT_EQ(hits[0].secondParameter, 0.0);
}

TEST(Queries, CrossingWeightsAtVertices) {
    bool touched = false;
    // Through a vertex where the path goes on upward: 2 + 2 from the two edges.
    const GR_BezierPath2d through = Line({{5, -5}, {5, 0}, {6, 5}});
    EXPECT_EQ(std::abs(through.CountCrossings({0, 0}, {10, 0}, touched)), 4);
    EXPECT_TRUE(touched);
    // Touching a vertex from above: +2 and -2.
    const GR_BezierPath2d touch = Line({{4, 5}, {5, 0}, {6, 5}});
    EXPECT_EQ(touch.CountCrossings({0, 0}, {10, 0}, touched), 0);
    // A plain crossing in the middle of an edge.
    touched = false;
    EXPECT_EQ(std::abs(Line({{5, -5}, {5, 5}}).CountCrossings({0, 0.5}, {10, 0.5}, touched)), 4);
    EXPECT_FALSE(touched);

    const GR_BezierPath2d square = Line({{0, 0}, {4, 0}, {4, 4}, {0, 4}, {0, 0}});
    EXPECT_TRUE(square.Contains({1, 1}, false));
    EXPECT_FALSE(square.Contains({-0.001, 2}, false));
    EXPECT_FALSE(square.Contains({5, 2}, true));
    // Two turns around the same square: inside by the non-zero rule only.
    GR_BezierPath2d twice = square;
    for (size_t i = 1; i < square.points.size(); ++i)
        twice.AppendSegment(GR_Bezier2d(square.Point(i - 1), square.Point(i)));
    EXPECT_FALSE(twice.Contains({1, 1}, false));
    EXPECT_TRUE(twice.Contains({1, 1}, true));
}

TEST(Queries, SelfIntersectionOfALoopAndOfAClosedPath) {
    const GR_BezierPath2d loop = Cubic({0, 0}, {300, 200}, {-100, 200}, {200, 0});
    std::vector<GR_PathHit> hits;
    loop.IntersectSelf(hits);
    ASSERT_EQ(hits.size(), 1u);
    EXPECT_NEAR(hits[0].firstPoint.x, 100.0, 1.0);
    EXPECT_LT(hits[0].firstParameter, hits[0].secondParameter);
    hits.clear();
    Line({{0, 0}, {4, 0}, {4, 4}, {0, 0}}).IntersectSelf(hits);
    EXPECT_TRUE(hits.empty());
    Line({{0, 0}, {4, 0}, {4, 4}, {2, -4}}).IntersectSelf(hits);
    ASSERT_EQ(hits.size(), 1u);
    EXPECT_EQ(hits[0].firstPoint, (GR_Point2d{3, 0}));
    EXPECT_EQ(hits[0].firstParameter, 0.75);
    EXPECT_EQ(hits[0].secondParameter, 2.5);
}

TEST(Hits, RingOrderAndWalkOrder) {
    // First path along +x, second crossing upward at the same point.
    GR_PathHit hit;
    hit.firstTangentIn = {-1, 0};
    hit.firstTangentOut = {1, 0};
    hit.secondTangentIn = {0, -1};
    hit.secondTangentOut = {0, 1};
    hit.firstParameter = 1.5;
    hit.BuildRing();
    ASSERT_EQ(hit.ringCount, 4u);
    EXPECT_EQ(hit.ring[0].branch, GR_PathHit::kFirstOut);
    EXPECT_EQ(hit.ring[1].branch, GR_PathHit::kSecondOut);
    EXPECT_EQ(hit.ring[2].branch, GR_PathHit::kFirstIn);
    EXPECT_EQ(hit.ring[3].branch, GR_PathHit::kSecondIn);
    EXPECT_EQ(hit.BranchAfter(GR_PathHit::kFirstIn), GR_PathHit::kSecondIn);

    // At the same parameter, a hit that turns off sooner counter-clockwise wins; one whose
    // next branch stays on the first path is refused.
    GR_PathHit other = hit;
    other.secondTangentIn = {1, -1};
    other.secondTangentOut = {-1, 1};
    other.ringBuilt = false;
    EXPECT_EQ(other.BranchAfter(GR_PathHit::kFirstIn), GR_PathHit::kSecondIn);
    EXPECT_FALSE(other.IsBefore(hit));
    EXPECT_TRUE(hit.IsBefore(other));
    GR_PathHit along = hit;
    along.secondTangentIn = {0, 0};
    along.secondTangentOut = {0, 0};
    along.ringBuilt = false;
    EXPECT_EQ(along.BranchAfter(GR_PathHit::kFirstIn), GR_PathHit::kFirstOut);
    EXPECT_FALSE(along.IsBefore(hit));
    EXPECT_TRUE(hit.IsBefore(along));
    GR_PathHit later = hit;
    later.firstParameter = 1.6;
    EXPECT_TRUE(hit.IsBefore(later));
    EXPECT_TRUE(later.IsAfter(hit));

    // A near hit has the bridge in its ring.
    GR_PathHit nearHit;
    nearHit.distance = 0.25;
    nearHit.firstTangentIn = {-1, 0};
    nearHit.firstTangentOut = {1, 0};
    nearHit.bridge = {0, -1};
    EXPECT_EQ(nearHit.BranchAfter(GR_PathHit::kFirstIn), GR_PathHit::kBridge);
}

TEST(Queries, FirstAndLastHitWithinBounds) {
    const GR_BezierPath2d path = Line({{0, 0}, {10, 0}, {20, 0}});
    const GR_BezierPath2d comb = Line({{2, -1}, {2, 1}, {12, 1}, {12, -1}, {15, -1}, {15, 1}});
    GR_PathHit best;
    bool found = false;
    ASSERT_TRUE(path.FirstHit(comb, {-1.0, 10.0}, best, found));
    EXPECT_DOUBLE_EQ(best.firstParameter, 0.2);
    found = false;
    ASSERT_TRUE(path.FirstHit(comb, {0.2, 10.0}, best, found));
    EXPECT_DOUBLE_EQ(best.firstParameter, 1.2);
    found = false;
    ASSERT_TRUE(path.LastHit(comb, {0.0, 1.5}, best, found));
    EXPECT_DOUBLE_EQ(best.firstParameter, 1.2);
    found = false;
    EXPECT_FALSE(path.FirstHit(comb, {1.5, 2.0}, best, found));
}

class RefuseAll : public GR_Bezier2d::GapTest {
public:
    bool Accept(const GR_PathHit&) const override { return false; }
};

TEST(Queries, NearHitsWithinTheRadius) {
    const GR_BezierPath2d a = Line({{0, 0}, {10, 0}});
    // Passes 0.5 above the line at x 2 to 3 and 7 to 8, far above in between.
    const GR_BezierPath2d b = Line({{2, 0.5}, {3, 0.5}, {3, 3}, {7, 3}, {7, 0.5}, {8, 0.5}});
    GR_PathHit best;
    bool found = false;
    const GR_Bezier2d::GapTest accept;
    ASSERT_TRUE(a.FirstNearHit(b, accept, 1.0, false, {-1.0, 5.0}, best, found));
    EXPECT_EQ(best.distance, 0.25);
    EXPECT_DOUBLE_EQ(best.firstParameter, 0.2);
    EXPECT_EQ(best.bridge, (GR_Point2d{0, 0.5}));
    found = false;
    ASSERT_TRUE(a.LastNearHit(b, accept, 1.0, false, {-1.0, 5.0}, best, found));
    EXPECT_DOUBLE_EQ(best.firstParameter, 0.7);
    found = false;
    ASSERT_TRUE(a.FirstNearHit(b, accept, 1.0, false, {0.2, 5.0}, best, found));
    EXPECT_DOUBLE_EQ(best.firstParameter, 0.3);
    found = false;
    EXPECT_FALSE(a.FirstNearHit(b, accept, 0.4, false, {-1.0, 5.0}, best, found));
    EXPECT_FALSE(a.FirstNearHit(b, RefuseAll(), 1.0, false, {-1.0, 5.0}, best, found));
    EXPECT_FALSE(a.FirstNearHit(b, accept, 0.0, false, {-1.0, 5.0}, best, found));

    // Along one path, the joints of neighbouring segments are not near hits; the fold of a
    // hairpin is.
    const GR_BezierPath2d hairpin = Line({{0, 0}, {10, 0}, {10, 0.5}, {0, 0.5}});
    found = false;
    ASSERT_TRUE(hairpin.FirstNearHit(hairpin, accept, 1.0, true, {-1.0, 5.0}, best, found));
    EXPECT_EQ(best.distance, 0.25);
    EXPECT_EQ(best.firstParameter, 0.0);
    EXPECT_EQ(best.secondParameter, 3.0);
    found = false;
    EXPECT_FALSE(
        Line({{0, 0}, {10, 0}, {20, 1}})
            .FirstNearHit(Line({{0, 0}, {10, 0}, {20, 1}}), accept, 1.0, true, {-1.0, 5.0}, best, found));
}

TEST(Queries, NearestPointMatchesTheChordsByBruteForce) {
    std::mt19937 rng(77);
    std::uniform_real_distribution<double> c(-50.0, 350.0);
    for (int round = 0; round < 200; ++round) {
        const GR_BezierPath2d path = geomtest::RandomPath(rng, 1 + round % 5, 300.0, 0.0);
        const std::vector<GR_Point2d> chords = geomtest::ChordPolyline(path);
        const GR_Point2d q{c(rng), c(rng)};
        double expected = std::numeric_limits<double>::infinity();
        for (size_t i = 0; i + 1 < chords.size(); ++i) {
            const GR_Point2d d = chords[i + 1] - chords[i];
            const double l = GR_Dot(d, d);
            const double u = l > 0 ? std::clamp(GR_Dot(q - chords[i], d) / l, 0.0, 1.0) : 0.0;
            expected = std::min(expected, GR_DistanceSquared(q, chords[i] + d * u));
        }
        double best = std::numeric_limits<double>::infinity(), parameter = -1.0;
        ASSERT_TRUE(path.NearestPoint(q, best, parameter));
        EXPECT_NEAR(best, expected, 1e-9 * (1.0 + expected));
        GR_Point2d p, in, out;
        path.TangentsAt(parameter, p, in, out);
        EXPECT_LT(std::fabs(std::sqrt(GR_DistanceSquared(p, q)) - std::sqrt(best)), 4.0);
        // A better distance already known is kept.
        double tight = best * 0.5;
        EXPECT_FALSE(path.NearestPoint(q, tight, parameter));
    }
}

TEST(Degenerate, EmptyTinyHugeAndNonFinitePaths) {
    const GR_BezierPath2d empty;
    const GR_BezierPath2d single = Line({{1, 1}});
    const GR_BezierPath2d square = Line({{0, 0}, {4, 0}, {4, 4}, {0, 4}, {0, 0}});
    std::vector<GR_PathHit> hits;
    for (const GR_BezierPath2d* p : {&empty, &single}) {
        p->IntersectAll(square, false, hits);
        square.IntersectAll(*p, false, hits);
        p->IntersectSelf(hits);
        EXPECT_FALSE(p->Contains({1, 1}, false));
        double best = 1e300, parameter = 0;
        EXPECT_FALSE(p->NearestPoint({1, 1}, best, parameter));
        bool touched = true;
        EXPECT_EQ(p->CountCrossings({0, 0}, {5, 5}, touched), 0);
    }
    EXPECT_TRUE(hits.empty());

    // Zero-length edges and repeated points.
    const GR_BezierPath2d stutter = Line({{0, 0}, {0, 0}, {5, 5}, {5, 5}, {10, 0}});
    stutter.IntersectAll(Line({{0, 0}, {0, 0}}), false, hits);
    EXPECT_TRUE(hits.empty());
    stutter.IntersectAll(Line({{5, 0}, {5, 10}}), false, hits);
    EXPECT_EQ(hits.size(), 1u);

    // Huge coordinates: the recursion ends and reports finite values.
    const GR_BezierPath2d huge = Cubic({-1e30f, 0}, {0, 1e30f}, {0, -1e30f}, {1e30f, 0});
    hits.clear();
    huge.IntersectAll(Line({{0, -1e30f}, {0, 1e30f}}), false, hits);
    for (const GR_PathHit& h : hits)
        EXPECT_TRUE(std::isfinite(h.firstPoint.x) && std::isfinite(h.firstParameter));
    EXPECT_FALSE(huge.Contains({0, 2e30}, false));
    huge.Contains({0, 1e29}, true);
    GR_BezierPath2d copy = huge;
    copy.KeepRange(0.25, 0.75);
    EXPECT_EQ(copy.SegmentCount(), 1u);

    const float nan = std::numeric_limits<float>::quiet_NaN();
    const GR_BezierPath2d bad = Cubic({0, 0}, {nan, 1}, {2, nan}, {3, 3});
    hits.clear();
    bad.IntersectAll(square, false, hits);
    bad.IntersectSelf(hits);
    EXPECT_FALSE(bad.Contains({1, 1}, false));
}

} // namespace
