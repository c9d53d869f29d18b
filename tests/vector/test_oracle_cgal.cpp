// Intersection and containment against an exact oracle: CGAL's exact kernel on the chord
// polylines of the recursion, with the same half-open ownership of shared points.

#include "GeometryTestUtil.h"
#include "vector/GR_BezierPath2d.h"

#include <CGAL/Exact_predicates_exact_constructions_kernel.h>
#include <CGAL/Exact_predicates_inexact_constructions_kernel.h>
#include <CGAL/intersections.h>
#include <algorithm>
#include <gtest/gtest.h>
#include <random>

namespace {

using Exact = CGAL::Exact_predicates_exact_constructions_kernel;
using Inexact = CGAL::Exact_predicates_inexact_constructions_kernel;

// One edge of a polyline owns its start point, and its end point only when it is the last.
struct Edge {
    Exact::Point_2 start, end;
    bool ownsEnd;
};

std::vector<Edge> Edges(const std::vector<GR_Point2d>& polyline) {
    std::vector<Edge> edges;
    for (size_t i = 0; i + 1 < polyline.size(); ++i) {
        if (polyline[i] == polyline[i + 1])
            continue;
        edges.push_back({Exact::Point_2(polyline[i].x, polyline[i].y),
                         Exact::Point_2(polyline[i + 1].x, polyline[i + 1].y), false});
    }
    if (!edges.empty())
        edges.back().ownsEnd = true;
    return edges;
}

bool Owns(const Edge& e, const Exact::Point_2& p) {
    return e.ownsEnd || p != e.end;
}

// Every meeting point of two polylines, once per pair of edges that both own it.
std::vector<GR_Point2d> OracleHits(const std::vector<GR_Point2d>& a, const std::vector<GR_Point2d>& b) {
    std::vector<GR_Point2d> hits;
    const std::vector<Edge> ea = Edges(a), eb = Edges(b);
    for (const Edge& x : ea)
        for (const Edge& y : eb) {
            const auto result =
                CGAL::intersection(Exact::Segment_2(x.start, x.end), Exact::Segment_2(y.start, y.end));
            if (!result)
                continue;
            std::vector<Exact::Point_2> candidates;
            if (const Exact::Point_2* p = boost::get<Exact::Point_2>(&*result)) {
                candidates.push_back(*p);
            } else if (const Exact::Segment_2* s = boost::get<Exact::Segment_2>(&*result)) {
                candidates.push_back(s->source());
                if (s->target() != s->source())
                    candidates.push_back(s->target());
            }
            for (const Exact::Point_2& p : candidates)
                if (Owns(x, p) && Owns(y, p))
                    hits.push_back({CGAL::to_double(p.x()), CGAL::to_double(p.y())});
        }
    return hits;
}

// Compares two multisets of points, each point matched once within a small distance.
::testing::AssertionResult SamePoints(std::vector<GR_Point2d> expected, std::vector<GR_Point2d> actual) {
    if (expected.size() != actual.size())
        return ::testing::AssertionFailure()
               << "expected " << expected.size() << " hits, got " << actual.size();
    const auto less = [](const GR_Point2d& p, const GR_Point2d& q) {
        return p.x < q.x || (p.x == q.x && p.y < q.y);
    };
    std::sort(expected.begin(), expected.end(), less);
    std::vector<bool> used(actual.size(), false);
    for (const GR_Point2d& p : expected) {
        bool matched = false;
        for (size_t i = 0; i < actual.size() && !matched; ++i)
            if (!used[i] && GR_DistanceSquared(p, actual[i]) < 1e-12) {
                used[i] = true;
                matched = true;
            }
        if (!matched)
            return ::testing::AssertionFailure() << "oracle hit (" << p.x << ", " << p.y << ") not found";
    }
    return ::testing::AssertionSuccess();
}

std::vector<GR_Point2d> HitPoints(const std::vector<GR_PathHit>& hits) {
    std::vector<GR_Point2d> points;
    for (const GR_PathHit& h : hits)
        points.push_back(h.firstPoint);
    return points;
}

void CheckPair(const GR_BezierPath2d& a, const GR_BezierPath2d& b) {
    std::vector<GR_PathHit> hits;
    a.IntersectAll(b, false, hits);
    const auto expected = OracleHits(geomtest::ChordPolyline(a), geomtest::ChordPolyline(b));
    ASSERT_TRUE(SamePoints(expected, HitPoints(hits)));
    for (const GR_PathHit& h : hits) {
        EXPECT_EQ(h.distance, 0.0);
        // The parameters lead back to the hit, within the box of a chord piece (its
        // perimeter is below 32).
        GR_Point2d p, in, out;
        a.TangentsAt(h.firstParameter, p, in, out);
        EXPECT_LT(GR_DistanceSquared(p, h.firstPoint), 256.0);
        b.TangentsAt(h.secondParameter, p, in, out);
        EXPECT_LT(GR_DistanceSquared(p, h.secondPoint), 256.0);
    }
    EXPECT_EQ(a.Intersects(b, false), !expected.empty());
}

TEST(IntersectionOracle, RandomCurvesOnTheGrid) {
    std::mt19937 rng(1234);
    for (int round = 0; round < 400; ++round) {
        const GR_BezierPath2d a = geomtest::RandomPath(rng, 1 + round % 7, 300.0, 0.0);
        const GR_BezierPath2d b = geomtest::RandomPath(rng, 1 + round % 5, 300.0, 0.0);
        SCOPED_TRACE(round);
        CheckPair(a, b);
    }
}

TEST(IntersectionOracle, LatticePolylinesTouchAtKnotsAndOverlap) {
    // Small integer lattices: shared knots, end points on the other path, collinear overlaps.
    std::mt19937 rng(99);
    for (int round = 0; round < 3000; ++round) {
        const GR_BezierPath2d a = geomtest::RandomPath(rng, 1 + round % 6, 8.0, 1.0, 1);
        const GR_BezierPath2d b = geomtest::RandomPath(rng, 1 + round % 4, 8.0, 1.0, 1);
        SCOPED_TRACE(round);
        CheckPair(a, b);
    }
}

TEST(IntersectionOracle, LatticeCurvesMeetAtSplitPointsAndKnots) {
    std::mt19937 rng(7);
    for (int round = 0; round < 600; ++round) {
        const GR_BezierPath2d a = geomtest::RandomPath(rng, 1 + round % 4, 128.0, 256.0);
        const GR_BezierPath2d b = geomtest::RandomPath(rng, 1 + round % 4, 128.0, 256.0);
        SCOPED_TRACE(round);
        CheckPair(a, b);
    }
}

TEST(IntersectionOracle, PathAgainstPiecesOfItself) {
    // The second path reuses knots and whole segments of the first, reversed: overlaps
    // along curves and meetings exactly at knots.
    std::mt19937 rng(2024);
    for (int round = 0; round < 300; ++round) {
        const GR_BezierPath2d a = geomtest::RandomPath(rng, 6, 200.0, round % 2 ? 8.0 : 0.0);
        GR_BezierPath2d b = a;
        const double from = static_cast<double>(round % 3), to = from + 1.0 + static_cast<double>(round % 4);
        b.KeepRange(from, std::min(to, static_cast<double>(b.SegmentCount())));
        b.Reverse();
        SCOPED_TRACE(round);
        CheckPair(a, b);
    }
}

TEST(IntersectionOracle, SelfIntersections) {
    std::mt19937 rng(555);
    for (int round = 0; round < 300; ++round) {
        const GR_BezierPath2d a = geomtest::RandomPath(rng, 2 + round % 6, 300.0, 0.0);
        SCOPED_TRACE(round);
        const std::vector<GR_Point2d> chords = geomtest::ChordPolyline(a);
        const std::vector<Edge> edges = Edges(chords);
        std::vector<GR_Point2d> expected;
        for (size_t i = 0; i < edges.size(); ++i)
            for (size_t j = i + 1; j < edges.size(); ++j) {
                const auto result = CGAL::intersection(Exact::Segment_2(edges[i].start, edges[i].end),
                                                       Exact::Segment_2(edges[j].start, edges[j].end));
                if (!result)
                    continue;
                const Exact::Point_2* p = boost::get<Exact::Point_2>(&*result);
                ASSERT_NE(p, nullptr) << "random curves do not overlap themselves";
                if (Owns(edges[i], *p) && Owns(edges[j], *p) && *p != edges[i].start)
                    expected.push_back({CGAL::to_double(p->x()), CGAL::to_double(p->y())});
            }
        std::vector<GR_PathHit> hits;
        a.IntersectSelf(hits);
        ASSERT_TRUE(SamePoints(expected, HitPoints(hits)));
    }
}

// Winding number of a closed polyline around p by exact orientation; nullopt on the boundary.
std::optional<int> OracleWinding(const std::vector<GR_Point2d>& polygon, const GR_Point2d& q) {
    const Inexact::Point_2 p(q.x, q.y);
    int winding = 0;
    for (size_t i = 0; i + 1 < polygon.size(); ++i) {
        const Inexact::Point_2 a(polygon[i].x, polygon[i].y), b(polygon[i + 1].x, polygon[i + 1].y);
        const CGAL::Orientation o = CGAL::orientation(a, b, p);
        if (o == CGAL::COLLINEAR && Inexact::Segment_2(a, b).has_on(p))
            return std::nullopt;
        if (a.y() <= p.y()) {
            if (b.y() > p.y() && o == CGAL::LEFT_TURN)
                ++winding;
        } else if (b.y() <= p.y() && o == CGAL::RIGHT_TURN) {
            --winding;
        }
    }
    return winding;
}

void CheckContains(const GR_BezierPath2d& path, const GR_Point2d& q, int& compared) {
    const std::vector<GR_Point2d> polygon = geomtest::ChordPolyline(path);
    const std::optional<int> winding = OracleWinding(polygon, q);
    if (!winding)
        return;
    ++compared;
    EXPECT_EQ(path.Contains(q, false), *winding % 2 != 0) << q.x << ", " << q.y << " winding " << *winding;
    EXPECT_EQ(path.Contains(q, true), *winding != 0) << q.x << ", " << q.y << " winding " << *winding;
}

GR_BezierPath2d Closed(GR_BezierPath2d path) {
    GR_Bezier2d closing(path.Point(path.points.size() - 1), path.Point(0));
    path.AppendSegment(closing);
    return path;
}

TEST(ContainsOracle, RandomClosedPathsEvenOddAndNonZero) {
    std::mt19937 rng(31337);
    int compared = 0;
    for (int round = 0; round < 300; ++round) {
        const bool lattice = round % 2 == 0;
        const GR_BezierPath2d path =
            Closed(geomtest::RandomPath(rng, 3 + round % 6, 64.0, lattice ? 4.0 : 0.0, lattice ? 1 : 3));
        if (path.SegmentCount() < 3)
            continue;
        SCOPED_TRACE(round);
        std::uniform_real_distribution<double> coordinate(-2.0, 66.0);
        for (int k = 0; k < 40; ++k) {
            GR_Point2d q{coordinate(rng), coordinate(rng)};
            // Lattice rounds put points on the rows of the vertices: rays through vertices
            // and along horizontal edges.
            q = lattice ? GR_Point2d{std::floor(q.x), std::floor(q.y / 4.0) * 4.0} : GR_SnapToGrid(q);
            CheckContains(path, q, compared);
        }
        for (const GR_Point2d& v : geomtest::ChordPolyline(path))
            CheckContains(path, v - GR_Point2d{1.0, 0.0}, compared);
    }
    EXPECT_GT(compared, 8000);
}

} // namespace
