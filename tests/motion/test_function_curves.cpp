// Scalar curves: values against an independent computation, edits, inversion, adapters.

#include "motion/CFunctionAdapter.h"
#include "motion/CInterpolation.h"
#include "motion/CSpline.h"
#include "motion/CVelocityBased.h"

#include <cmath>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <sstream>
#include <string>

namespace {

// Keys (x, y), out-handle and in-handle of one spline key, as the reference script has them.
struct KeyHandles {
    double x, y, outX, outY, inX, inY;
};

std::unique_ptr<CSpline> SplineOf(const std::vector<KeyHandles>& keys) {
    auto spline = std::make_unique<CSpline>(static_cast<int16_t>(keys.front().x), keys.front().y,
                                            static_cast<int16_t>(keys.back().x), keys.back().y);
    for (size_t i = 1; i + 1 < keys.size(); ++i)
        spline->AddKey(keys[i].x, keys[i].y);
    for (size_t i = 0; i < keys.size(); ++i) {
        CSplinePoint& key = *spline->SplineKey(static_cast<int>(i));
        key.outHandle.Set(keys[i].outX, keys[i].outY);
        key.inHandle.Set(keys[i].inX, keys[i].inY);
    }
    return spline;
}

std::map<std::string, std::unique_ptr<CSpline>> ReferenceCurves() {
    std::map<std::string, std::unique_ptr<CSpline>> curves;
    curves["new"] = std::make_unique<CSpline>(0, 0.0, 25, 100.0);
    for (int n = 0; n < 7; ++n) {
        auto spline = std::make_unique<CSpline>(2, -5.0, 20, 40.0);
        spline->ReshapeAll(n);
        curves["preset" + std::to_string(n)] = std::move(spline);
    }
    curves["three"] = SplineOf({{1, 10, 1, 30, -1, -1}, {9, 5, 14, 0, 6, 8}, {24, 60, -1, -1, 20, 70}});
    return curves;
}

TEST(SplineCurve, MatchesReferenceScriptEverywhere) {
    auto curves = ReferenceCurves();
    std::ifstream in(QMS_TEST_DATA_DIR "/motion/spline_reference.csv");
    ASSERT_TRUE(in) << "spline_reference.csv missing";
    std::string line;
    int rows = 0;
    while (std::getline(in, line)) {
        std::istringstream fields(line);
        std::string name, xs, vs;
        std::getline(fields, name, ',');
        std::getline(fields, xs, ',');
        std::getline(fields, vs, ',');
        ASSERT_TRUE(curves.count(name)) << name;
        const double x = std::stod(xs);
        EXPECT_DOUBLE_EQ(curves[name]->Evaluate(x), std::stod(vs)) << name << " at " << x;
        ++rows;
    }
    EXPECT_EQ(rows, 720);
}

TEST(SplineCurve, ClosedFormsOfConstructorAndPresets) {
    // The linear preset makes both coordinates linear in t: the curve is the chord.
    CSpline linear(3, 10.0, 30, -8.0);
    linear.ReshapeAll(CSpline::kLinear);
    for (double x = 3.0; x <= 30.0; x += 0.7)
        EXPECT_NEAR(linear.Evaluate(x), 10.0 + (x - 3.0) * (-18.0 / 27.0), 1e-9);
    // A new spline of span 9: handles at whole thirds (3 and 6), so X(t) = 9t and
    // Y(t) = 100 * (3t^2 - 2t^3); seven rounds land exactly on t = k/128.
    CSpline fresh(0, 0.0, 9, 100.0);
    EXPECT_EQ(fresh.SplineKey(0)->outHandle.x, 3.0);
    EXPECT_EQ(fresh.SplineKey(1)->inHandle.x, 6.0);
    auto smooth = [](double t) { return 100.0 * (3 * t * t - 2 * t * t * t); };
    for (int k = 1; k < 128; k += 5)
        EXPECT_NEAR(fresh.Evaluate(9.0 * k / 128.0), smooth(k / 128.0), 1e-9) << k;
    // Span 10 truncates the third to 3.
    CSpline ten(0, 0.0, 10, 1.0);
    EXPECT_EQ(ten.SplineKey(0)->outHandle.x, 3.0);
    EXPECT_EQ(ten.SplineKey(1)->inHandle.x, 7.0);
    // Preset 3 keeps the out-handle upright above the left key; evaluation stays finite.
    CSpline upright(0, 0.0, 10, 10.0);
    upright.ReshapeSegment(1, CSpline::kSlowDeceleration);
    EXPECT_EQ(upright.SplineKey(0)->outHandle.x, 0.0);
    EXPECT_EQ(upright.SplineKey(0)->outHandle.y, 10.0);
    EXPECT_DOUBLE_EQ(upright.SplineKey(1)->inHandle.x, 1.0);
    for (double x = 0.0; x <= 10.0; x += 0.01)
        EXPECT_TRUE(std::isfinite(upright.Evaluate(x)));
    // An unknown preset changes nothing.
    upright.ReshapeAll(7);
    EXPECT_EQ(upright.SplineKey(0)->outHandle.y, 10.0);
}

TEST(Curves, ExactKeysAndEndsHoldTheirValues) {
    CSpline spline(0, 1.0, 40, 2.0);
    spline.AddKey(13.0, 7.25);
    spline.AddKey(27.0, -3.5);
    CInterpolation lines(0, 1.0, 40, 2.0);
    lines.AddKey(13.0, 7.25);
    lines.AddKey(27.0, -3.5);
    for (CFunctionBase* curve : {static_cast<CFunctionBase*>(&spline), static_cast<CFunctionBase*>(&lines)}) {
        EXPECT_EQ(curve->Evaluate(13.0), 7.25);
        EXPECT_EQ(curve->Evaluate(27.0), -3.5);
        EXPECT_EQ(curve->Evaluate(-5.0), 1.0);
        EXPECT_EQ(curve->Evaluate(40.0), 2.0);
        EXPECT_EQ(curve->Evaluate(1e9), 2.0);
        EXPECT_EQ(curve->GetDuration(), 41);
    }
    EXPECT_DOUBLE_EQ(lines.Evaluate(20.0), 7.25 + (7.0 / 14.0) * (-10.75));
    // A segment asked for with bad indexes or outside itself gives 0.0.
    EXPECT_EQ(lines.EvaluateSegment(0, 2, 5.0), 0.0);
    EXPECT_EQ(spline.EvaluateSegment(1, 2, 5.0), 0.0);
    EXPECT_EQ(spline.EvaluateSegment(1, 2, 30.0), 0.0);
}

TEST(Curves, DegenerateCurvesHaveDefinedResults) {
    CSpline empty;
    CDiscretizedCurve samples;
    EXPECT_EQ(empty.Evaluate(3.0), 0.0);
    EXPECT_EQ(empty.GetDuration(), 0);
    empty.Discretize(samples, 35);
    EXPECT_EQ(samples.Count(), 0u);
    EXPECT_EQ(empty.FindFrameForValue(samples, 1.0, 0.0), -1.0);
    empty.SetDuration(10);
    empty.DeleteKey(0);
    empty.AddKey(1.0, 1.0);
    EXPECT_EQ(empty.KeyCount(), 0);

    const double one[] = {4.5};
    CSpline single;
    single.SetFromValues(one, 7, 1);
    EXPECT_EQ(single.Evaluate(0.0), 4.5);
    EXPECT_EQ(single.Evaluate(7.0), 4.5);
    EXPECT_EQ(single.Evaluate(9.0), 4.5);

    // A velocity-based curve over a flat reference falls back to a straight line, and
    // one whose keys coincide has slope 0.
    CFunctionPlace flat = std::make_unique<CInterpolation>(0, 5.0, 20, 5.0);
    CVelocityBased curve(&flat);
    const double values[] = {0.0, 10.0, 30.0};
    curve.SetFromValues(values, 0, 3);
    EXPECT_DOUBLE_EQ(curve.Evaluate(0.5), 5.0);
    EXPECT_DOUBLE_EQ(curve.Evaluate(1.25), 15.0);
    EXPECT_EQ(curve.EvaluateSegment(1, 1, 1.0), 10.0);
}

TEST(VelocityBased, FollowsTheReferenceProgress) {
    CFunctionPlace reference = std::make_unique<CSpline>(0, 0.0, 30, 100.0);
    CVelocityBased curve(&reference);
    const double values[] = {2.0, 8.0};
    curve.SetFromValues(values, 0, 2);
    curve.GetKey(1)->x = 30.0;
    for (double x = 0.0; x <= 30.0; x += 1.5)
        EXPECT_NEAR(curve.Evaluate(x), 2.0 + 6.0 * reference->Evaluate(x) / 100.0, 1e-12);
    // Replacing the curve in the place is seen at once.
    reference = std::make_unique<CInterpolation>(0, 0.0, 30, 3.0);
    EXPECT_NEAR(curve.Evaluate(10.0), 4.0, 1e-12);
    // The duration goes to the reference first.
    curve.SetDuration(61);
    EXPECT_EQ(curve.GetKey(1)->x, 60.0);
    EXPECT_EQ(reference->GetKey(1)->x, 60.0);
    // Samples are even in frames.
    CDiscretizedCurve samples;
    curve.Discretize(samples, 4);
    ASSERT_EQ(samples.Count(), 5u);
    CCurvePoint p;
    samples.Get(1, p);
    EXPECT_EQ(p.x, 15.0);
    EXPECT_NEAR(p.y, 3.5, 1e-12);
}

TEST(SplineEditing, AddKeySplitsWithoutChangingTheShape) {
    std::mt19937 random(17);
    std::uniform_real_distribution<double> value(-50.0, 50.0);
    for (int trial = 0; trial < 40; ++trial) {
        CSpline spline(0, value(random), 60, value(random));
        spline.SplineKey(0)->outHandle.Set(std::uniform_real_distribution<double>(0.0, 60.0)(random),
                                           value(random));
        spline.SplineKey(1)->inHandle.Set(std::uniform_real_distribution<double>(0.0, 60.0)(random),
                                          value(random));
        CDiscretizedCurve before;
        spline.Discretize(before, 200);
        const double x = std::uniform_real_distribution<double>(1.0, 59.0)(random);
        spline.AddKey(x, spline.Evaluate(x));
        ASSERT_EQ(spline.KeyCount(), 3);
        // The split halves trace the old curve: each old sample lies on the new one.
        for (size_t i = 0; i < before.Count(); ++i) {
            CCurvePoint p;
            before.Get(i, p);
            EXPECT_NEAR(spline.Evaluate(p.x), p.y, 0.5) << trial << " " << p.x;
        }
        EXPECT_EQ(spline.SplineKey(1)->x, x);
        EXPECT_EQ(spline.SplineKey(1)->inHandle.id, 2);
        EXPECT_EQ(spline.SplineKey(1)->outHandle.id, 3);
        EXPECT_EQ(spline.SplineKey(2)->inHandle.id, 4);
    }
}

TEST(SplineEditing, KeysOutsideOrOnOthersAreRefused) {
    CSpline spline(0, 0.0, 10, 1.0);
    spline.AddKey(0.0, 5.0);
    spline.AddKey(10.0, 5.0);
    spline.AddKey(-1.0, 5.0);
    spline.AddKey(11.0, 5.0);
    EXPECT_EQ(spline.KeyCount(), 2);
    spline.AddKey(4.0, 5.0);
    spline.AddKey(4.0, 6.0);
    EXPECT_EQ(spline.KeyCount(), 3);
    spline.DeleteKey(0);
    spline.DeleteKey(2);
    EXPECT_EQ(spline.KeyCount(), 3);
    const double out0 = spline.SplineKey(0)->outHandle.x;
    spline.DeleteKey(1);
    EXPECT_EQ(spline.KeyCount(), 2);
    EXPECT_EQ(spline.SplineKey(1)->index, 1);
    EXPECT_EQ(spline.SplineKey(0)->outHandle.x, out0);
    EXPECT_EQ(spline.SplineKey(1)->inHandle.id, 2);
}

TEST(SplineEditing, SetDurationRescalesAndCollapses) {
    CSpline spline(0, 0.0, 100, 10.0);
    for (double x : {10.0, 11.0, 50.0, 99.0})
        spline.AddKey(x, x / 10.0);
    const double inD = spline.SplineKey(3)->x - spline.SplineKey(3)->inHandle.x;
    spline.SetDuration(11);
    // Frames 0, 1, 1 (goes), 5, 10 (the earlier of the pair at the end goes), 10.
    ASSERT_EQ(spline.KeyCount(), 4);
    EXPECT_EQ(spline.SplineKey(0)->x, 0.0);
    EXPECT_EQ(spline.SplineKey(1)->x, 1.0);
    EXPECT_EQ(spline.SplineKey(2)->x, 5.0);
    EXPECT_DOUBLE_EQ(spline.SplineKey(2)->inHandle.x, 5.0 - inD * 0.1);
    EXPECT_EQ(spline.SplineKey(3)->x, 10.0);
    EXPECT_EQ(spline.SplineKey(3)->y, 10.0);
    EXPECT_EQ(spline.SplineKey(3)->index, 3);
    EXPECT_EQ(spline.GetDuration(), 11);
    spline.SetDuration(1);
    EXPECT_EQ(spline.GetDuration(), 11);
}

TEST(SplineEditing, HandleModesAndHits) {
    CSpline spline(0, 0.0, 30, 30.0);
    spline.AddKey(15.0, 10.0);
    CSplinePoint& key = *spline.SplineKey(1);
    key.inHandle.Set(10.0, 10.0);
    key.outHandle.Set(20.0, 10.0);
    // Free: only the dragged handle moves; x is clamped to the key.
    spline.MoveHandle(3, CSpline::kModeFree, 12.0, 14.0);
    EXPECT_EQ(key.outHandle.x, 15.0);
    EXPECT_NEAR(key.outHandle.y, 14.0, 1e-6);
    EXPECT_EQ(key.inHandle.x, 10.0);
    // Smooth: the opposite keeps its length (5) on the line through the key.
    key.outHandle.Set(20.0, 10.0);
    spline.MoveHandle(3, CSpline::kModeSmooth, 18.0, 14.0);
    EXPECT_NEAR(key.inHandle.x, 15.0 - 5.0 * 0.6, 1e-9);
    EXPECT_NEAR(key.inHandle.y, 10.0 - 5.0 * 0.8, 1e-9);
    // Symmetric: mirrored, then both at the shorter length.
    spline.MoveHandle(2, CSpline::kModeSymmetric, 12.0, 6.0);
    EXPECT_NEAR(key.outHandle.x, 18.0, 1e-5);
    EXPECT_NEAR(key.outHandle.y, 14.0, 1e-5);
    // A mirror beyond the next key's in-handle slides back along its line.
    spline.SplineKey(2)->inHandle.Set(20.0, 30.0);
    spline.MoveHandle(2, CSpline::kModeSymmetric, 5.0, 0.0);
    EXPECT_NEAR(key.outHandle.x, 20.0, 1e-9);
    EXPECT_NEAR(key.outHandle.y, 15.0, 1e-9);
    EXPECT_NEAR(std::hypot(key.inHandle.x - 15.0, key.inHandle.y - 10.0), std::hypot(5.0, 5.0), 1e-5);
    // End keys are free whatever the mode.
    const C2DPoint inner = spline.SplineKey(2)->inHandle;
    spline.MoveHandle(1, CSpline::kModeSymmetric, 3.0, 1.0);
    EXPECT_EQ(spline.SplineKey(0)->inHandle.x, -1.0);
    EXPECT_EQ(spline.SplineKey(2)->inHandle.x, inner.x);
    // Hits: in-handle before out-handle, 0.1 tolerance, nothing gives 0.
    EXPECT_EQ(spline.HitHandle(key.inHandle.x + 0.05, key.inHandle.y - 0.05), 2);
    EXPECT_EQ(spline.HitHandle(key.outHandle.x, key.outHandle.y + 0.09), 3);
    EXPECT_EQ(spline.HitHandle(key.outHandle.x, key.outHandle.y + 0.11), 0);
    EXPECT_EQ(spline.HitHandle(-1.0, -1.0), 0);
    EXPECT_EQ(spline.GetHandle(5), &spline.SplineKey(2)->outHandle);
    EXPECT_EQ(spline.GetHandle(6), nullptr);
}

TEST(SplineEditing, ValuesConstantsAndHolds) {
    CSpline spline(0, 0.0, 30, 30.0);
    spline.AddKey(10.0, 10.0);
    spline.AddKey(20.0, 20.0);
    const double inY = spline.SplineKey(1)->inHandle.y;
    double frame = -1.0;
    spline.SetKeyValue(1, 15.0, &frame);
    EXPECT_EQ(frame, 10.0);
    EXPECT_DOUBLE_EQ(spline.SplineKey(1)->inHandle.y, inY + 5.0);
    spline.SetConstantSegment(1, 4.0);
    EXPECT_EQ(spline.SplineKey(1)->outHandle.y, 4.0);
    EXPECT_EQ(spline.SplineKey(2)->inHandle.y, 4.0);
    EXPECT_NE(spline.SplineKey(2)->outHandle.y, 4.0);
    EXPECT_NEAR(spline.Evaluate(14.2), 4.0, 1e-12);
    spline.SetConstantAll(-2.0);
    EXPECT_EQ(spline.SplineKey(0)->inHandle.y, -1.0);
    EXPECT_EQ(spline.SplineKey(3)->outHandle.y, -1.0);
    for (double x = 0; x <= 30; x += 0.5)
        EXPECT_NEAR(spline.Evaluate(x), -2.0, 1e-12);
    // Offsetting moves the keys alone.
    spline.OffsetValues(1.0);
    EXPECT_EQ(spline.Evaluate(10.0), -1.0);
    EXPECT_EQ(spline.SplineKey(1)->outHandle.y, -2.0);

    CInterpolation lines(0, 0.0, 30, 30.0);
    lines.HoldValue(5.0, 12.0, true);
    ASSERT_EQ(lines.KeyCount(), 4);
    EXPECT_EQ(lines.Evaluate(5.0), 5.0);
    EXPECT_EQ(lines.Evaluate(12.0), 5.0);
    EXPECT_EQ(lines.Evaluate(8.5), 5.0);
    // Straight lines have no constant form.
    lines.SetConstantAll(3.0);
    EXPECT_EQ(lines.GetKey(1)->y, 5.0);
}

TEST(SplineEditing, FromValuesAndConversion) {
    const double values[] = {0.0, 2.0, 8.0, 18.0, 32.0, 50.0, 72.0};
    CSpline spline;
    spline.SetFromValues(values, 3, 7);
    ASSERT_EQ(spline.KeyCount(), 7);
    EXPECT_EQ(spline.SplineKey(0)->outHandle.x, 5.0);
    EXPECT_EQ(spline.SplineKey(6)->inHandle.x, 7.0);
    EXPECT_EQ(spline.SplineKey(3)->inHandle.x, 0.0);
    EXPECT_EQ(spline.SplineKey(0)->inHandle.x, -1.0);
    for (int k = 0; k < 7; ++k)
        EXPECT_EQ(spline.Evaluate(3.0 + k), values[k]);

    // Converted from a parabola sampled at whole frames, the tangents follow its slope.
    CInterpolation source;
    source.SetFromValues(values, 0, 7);
    CSpline converted;
    converted.ConvertFrom(source);
    const CSplinePoint& key = *converted.SplineKey(2);
    EXPECT_DOUBLE_EQ(key.inHandle.x, 2.0 - 1.0 / 3.0);
    EXPECT_DOUBLE_EQ(key.inHandle.y, 8.0 - (1.0 / 3.0) * 2.0 * (8.0 - 5.0));
    EXPECT_DOUBLE_EQ(key.outHandle.y, 8.0 + (1.0 / 3.0) * 2.0 * (13.0 - 8.0));
    EXPECT_EQ(converted.SplineKey(0)->inHandle.x, 0.0);
    EXPECT_EQ(converted.SplineKey(6)->outHandle.y, 0.0);
    // The interpolation's ConvertFrom keeps only the keys.
    CInterpolation back;
    back.ConvertFrom(converted);
    EXPECT_EQ(back.KeyCount(), 7);
    EXPECT_EQ(back.Evaluate(2.5), 13.0);
}

TEST(Inversion, FindFrameForValueAgreesWithBruteForce) {
    std::mt19937 random(5);
    for (int trial = 0; trial < 30; ++trial) {
        CFunctionPlace place = std::make_unique<CSpline>(0, 0.0, 48, 100.0);
        CVelocityFunctionAdapter adapter(&place);
        for (int k = 0; k < 4; ++k) {
            const double x = std::uniform_real_distribution<double>(1.0, 47.0)(random);
            adapter.AddKey(x, place->Evaluate(x));
        }
        for (int i = 1; i + 1 < place->KeyCount(); ++i)
            adapter.SetKeyValue(i, std::uniform_real_distribution<double>(0.0, 100.0)(random), nullptr);
        CDiscretizedCurve samples;
        for (double v = 0.5; v < 100.0; v += 3.7) {
            const double frame = place->FindFrameForValue(samples, v, 0.0);
            ASSERT_GE(frame, 0.0) << v;
            // Brute force: the first whole-frame step that reaches v brackets the answer.
            double first = 0.0;
            while (first < 48.0 && place->Evaluate(first + 0.01) < v)
                first += 0.01;
            EXPECT_NEAR(frame, first, 0.05) << trial << " value " << v;
            EXPECT_NEAR(place->Evaluate(frame), v, 0.002) << trial;
        }
        EXPECT_EQ(place->FindFrameForValue(samples, 100.5, 0.0), -1.0);
        EXPECT_EQ(samples.Count(), 35u * static_cast<size_t>(place->KeyCount() - 1) + 1);
    }
    // On an interpolation the segment is found by key interval.
    CInterpolation lines(0, 0.0, 10, 10.0);
    lines.AddKey(4.0, 8.0);
    CDiscretizedCurve samples;
    EXPECT_DOUBLE_EQ(lines.FindFrameForValue(samples, 9.0, 0.0), 7.0);
    EXPECT_DOUBLE_EQ(lines.FindFrameForValue(samples, 9.0, 5.0), 7.0);
    EXPECT_EQ(lines.FindFrameForValue(samples, 11.0, 0.0), -1.0);
}

TEST(Adapters, VelocityKeepsAMonotonicRise) {
    CFunctionPlace place = std::make_unique<CSpline>(0, 0.0, 40, 100.0);
    CVelocityFunctionAdapter adapter(&place);
    EXPECT_EQ(adapter.minValue, 0.0);
    EXPECT_EQ(adapter.maxValue, 100.0);
    adapter.SetKeyValue(0, 30.0, nullptr);
    adapter.SetKeyValue(1, 30.0, nullptr);
    EXPECT_EQ(place->GetKey(0)->y, 0.0);
    EXPECT_EQ(place->GetKey(1)->y, 100.0);
    adapter.AddKey(20.0, 50.0);
    adapter.AddKey(30.0, 70.0);
    adapter.SetKeyValue(1, 120.0, nullptr);
    EXPECT_EQ(place->GetKey(1)->y, 70.0);
    adapter.SetKeyValue(2, 99.995, nullptr);
    EXPECT_EQ(place->GetKey(2)->y, 99.99);
    adapter.SetKeyValue(1, -3.0, nullptr);
    EXPECT_EQ(place->GetKey(1)->y, 0.01);
    // Every handle stays within the values of the neighbour keys.
    for (int i = 1; i + 1 < place->KeyCount(); ++i) {
        CSpline& spline = static_cast<CSpline&>(*place);
        EXPECT_GE(spline.SplineKey(i)->inHandle.y, place->GetKey(i - 1)->y - 1e-12) << i;
        EXPECT_LE(spline.SplineKey(i)->outHandle.y, place->GetKey(i + 1)->y + 1e-12) << i;
    }
    // A dragged out-handle stops at the next key's value.
    adapter.MoveHandle(3, CSpline::kModeFree, 22.0, 150.0);
    EXPECT_LE(adapter.GetHandle(3)->y, place->GetKey(2)->y);
    adapter.SetConstantAll(5.0);
    EXPECT_EQ(place->GetKey(1)->y, 0.01);
    EXPECT_FALSE(adapter.CanChangeKind());
}

TEST(Adapters, RangesKindsAndForwarding) {
    CFunctionPlace fov = std::make_unique<CSpline>(0, 40.0, 20, 60.0);
    CFOVFunctionAdapter lens(&fov);
    lens.SetKeyValue(1, 400.0, nullptr);
    EXPECT_EQ(fov->GetKey(1)->y, 150.0);
    lens.MoveHandle(1, CSpline::kModeFree, 5.0, 2.0);
    EXPECT_EQ(lens.GetHandle(1)->y, 10.0);

    CFunctionPlace velocity = std::make_unique<CSpline>(0, 0.0, 20, 100.0);
    CFunctionPlace scale = std::make_unique<CInterpolation>(0, 1.0, 20, 3.0);
    CScaleFunctionAdapter adapter(&scale, &velocity);
    adapter.SetKeyValue(1, 20000.0, nullptr);
    EXPECT_EQ(scale->GetKey(1)->y, 10000.0);
    adapter.SetKeyValue(1, 3.0, nullptr);
    adapter.ChangeKind(0);
    EXPECT_NE(dynamic_cast<CInterpolation*>(scale.get()), nullptr);
    adapter.ChangeKind(2);
    auto* based = dynamic_cast<CVelocityBased*>(scale.get());
    ASSERT_NE(based, nullptr);
    EXPECT_EQ(based->reference, &velocity);
    EXPECT_NEAR(adapter.Evaluate(10.0), 1.0 + 2.0 * velocity->Evaluate(10.0) / 100.0, 1e-12);
    adapter.ChangeKind(1);
    EXPECT_TRUE(adapter.HasHandles());
    EXPECT_EQ(adapter.KeyCount(), 2);
    // Inversion through the adapter uses the target's samples and segments.
    CDiscretizedCurve samples;
    const double frame = adapter.FindFrameForValue(samples, 2.0, 0.0);
    EXPECT_NEAR(scale->Evaluate(frame), 2.0, 1e-3);
    adapter.OffsetValues(1.0);
    EXPECT_EQ(scale->GetKey(0)->y, 2.0);
}

} // namespace
