// The flattener, resampling and relaxing, and the fitter: quality on noisy smooth strokes,
// corners, and the defined results of degenerate input.

#include "GeometryTestUtil.h"
#include "vector/GR_BezierFlattener.h"
#include "vector/GR_BezierPath2d.h"
#include "vector/GR_BezierPath2dFitter.h"

#include <cmath>
#include <gtest/gtest.h>
#include <numbers>
#include <random>

namespace {

double DistanceToPolyline(const GR_Point2d& p, const std::vector<GR_Point2d>& line) {
    double best = std::numeric_limits<double>::infinity();
    if (line.size() == 1)
        return std::sqrt(GR_DistanceSquared(p, line[0]));
    for (size_t i = 0; i + 1 < line.size(); ++i) {
        const GR_Point2d d = line[i + 1] - line[i];
        const double l = GR_Dot(d, d);
        const double u = l > 0 ? std::clamp(GR_Dot(p - line[i], d) / l, 0.0, 1.0) : 0.0;
        best = std::min(best, GR_DistanceSquared(p, line[i] + d * u));
    }
    return std::sqrt(best);
}

// A fine polyline of a path, for measuring distances to the true curves.
std::vector<GR_Point2d> Dense(const GR_BezierPath2d& path) {
    std::vector<GR_Point2d> out;
    GR_BezierFlattener(50.0).FlattenPath(path, out);
    return out;
}

TEST(Flattener, FollowsTheCurveWithinTheLimits) {
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> c(0.0, 400.0);
    for (int round = 0; round < 200; ++round) {
        const GR_Bezier2d curve({c(rng), c(rng)}, {c(rng), c(rng)}, {c(rng), c(rng)}, {c(rng), c(rng)});
        for (double scale : {1.0, 4.0}) {
            std::vector<GR_Point2d> line;
            GR_BezierFlattener(scale).Flatten(curve, line);
            ASSERT_GE(line.size(), 2u);
            EXPECT_EQ(line.front(), curve.First());
            EXPECT_EQ(line.back(), curve.Last());
            double worst = 0.0;
            for (int k = 0; k <= 400; ++k)
                worst = std::max(worst, DistanceToPolyline(curve.Evaluate(k / 400.0), line));
            EXPECT_LT(worst * scale, 1.5) << round;
            // Not denser than one point per scaled unit of polygon length.
            const double polygon = GR_Length(curve.control[1] - curve.control[0]) +
                                   GR_Length(curve.control[2] - curve.control[1]) +
                                   GR_Length(curve.control[3] - curve.control[2]);
            EXPECT_LE(static_cast<double>(line.size()), 2.0 + polygon * scale);
        }
    }
}

TEST(Flattener, ShortAndStraightPiecesAndOpenEnds) {
    std::vector<GR_Point2d> line;
    const GR_BezierFlattener flattener(1.0);
    flattener.Flatten(GR_Bezier2d({0, 0}, {0.3, 0.3}, {0.6, 0}, {0.9, 0.2}), line);
    EXPECT_EQ(line.size(), 2u);
    GR_Bezier2d straight({0, 0}, {100, 0});
    straight.closedStart = 0;
    line.clear();
    flattener.Flatten(straight, line);
    ASSERT_EQ(line.size(), 1u);
    EXPECT_EQ(line[0], (GR_Point2d{100, 0}));
    GR_Bezier2d quadratic;
    quadratic.degree = 2;
    quadratic.control[0] = {0, 0};
    quadratic.control[1] = {50, 100};
    quadratic.control[2] = {100, 0};
    quadratic.closedEnd = 0;
    line.clear();
    flattener.Flatten(quadratic, line);
    EXPECT_GT(line.size(), 5u);
    EXPECT_NE(line.back(), (GR_Point2d{100, 0}));
    EXPECT_NEAR(DistanceToPolyline({50, 50}, line), 0.0, 1.0);
}

TEST(Polyline, ResampleAndRelax) {
    std::vector<GR_Point2d> out;
    GR_BezierFlattener::Resample({{0, 0}, {10, 0}, {10, 1}}, 3.0, out);
    const std::vector<GR_Point2d> expected = {{0, 0}, {2.5, 0}, {5, 0}, {7.5, 0}, {10, 0}, {10, 1}};
    EXPECT_EQ(out, expected);
    GR_BezierFlattener::Resample({{0, 0}, {10, 0}}, 0.0, out);
    EXPECT_EQ(out.size(), 2u);
    GR_BezierFlattener::Resample({}, 1.0, out);
    EXPECT_TRUE(out.empty());

    std::vector<GR_Point2d> zigzag = {{0, 0}, {1, 4}, {2, 0}, {3, 4}, {4, 0}};
    GR_BezierFlattener::RelaxPath(zigzag, 1);
    const std::vector<GR_Point2d> relaxed = {{0, 0}, {1, 2}, {2, 2}, {3, 2}, {4, 0}};
    EXPECT_EQ(zigzag, relaxed);
    GR_BezierFlattener::RelaxPath(zigzag, 2);
    EXPECT_EQ(zigzag.front(), (GR_Point2d{0, 0}));
    EXPECT_EQ(zigzag[2], (GR_Point2d{2, 1.75}));
}

// A smooth random stroke: cubic segments joined with continuous tangents.
GR_BezierPath2d SmoothStroke(std::mt19937& rng, int segments) {
    std::uniform_real_distribution<double> c(-60.0, 60.0);
    GR_BezierPath2d path;
    GR_Point2d p{0, 0}, tangent{80, 0};
    for (int i = 0; i < segments; ++i) {
        const GR_Point2d end = p + GR_Point2d{100, 0} + GR_Point2d{c(rng), c(rng)};
        const GR_Point2d endTangent{60 + c(rng) * 0.5, c(rng)};
        path.AppendSegment(GR_Bezier2d(p, p + tangent * (1.0 / 3.0), end - endTangent * (1.0 / 3.0), end));
        p = end;
        tangent = endTangent;
    }
    return path;
}

std::vector<GR_Point2d> Sampled(const GR_BezierPath2d& path, double spacing, double noise,
                                std::mt19937& rng) {
    std::uniform_real_distribution<double> n(-noise, noise);
    std::vector<GR_Point2d> points;
    for (size_t i = 0; i < path.SegmentCount(); ++i) {
        GR_Bezier2d segment;
        path.Segment(i, segment);
        const int count = static_cast<int>(GR_Length(segment.Last() - segment.First()) / spacing);
        for (int k = 0; k < count; ++k) {
            const GR_Point2d p = segment.Evaluate(static_cast<double>(k) / count);
            points.push_back(p + GR_Point2d{n(rng), n(rng)});
        }
    }
    points.push_back(path.Point(path.points.size() - 1));
    return points;
}

TEST(Fitter, NoisySmoothStrokesFitWithinTheTolerance) {
    std::mt19937 rng(4242);
    double worstRatio = 0.0;
    for (int round = 0; round < 60; ++round) {
        const double tolerance = 0.5 + (round % 4);
        const GR_BezierPath2d truth = SmoothStroke(rng, 2 + round % 5);
        const std::vector<GR_Point2d> raw = Sampled(truth, 1.5, tolerance * 0.3, rng);
        GR_BezierPath2d fitted;
        ASSERT_TRUE(GR_BezierPath2dFitter(tolerance).Fit(GR_BezierPath2d::Polyline(raw), fitted));
        ASSERT_GE(fitted.SegmentCount(), 1u);
        EXPECT_EQ(fitted.step, 3u);
        EXPECT_EQ(fitted.points[0], (GR_Point2f{static_cast<float>(raw[0].x), static_cast<float>(raw[0].y)}));
        const std::vector<GR_Point2d> dense = Dense(fitted);
        double worst = 0.0;
        for (const GR_Point2d& p : raw)
            worst = std::max(worst, DistanceToPolyline(p, dense));
        worstRatio = std::max(worstRatio, worst / tolerance);
        EXPECT_LE(worst, tolerance * 1.02) << round;
        // Far fewer segments than points.
        EXPECT_LT(fitted.SegmentCount() * 10, raw.size());
    }
    RecordProperty("worst_distance_over_tolerance", std::to_string(worstRatio));
}

std::vector<GR_Point2d> Corner(double angleDegrees, double arm, double spacing) {
    // Two straight arms meeting at the origin with the given inner angle.
    const double a = angleDegrees * std::numbers::pi / 180.0;
    std::vector<GR_Point2d> points;
    for (double s = arm; s > 0.0; s -= spacing)
        points.push_back({-s, 0});
    for (double s = 0.0; s <= arm; s += spacing)
        points.push_back({-s * std::cos(a), s * std::sin(a)});
    return points;
}

TEST(Fitter, SharpCornersAreKeptAndSmoothCurvesHaveNone) {
    for (double angle : {30.0, 60.0, 90.0, 95.0}) {
        const GR_BezierPath2dFitter fitter(1.0);
        GR_BezierPath2d fitted;
        ASSERT_TRUE(fitter.Fit(GR_BezierPath2d::Polyline(Corner(angle, 60.0, 1.0)), fitted));
        bool cornerKnot = false;
        for (size_t k = 1; k + 1 < fitted.KnotCount(); ++k) {
            GR_Point2d p, in, out;
            fitted.TangentsAt(static_cast<double>(k), p, in, out);
            if (GR_Length(p) < 0.01) {
                cornerKnot = true;
                // Not tangent continuous: the in and out tangents are far from opposite.
                EXPECT_GT(GR_Dot(in, out) / (GR_Length(in) * GR_Length(out)), -0.9) << angle;
            }
        }
        EXPECT_TRUE(cornerKnot) << angle;
    }
    // A gentle bend of 150 degrees is not a corner.
    const std::vector<GR_Point2d> gentle = Corner(150.0, 60.0, 1.0);
    const GR_BezierPath2dFitter fitter(1.0);
    std::vector<double> arc(gentle.size(), 0.0);
    for (size_t i = 1; i < gentle.size(); ++i)
        arc[i] = arc[i - 1] + GR_Length(gentle[i] - gentle[i - 1]);
    EXPECT_EQ(fitter.FindCorners(gentle, arc).size(), 2u);

    // A circle drawn by hand, closed on itself: no corner but its two ends.
    std::vector<GR_Point2d> circle;
    for (int k = 0; k <= 360; ++k)
        circle.push_back(
            {100.0 * std::cos(k * std::numbers::pi / 180.0), 100.0 * std::sin(k * std::numbers::pi / 180.0)});
    std::vector<double> circleArc(circle.size(), 0.0);
    for (size_t i = 1; i < circle.size(); ++i)
        circleArc[i] = circleArc[i - 1] + GR_Length(circle[i] - circle[i - 1]);
    EXPECT_EQ(fitter.FindCorners(circle, circleArc), (std::vector<size_t>{0, circle.size() - 1}));
}

TEST(Fitter, CornersNeverNearTheEnds) {
    // A hook in the first and last three points only.
    std::vector<GR_Point2d> points = {{0, 10}, {0, 0}, {1, 0}};
    for (int i = 2; i < 40; ++i)
        points.push_back({static_cast<double>(i), 0});
    points.push_back({39, 10});
    std::vector<double> arc(points.size(), 0.0);
    for (size_t i = 1; i < points.size(); ++i)
        arc[i] = arc[i - 1] + GR_Length(points[i] - points[i - 1]);
    for (size_t corner : GR_BezierPath2dFitter(1.0).FindCorners(points, arc))
        EXPECT_TRUE(corner == 0 || corner == points.size() - 1 ||
                    (corner >= 3 && corner + 4 <= points.size()));
}

TEST(Fitter, FewPointsAndDegenerateInput) {
    const GR_BezierPath2dFitter fitter(10.0);
    GR_BezierPath2d out;
    EXPECT_TRUE(fitter.Fit(GR_BezierPath2d(), out));
    EXPECT_TRUE(out.points.empty());
    EXPECT_TRUE(fitter.Fit(GR_BezierPath2d::Polyline({{3, 3}}), out));
    EXPECT_TRUE(out.points.empty());
    // Three points, however bent, give one straight segment.
    EXPECT_TRUE(fitter.Fit(GR_BezierPath2d::Polyline({{0, 0}, {5, 20}, {10, 0}}), out));
    ASSERT_EQ(out.points.size(), 2u);
    EXPECT_EQ(out.Point(1), (GR_Point2d{10, 0}));

    // Repeated points, zero-length edges, huge coordinates: finite results.
    const std::vector<std::vector<GR_Point2d>> inputs = {
        std::vector<GR_Point2d>(50, GR_Point2d{7, 7}),
        {{0, 0}, {0, 0}, {0, 0}, {10, 0}, {10, 0}, {20, 5}, {20, 5}, {20, 5}},
        {{-1e30, 0}, {0, 1e30}, {1e30, 0}, {1e30, 1e30}},
    };
    for (const auto& input : inputs) {
        const GR_BezierPath2d path = GR_BezierPath2d::Polyline(input);
        const std::vector<GR_Bezier2d> segments = fitter.FitSegments(fitter.Prepare(path));
        ASSERT_FALSE(segments.empty());
        for (const GR_Bezier2d& segment : segments)
            for (uint32_t k = 0; k <= segment.degree; ++k)
                EXPECT_TRUE(std::isfinite(segment.control[k].x) && std::isfinite(segment.control[k].y));
        // Too many pieces for one path (the huge input) is said, not cut silently.
        const bool whole = fitter.Fit(path, out);
        EXPECT_EQ(whole, segments.size() * 3 + 1 <= GR_BezierPath2d::kMaxPoints);
        if (whole) {
            EXPECT_EQ(out.SegmentCount(), segments.size());
        }
    }
    // A zero or invalid tolerance still ends.
    for (double tolerance : {0.0, -1.0, std::numeric_limits<double>::quiet_NaN()}) {
        ASSERT_TRUE(GR_BezierPath2dFitter(tolerance).Fit(GR_BezierPath2d::Polyline(inputs[1]), out));
        EXPECT_GE(out.SegmentCount(), 1u);
    }
}

TEST(Fitter, NewtonStepsRecoverTheParametersOfAnExactCubic) {
    // Samples evenly spaced in the curve's own parameter, not in arc length: only after
    // reparameterisation does one cubic fit them.
    const GR_Bezier2d truth({0, 0}, {10, 120}, {200, 130}, {220, 0});
    std::vector<GR_Point2d> samples;
    for (int k = 0; k <= 60; ++k)
        samples.push_back(truth.Evaluate(k / 60.0));
    const GR_BezierPath2dFitter fitter(2.0);
    const std::vector<GR_Bezier2d> fitted = fitter.FitSegments(samples);
    ASSERT_EQ(fitted.size(), 1u);
    for (int k = 1; k < 4; ++k) {
        EXPECT_NEAR(fitted[0].Evaluate(k / 4.0).x, truth.Evaluate(k / 4.0).x, 4.0);
        EXPECT_NEAR(fitted[0].Evaluate(k / 4.0).y, truth.Evaluate(k / 4.0).y, 4.0);
    }
}

TEST(Fitter, CurvedInputIsFlattenedFirst) {
    GR_BezierPath2d curve;
    curve.AppendSegment(GR_Bezier2d({0, 0}, {0, 200}, {300, 200}, {300, 0}));
    GR_BezierPath2d fitted;
    ASSERT_TRUE(GR_BezierPath2dFitter(1.0).Fit(curve, fitted));
    ASSERT_GE(fitted.SegmentCount(), 1u);
    const std::vector<GR_Point2d> dense = Dense(fitted);
    GR_Bezier2d segment;
    curve.Segment(0, segment);
    for (int k = 0; k <= 100; ++k)
        EXPECT_LT(DistanceToPolyline(segment.Evaluate(k / 100.0), dense), 2.5);
}

} // namespace
