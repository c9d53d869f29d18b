// Motion paths: Kochanek-Bartels sampling, reparametrisation by arc length through the
// velocity curve, editing, the coordinate adapter and key-frame entry.

#include "motion/C3DFunctionAdapter.h"
#include "motion/C3DInterpolation.h"
#include "motion/CCatmullCurve.h"
#include "motion/CInterpolation.h"
#include "motion/CSpline.h"
#include "motion/SP_KeyFrameEntry.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>
#include <random>

namespace {

// Arc length along the samples up to a point that lies between the samples `before`
// and `after`: the integral of speed over the sampled path.
double ArcLengthAt(const CDiscretized3DCurve& cache, const C3DPoint& position, const C3DPoint& before) {
    const auto& samples = cache.Samples();
    double length = 0.0;
    for (size_t i = 0; i < samples.size(); ++i) {
        if (samples[i].x == before.x && samples[i].y == before.y && samples[i].z == before.z)
            return length + position.Distance(before);
        if (i + 1 < samples.size())
            length += samples[i + 1].Distance(samples[i]);
    }
    ADD_FAILURE() << "sample not found";
    return -1.0;
}

double TotalLength(const CDiscretized3DCurve& cache) {
    double length = 0.0;
    for (size_t i = 1; i < cache.SampleCount(); ++i)
        length += cache.Samples()[i].Distance(cache.Samples()[i - 1]);
    return length;
}

// For every whole frame, the fraction of the path's length already run follows the
// velocity curve: (F(frame) - F(first)) / (F(last) - F(first)).
void ExpectPaceFollowsVelocity(CCatmullCurve& path, const CFunctionBase& velocity, double tolerance) {
    const int frames = path.GetDurationInFrames();
    C3DPoint position, before, after;
    ASSERT_TRUE(path.GetFrameRecord(0, position, before, after));
    const double total = TotalLength(path.GetCache());
    ASSERT_GT(total, 0.0);
    ASSERT_EQ(path.GetCache().RecordCount(), static_cast<size_t>(frames));
    const double f0 = velocity.Evaluate(0.0);
    const double dF = velocity.Evaluate(frames - 1) - f0;
    for (int frame = 0; frame < frames; ++frame) {
        ASSERT_TRUE(path.GetFrameRecord(frame, position, before, after));
        const double run = ArcLengthAt(path.GetCache(), position, before) / total;
        EXPECT_NEAR(run, (velocity.Evaluate(frame) - f0) / dF, tolerance) << "frame " << frame;
        const C3DPoint evaluated = path.Evaluate(frame);
        EXPECT_NEAR(evaluated.Distance(position), 0.0, tolerance * total) << "frame " << frame;
    }
}

TEST(CatmullPath, StraightLineFollowsTheDefaultVelocity) {
    CFunctionPlace velocity = std::make_unique<CSpline>(0, 0.0, 24, 100.0);
    CCatmullCurve path(0, C3DPoint(0, 0, 0), 24, C3DPoint(120, 0, 0), &velocity, 0);
    int index = -1;
    path.AddKey(C3DPoint(20, 0, 0), 6.0, &index, false);
    EXPECT_EQ(index, 1);
    ExpectPaceFollowsVelocity(path, *velocity, 2e-3);
    // On a line the position is simply the fraction of the length: eases in and out.
    for (int frame = 0; frame < 25; ++frame)
        EXPECT_NEAR(path.Evaluate(frame).x, 1.2 * velocity->Evaluate(frame), 0.25) << frame;
    // The unlocked key took the frame at which the motion reaches it.
    const double keyFrame = path.GetKey(1)->frame;
    EXPECT_NEAR(velocity->Evaluate(keyFrame), 100.0 * 20.0 / 120.0, 0.2);
}

TEST(CatmullPath, CircleOfKeysFollowsAVelocityWithLockedStretch) {
    CFunctionPlace velocity = std::make_unique<CSpline>(0, 0.0, 80, 100.0);
    velocity->ReshapeAll(CSpline::kLinear);
    const double radius = 200.0;
    CCatmullCurve path(0, C3DPoint(radius, 0, 0), 80, C3DPoint(radius, 0, 0), &velocity, 0);
    for (int k = 1; k < 16; ++k) {
        const double angle = 2.0 * M_PI * k / 16.0;
        path.AddKey(C3DPoint(radius * std::cos(angle), radius * std::sin(angle), 0), 5.0 * k, nullptr, false);
    }
    ExpectPaceFollowsVelocity(path, *velocity, 2e-3);
    // The spline stays near the circle between its keys.
    for (const C3DCurvePoint& sample : path.GetCache().Samples())
        EXPECT_NEAR(std::hypot(sample.x, sample.y), radius, 0.02 * radius);
    // Lock the key at the half: each half now takes exactly 40 frames.
    path.SetLockInTime(8, 40.3, true);
    EXPECT_EQ(path.GetKey(8)->frame, 40.0);
    const C3DPoint half = path.Evaluate(40.0);
    EXPECT_NEAR(half.x, -radius, 1e-3);
    EXPECT_NEAR(half.y, 0.0, 1e-3);
}

// The reparametrisation as written out step by step, searching the velocity samples
// from the start for every sample: the slow reference of the forward scan. A frame
// found outside the stretch (a flat velocity finds the first frame of its value) is
// brought back to the stretch; where none is found the previous sample's frame stands.
std::vector<double> ReferenceFrames(CCatmullCurve& path, const CFunctionBase& velocity) {
    CDiscretizedCurve d;
    velocity.Discretize(d, 35);
    const auto& samples = path.GetCache().Samples();
    const size_t steps = static_cast<size_t>(path.GetCache().steps);
    std::vector<double> frames(samples.size(), 0.0);
    size_t a = 0;
    const size_t n = static_cast<size_t>(path.KeyCount());
    while (a + 1 < n) {
        size_t b = a + 1;
        while (b + 1 < n && !path.GetKey(static_cast<int>(b))->lockedInTime)
            ++b;
        const size_t s0 = steps * a, s1 = s0 + steps * (b - a);
        const double fa = std::trunc(path.GetKey(static_cast<int>(a))->frame);
        const double fb = std::trunc(path.GetKey(static_cast<int>(b))->frame);
        const double v0 = velocity.Evaluate(fa), dV = velocity.Evaluate(fb) - v0;
        double length = 0.0;
        for (size_t i = s0 + 1; i <= s1; ++i)
            length += samples[i].Distance(samples[i - 1]);
        frames[s0] = fa;
        double acc = 0.0;
        double prevT = fa;
        for (size_t i = s0 + 1; i <= s1; ++i) {
            double u;
            if (length <= 0.0)
                u = static_cast<double>(i - s0) / static_cast<double>(s1 - s0);
            else if (i == s1)
                u = 1.0;
            else {
                acc += samples[i].Distance(samples[i - 1]);
                double t = velocity.FindFrameForValue(d, v0 + (acc / length) * dV, 0.0);
                if (t == -1.0)
                    t = prevT;
                u = std::clamp((t - fa) / (fb - fa), 0.0, 1.0);
            }
            frames[i] = u * (fb - fa) + fa;
            prevT = frames[i];
        }
        a = b;
    }
    return frames;
}

TEST(CatmullPath, ForwardScanMatchesSearchFromStartOnRandomPaths) {
    std::mt19937 random(2024);
    std::uniform_real_distribution<double> coordinate(-500.0, 500.0);
    for (int trial = 0; trial < 25; ++trial) {
        const int16_t last = static_cast<int16_t>(30 + trial * 7);
        CFunctionPlace velocity = std::make_unique<CSpline>(0, 0.0, last, 100.0);
        CVelocityFunctionAdapter adapter(&velocity);
        for (int k = 0; k < 3; ++k) {
            const double x = std::uniform_real_distribution<double>(1.0, last - 1.0)(random);
            adapter.AddKey(x, velocity->Evaluate(x));
        }
        for (int i = 1; i + 1 < velocity->KeyCount(); ++i)
            adapter.SetKeyValue(i, std::uniform_real_distribution<double>(0.0, 100.0)(random), nullptr);
        // Some velocity curves fall back on the way, as no adapter would let them.
        if (trial % 4 == 0) {
            const double values[] = {60.0, 0.0, 100.0};
            velocity = std::make_unique<CSpline>();
            velocity->SetFromValues(values, 0, 3);
            velocity->GetKey(2)->x = last;
            velocity->GetKey(1)->x = last * 0.3;
            velocity->ReshapeAll(CSpline::kLinear);
        }
        CCatmullCurve path(0, C3DPoint(coordinate(random), coordinate(random), 0), last,
                           C3DPoint(coordinate(random), coordinate(random), coordinate(random)), &velocity,
                           0);
        for (int k = 1; k < 8; ++k) {
            C3DPoint p(coordinate(random), coordinate(random), coordinate(random));
            CCatmullPoint shaped;
            shaped.C3DPoint::operator=(p);
            shaped.tension = std::uniform_real_distribution<float>(-1.0f, 1.0f)(random);
            shaped.continuity = std::uniform_real_distribution<float>(-1.0f, 1.0f)(random);
            shaped.bias = std::uniform_real_distribution<float>(-1.0f, 1.0f)(random);
            path.AddKey(shaped, std::floor(last * k / 8.0), nullptr, random() % 3 == 0);
        }
        path.Discretize(0);
        const std::vector<double> expected = ReferenceFrames(path, *velocity);
        const auto& samples = path.GetCache().Samples();
        ASSERT_EQ(samples.size(), expected.size());
        for (size_t i = 0; i < samples.size(); ++i)
            ASSERT_EQ(samples[i].frame, expected[i]) << "trial " << trial << " sample " << i;
        EXPECT_EQ(path.GetCache().RecordCount(), static_cast<size_t>(last + 1));
    }
}

TEST(CatmullPath, TangentsAndDegenerateGeometry) {
    // Zero tangents at the ends: the first samples crowd near the first key.
    CCatmullCurve path(0, C3DPoint(0, 0, 0), 10, C3DPoint(100, 0, 0), nullptr, 0);
    path.Discretize(0);
    const auto& samples = path.GetCache().Samples();
    ASSERT_EQ(samples.size(), 41u);
    // Hermite with R1 = R2 = 0: x(s) = 100 * (3s^2 - 2s^3).
    for (size_t k = 0; k <= 40; ++k) {
        const double s = k / 40.0;
        EXPECT_NEAR(samples[k].x, 100.0 * (3 * s * s - 2 * s * s * s), 1e-4);
    }
    // Without a velocity curve the pace is even over the length.
    for (int frame = 0; frame <= 10; ++frame)
        EXPECT_NEAR(path.Evaluate(frame).x, 10.0 * frame, 0.05);

    // Unequal neighbour chords weigh the tangent: at key (10, 0) between chords of 10
    // and 30, w = 30 / 40 and R = 0.75 * (10, 0) + 0.25 * (0, 30) = (7.5, 7.5); the last
    // key's tangent is 0. The Hermite midpoint is (P1 + P2) / 2 + R / 8.
    CCatmullCurve bend(0, C3DPoint(0, 0, 0), 10, C3DPoint(10, 30, 0), nullptr, 0);
    bend.AddKey(C3DPoint(10, 0, 0), 5.0, nullptr, true);
    bend.Discretize(0);
    EXPECT_NEAR(bend.GetCache().Samples()[60].x, 10.9375, 1e-5);
    EXPECT_NEAR(bend.GetCache().Samples()[60].y, 15.9375, 1e-5);
    // Tension 0.5 halves that tangent.
    static_cast<CCatmullPoint*>(bend.GetKey(1))->tension = 0.5f;
    bend.SetDirty();
    bend.Discretize(0);
    EXPECT_NEAR(bend.GetCache().Samples()[60].x, 10.46875, 1e-5);
    EXPECT_NEAR(bend.GetCache().Samples()[60].y, 15.46875, 1e-5);

    // All keys at one point: frames are even, and every frame is that point.
    CFunctionPlace velocity = std::make_unique<CSpline>(0, 0.0, 12, 100.0);
    CCatmullCurve still(0, C3DPoint(5, 6, 7), 12, C3DPoint(5, 6, 7), &velocity, 0);
    still.AddKey(C3DPoint(5, 6, 7), 4.0, nullptr, false);
    still.Discretize(0);
    const auto& even = still.GetCache().Samples();
    for (size_t i = 0; i < even.size(); ++i)
        EXPECT_NEAR(even[i].frame, 12.0 * i / 80.0, 1e-12);
    for (int frame = -2; frame < 15; ++frame) {
        const C3DPoint p = still.Evaluate(frame);
        EXPECT_EQ(p.x, 5.0f);
        EXPECT_EQ(p.z, 7.0f);
    }
    C3DPoint position, before, after;
    ASSERT_TRUE(still.GetFrameRecord(40, position, before, after));
    EXPECT_EQ(position.y, 6.0f);

    // A flat velocity over the whole stretch keeps the element at the start.
    CFunctionPlace flat = std::make_unique<CInterpolation>(0, 50.0, 12, 50.0);
    CCatmullCurve resting(0, C3DPoint(0, 0, 0), 12, C3DPoint(10, 0, 0), &flat, 0);
    EXPECT_EQ(resting.Evaluate(6.0).x, 0.0f);
    EXPECT_EQ(resting.Evaluate(12.0).x, 10.0f);

    // Fewer than two keys: an empty cache and no record.
    CCatmullCurve empty;
    empty.Discretize(0);
    EXPECT_EQ(empty.GetCache().SampleCount(), 0u);
    EXPECT_FALSE(empty.GetFrameRecord(0, position, before, after));
    EXPECT_EQ(empty.Evaluate(3.0).x, 0.0f);
    EXPECT_EQ(empty.GetDurationInFrames(), 0);
}

TEST(CatmullPath, KeyEditsDurationsAndHolds) {
    CFunctionPlace velocity = std::make_unique<CSpline>(0, 0.0, 20, 100.0);
    CCatmullCurve path(0, C3DPoint(0, 0, 0), 20, C3DPoint(100, 0, 0), &velocity, 0);
    int index = -7;
    path.AddKey(C3DPoint(1, 1, 1), 0.0, &index, true);
    path.AddKey(C3DPoint(1, 1, 1), 20.0, &index, true);
    path.AddKey(C3DPoint(1, 1, 1), 25.0, &index, true);
    EXPECT_EQ(index, -7);
    path.AddKey(C3DPoint(50, 10, 0), 10.0, &index, true);
    path.AddKey(C3DPoint(50, 10, 0), 10.0, &index, true);
    EXPECT_EQ(path.KeyCount(), 3);
    path.DeleteKey(0);
    path.DeleteKey(2);
    EXPECT_EQ(path.KeyCount(), 3);

    // Same length: nothing, not even a lock; shorter: interior keys unlocked and scaled.
    path.SetDuration(21);
    EXPECT_EQ(path.GetKey(1)->lockedInTime, 1);
    path.SetDuration(1);
    EXPECT_EQ(path.GetKey(2)->frame, 20.0);
    path.SetDuration(11);
    EXPECT_EQ(path.GetKey(1)->lockedInTime, 0);
    EXPECT_EQ(path.GetKey(1)->frame, 5.0);
    EXPECT_EQ(path.GetKey(2)->frame, 10.0);
    EXPECT_EQ(path.GetDurationInFrames(), 11);

    path.ExtendTo(16);
    ASSERT_EQ(path.KeyCount(), 4);
    EXPECT_EQ(path.GetKey(3)->frame, 15.0);
    EXPECT_EQ(path.GetKey(3)->x, 100.0f);
    EXPECT_EQ(path.GetKey(3)->index, 3);
    path.ExtendTo(10);
    EXPECT_EQ(path.KeyCount(), 4);

    // Hold: the position at frame 11 reaches frame 14 and the element rests between:
    // the chord weights give both keys of a segment of length 0 a zero tangent.
    const C3DPoint held = path.Evaluate(11.0);
    path.HoldPosition(11.0, 14.0, true);
    ASSERT_GE(path.FindKeyAt(11.0), 0);
    ASSERT_GE(path.FindKeyAt(14.0), 0);
    EXPECT_EQ(path.GetKey(path.FindKeyAt(14.0))->lockedInTime, 1);
    for (double frame = 11.0; frame <= 14.0; frame += 0.25)
        EXPECT_NEAR(path.Evaluate(frame).Distance(held), 0.0, 0.5) << frame;

    double frame = 0.0;
    path.MoveKey(99, C3DPoint(), &frame);
    EXPECT_EQ(frame, -1.0);
    path.OffsetAll(C3DPoint(0, 0, 10));
    EXPECT_EQ(path.Evaluate(0.0).z, 10.0f);
}

TEST(CatmullPath, FromPointsAndCopies) {
    CFunctionPlace velocity = std::make_unique<CSpline>(0, 0.0, 3, 100.0);
    const C3DPoint points[] = {C3DPoint(0, 0, 0), C3DPoint(1, 0, 0), C3DPoint(1, 1, 0), C3DPoint(0, 1, 0)};
    CCatmullCurve path;
    path.SetSmoothness(1);
    path.SetFromPoints(points, 5, 4, &velocity);
    ASSERT_EQ(path.KeyCount(), 4);
    EXPECT_EQ(path.GetKey(3)->frame, 8.0);
    EXPECT_EQ(path.GetKey(2)->lockedInSpace, 1);
    EXPECT_EQ(path.velocityPlace, &velocity);
    auto copy = path.Clone(true);
    EXPECT_EQ(copy->GetSmoothness(), 1);
    EXPECT_EQ(static_cast<CCatmullCurve&>(*copy).velocityPlace, &velocity);
    for (double f = 4.0; f < 10.0; f += 0.25) {
        const C3DPoint a = path.Evaluate(f);
        const C3DPoint b = copy->Evaluate(f);
        EXPECT_EQ(a.x, b.x);
        EXPECT_EQ(a.y, b.y);
    }
    auto shallow = path.Clone(false);
    EXPECT_EQ(shallow->KeyCount(), 0);
}

TEST(InterpolationPath, StraightSegmentsAndRoundedDurations) {
    C3DInterpolation path(0, C3DPoint(0, 0, 0), 10, C3DPoint(10, 20, 0), 0);
    path.AddKey(C3DPoint(0, 20, 0), 4.0, nullptr, true);
    EXPECT_EQ(path.GetCache().SampleCount(), 3u);
    EXPECT_EQ(path.Evaluate(2.0).y, 10.0f);
    EXPECT_EQ(path.Evaluate(4.0).y, 20.0f);
    EXPECT_EQ(path.Evaluate(7.0).x, 5.0f);
    EXPECT_EQ(path.Evaluate(-3.0).y, 0.0f);
    EXPECT_EQ(path.Evaluate(30.0).x, 10.0f);
    C3DPoint position, before, after;
    ASSERT_TRUE(path.GetFrameRecord(2, position, before, after));
    EXPECT_EQ(position.x, 10.0f);
    EXPECT_EQ(before.y, 20.0f);
    EXPECT_EQ(after.x, 10.0f);
    path.AddKey(C3DPoint(0, 0, 0), 5.0, nullptr, true);
    path.SetDurationRounded(3);
    // 4 -> 1, 5 -> 1 (goes), 10 -> 2.
    ASSERT_EQ(path.KeyCount(), 3);
    EXPECT_EQ(path.GetKey(1)->frame, 1.0);
    EXPECT_EQ(path.GetKey(2)->frame, 2.0);
    EXPECT_EQ(path.GetKey(2)->index, 2);
}

TEST(PathAdapter, OneCoordinateAsACurve) {
    CFunctionPlace velocity = std::make_unique<CSpline>(0, 0.0, 20, 100.0);
    C3DFunctionPlace place =
        std::make_unique<CCatmullCurve>(0, C3DPoint(0, 0, 0), 20, C3DPoint(100, 50, 0), &velocity, 0);
    C3DFunctionAdapter ew(&place, 0);
    C3DFunctionAdapter ns(&place, 1);
    EXPECT_EQ(ew.GetDuration(), 21);
    EXPECT_EQ(ns.Evaluate(20.0), 50.0);
    ew.AddKey(10.0, 80.0);
    ASSERT_EQ(place->KeyCount(), 3);
    EXPECT_EQ(place->GetKey(1)->x, 80.0f);
    EXPECT_EQ(ns.GetKeys().size(), 3u);
    EXPECT_EQ(ns.GetKey(1)->y, place->GetKey(1)->y);
    EXPECT_EQ(ns.GetKey(1)->GetAdaptedSource(), place->GetKey(1));
    ns.SetKeyValue(1, -5.0, nullptr);
    EXPECT_EQ(place->GetKey(1)->y, -5.0f);
    EXPECT_EQ(place->GetKey(1)->x, 80.0f);
    EXPECT_TRUE(ns.IsLockedInTime(1));
    ns.SetLockInTime(1, 10.0, false);
    EXPECT_FALSE(ns.IsLockedInTime(1));
    ns.OffsetValues(2.0);
    EXPECT_EQ(place->GetKey(2)->y, 52.0f);
    EXPECT_EQ(place->GetKey(2)->x, 100.0f);

    CDiscretized3DCurveAdapter samples;
    ew.Discretize(samples, 0);
    EXPECT_EQ(samples.Count(), place->GetCache().SampleCount());
    CCurvePoint point;
    samples.Get(samples.Count() - 1, point);
    EXPECT_EQ(point.x, 20.0);
    EXPECT_EQ(point.y, 100.0);
    EXPECT_EQ(samples.MaxY(), 100.0);
    CDiscretized3DCurveAdapter none;
    EXPECT_EQ(none.Count(), 0u);
    EXPECT_EQ(none.MinY(), 0.0);
    ew.DeleteKey(1);
    EXPECT_EQ(ew.GetKeys().size(), 2u);
}

TEST(KeyFrameEntry, MessagesOfThePathPanel) {
    C3DInterpolation path(0, C3DPoint(), 20, C3DPoint(), 0);
    path.AddKey(C3DPoint(), 7.0, nullptr, true);
    UT_WString message;
    EXPECT_FALSE(SP_KeyFrameEntry::CheckFrame(path, 21.0, false, 21, message));
    EXPECT_EQ(message, u"You must enter a valid frame number.");
    EXPECT_FALSE(SP_KeyFrameEntry::CheckFrame(path, 3.5, true, 21, message));
    EXPECT_EQ(message, u"The frame number must be an integer.");
    EXPECT_FALSE(SP_KeyFrameEntry::CheckFrame(path, 7.0, false, 21, message));
    EXPECT_EQ(message, u"A key frame already exists at this frame number.");
    EXPECT_TRUE(SP_KeyFrameEntry::CheckFrame(path, 3.5, false, 21, message));
    EXPECT_FALSE(SP_KeyFrameEntry::CheckShapeValue(-1.5, message));
    EXPECT_EQ(message, u"The minimum value is -1");
    EXPECT_FALSE(SP_KeyFrameEntry::CheckShapeValue(1.01, message));
    EXPECT_EQ(message, u"The maximum value is 1");
    EXPECT_TRUE(SP_KeyFrameEntry::CheckShapeValue(1.0, message));

    CCatmullCurve catmull(0, C3DPoint(), 20, C3DPoint(1, 0, 0), nullptr, 0);
    catmull.AddKey(C3DPoint(), 6.6, nullptr, false);
    EXPECT_EQ(SP_KeyFrameEntry::LockFrame(catmull, 1), 7);
    catmull.AddKey(C3DPoint(), 7.0, nullptr, true);
    EXPECT_EQ(SP_KeyFrameEntry::LockFrame(catmull, 1), 6);
    catmull.AddKey(C3DPoint(), 6.0, nullptr, true);
    EXPECT_EQ(SP_KeyFrameEntry::LockFrame(catmull, 2), -1);
}

} // namespace
