// Stored bodies of curves and paths, byte for byte, written out by hand.

#include "MotionTestUtil.h"
#include "core/CPersistentType.h"
#include "core/DB_BufferFile.h"
#include "core/DB_Exception.h"
#include "motion/C3DInterpolation.h"
#include "motion/CCatmullCurve.h"
#include "motion/CInterpolation.h"
#include "motion/CSpline.h"
#include "motion/CVelocityBased.h"
#include "motion/MotionTypes.h"

#include <gtest/gtest.h>

using motiontest::BodyOf;
using motiontest::Cat;

namespace {

using Bytes = std::vector<uint8_t>;

template <class T>
void ReadBody(T& object, const Bytes& body, int32_t version = DB_Archive::kCurrentVersion) {
    DB_BufferFile buffer(body.data(), body.size());
    DB_Archive in(&buffer, true);
    in.SetVersion(version);
    object.Read(in);
    EXPECT_EQ(buffer.BytesLeft(), 0u);
}

const Bytes kZero32 = {0, 0, 0, 0};
const Bytes kMinusOne = {0x00, 0x00, 0x80, 0xBF};

TEST(CurvePersistence, InterpolationBody) {
    CInterpolation curve(0, 1.0, 10, 2.5);
    curve.GetKey(1)->kind = 5; // always written as 0
    curve.GetKey(1)->flag = 9; // never written
    const Bytes expected = Cat({{2, 0, 0, 0},
                                kZero32,
                                {0x00, 0x00, 0x80, 0x3F},
                                {0, 0},
                                {0, 0},
                                {0x00, 0x00, 0x20, 0x41},
                                {0x00, 0x00, 0x20, 0x40},
                                {0, 0},
                                {1, 0}});
    EXPECT_EQ(BodyOf(curve), expected);
    CInterpolation back;
    ReadBody(back, expected);
    ASSERT_EQ(back.KeyCount(), 2);
    EXPECT_EQ(back.GetKey(1)->x, 10.0);
    EXPECT_EQ(back.GetKey(1)->y, 2.5);
    EXPECT_EQ(back.GetKey(1)->flag, 0);
}

TEST(CurvePersistence, SplineBodyWithHandles) {
    CSpline curve(0, 0.0, 9, 3.0);
    const Bytes expected = Cat({{2, 0, 0, 0},
                                // key 0, its out-handle (3, 0) id 1, its in-handle (-1, -1) id 0
                                kZero32,
                                kZero32,
                                {0, 0},
                                {0, 0},
                                {0x00, 0x00, 0x40, 0x40},
                                kZero32,
                                {1, 0},
                                kMinusOne,
                                kMinusOne,
                                {0, 0},
                                // key 1, out-handle (-1, -1) id 3, in-handle (6, 3) id 2
                                {0x00, 0x00, 0x10, 0x41},
                                {0x00, 0x00, 0x40, 0x40},
                                {0, 0},
                                {1, 0},
                                kMinusOne,
                                kMinusOne,
                                {3, 0},
                                {0x00, 0x00, 0xC0, 0x40},
                                {0x00, 0x00, 0x40, 0x40},
                                {2, 0}});
    EXPECT_EQ(BodyOf(curve), expected);
    CSpline back;
    ReadBody(back, expected);
    EXPECT_EQ(back.SplineKey(1)->inHandle.x, 6.0);
    EXPECT_EQ(back.SplineKey(1)->inHandle.id, 2);
    EXPECT_EQ(back.SplineKey(0)->outHandle.id, 1);
    for (double x = 0; x <= 9; x += 0.25)
        EXPECT_EQ(back.Evaluate(x), curve.Evaluate(x));
}

TEST(CurvePersistence, DoublesNarrowToFloatOnStore) {
    const double values[] = {0.0, 99.99, 100.0};
    CVelocityBased curve;
    curve.SetFromValues(values, 0, 3);
    curve.GetKey(1)->x = 1.1;
    Bytes body = BodyOf(curve);
    CVelocityBased back;
    ReadBody(back, body);
    EXPECT_EQ(back.GetKey(1)->y, static_cast<double>(99.99f));
    EXPECT_NE(back.GetKey(1)->y, 99.99);
    EXPECT_EQ(back.GetKey(1)->x, static_cast<double>(1.1f));
    // A second round trip changes nothing.
    EXPECT_EQ(BodyOf(back), body);
}

TEST(CurvePersistence, TypedThroughTheRegistry) {
    MotionRegisterTypes();
    MotionRegisterTypes();
    const std::pair<uint16_t, const char*> names[] = {{300, "SplineFunction"},
                                                      {301, "CatmullCurve"},
                                                      {302, "3DInterpolation"},
                                                      {303, "VelocityBasedFunction"},
                                                      {304, "InterpolationFunction"}};
    for (auto [id, name] : names)
        EXPECT_EQ(CPersistentTypeRegistry::Instance().ShortName(id), name);
    DB_MemFile file;
    DB_Archive out(&file, true);
    CSpline spline(0, 0.0, 12, 1.0);
    ASSERT_TRUE(out.WriteTyped(spline));
    EXPECT_EQ(file.Data()[0], 300 & 0xFF);
    EXPECT_EQ(file.Data()[1], 300 >> 8);
    file.Rewind();
    DB_Archive in(&file, true);
    auto back = in.ReadNewAs<CFunctionBase>();
    EXPECT_NE(dynamic_cast<CSpline*>(back.get()), nullptr);
    EXPECT_EQ(back->Evaluate(4.0), spline.Evaluate(4.0));
}

TEST(CurvePersistence, TruncatedOrHugeCountsThrow) {
    const Bytes huge = {0xFF, 0xFF, 0xFF, 0x7F, 1, 2, 3};
    CSpline spline;
    EXPECT_THROW(ReadBody(spline, huge), DB_Exception);
    const Bytes cut = {1, 0, 0, 0, 0, 0, 0x80, 0x3F, 0, 0, 0, 0, 0, 0};
    EXPECT_THROW(ReadBody(spline, cut), DB_Exception);
}

const Bytes kInterpolationPath = Cat({{2, 0, 0, 0},
                                      // (1, 2, 3), index 0, frame 0.0, space 0, time 1
                                      {0x00, 0x00, 0x80, 0x3F},
                                      {0x00, 0x00, 0x00, 0x40},
                                      {0x00, 0x00, 0x40, 0x40},
                                      {0, 0},
                                      {0, 0, 0, 0, 0, 0, 0, 0},
                                      {0},
                                      {1},
                                      // (0, 0, 0), index 1, frame 4.0, space 0, time 1
                                      kZero32,
                                      kZero32,
                                      kZero32,
                                      {1, 0},
                                      {0, 0, 0, 0, 0, 0, 0x10, 0x40},
                                      {0},
                                      {1}});

TEST(PathPersistence, InterpolationBodyAndTail) {
    C3DInterpolation path(0, C3DPoint(1, 2, 3), 4, C3DPoint(0, 0, 0), 7);
    const Bytes expected = Cat({kInterpolationPath, {7}, {1, 0}});
    EXPECT_EQ(BodyOf(path), expected);
    C3DInterpolation back;
    ReadBody(back, expected);
    EXPECT_EQ(back.GetModeByte(), 7);
    EXPECT_EQ(back.GetSmoothness(), 1);
    EXPECT_TRUE(back.IsDirty());
    const C3DPoint mid = back.Evaluate(1.0);
    EXPECT_FLOAT_EQ(mid.x, 0.75f);
    EXPECT_FLOAT_EQ(mid.z, 2.25f);
}

TEST(PathPersistence, CatmullBodyInEveryVersion) {
    CCatmullCurve path(0, C3DPoint(1, 2, 3), 4, C3DPoint(0, 0, 0), nullptr, 0);
    static_cast<CCatmullPoint*>(path.GetKey(1))->tension = 0.5f;
    path.SetSmoothness(12);
    const Bytes key0 = Cat({{0x00, 0x00, 0x80, 0x3F},
                            {0x00, 0x00, 0x00, 0x40},
                            {0x00, 0x00, 0x40, 0x40},
                            {0, 0},
                            {0, 0, 0, 0, 0, 0, 0, 0},
                            {1},
                            {1},
                            kZero32,
                            kZero32,
                            kZero32});
    const Bytes key1 = Cat({kZero32,
                            kZero32,
                            kZero32,
                            {1, 0},
                            {0, 0, 0, 0, 0, 0, 0x10, 0x40},
                            {1},
                            {1},
                            {0x00, 0x00, 0x00, 0x3F},
                            kZero32,
                            kZero32});
    const Bytes expected = Cat({{2, 0, 0, 0}, key0, key1, {0}, {12, 0}});
    EXPECT_EQ(BodyOf(path), expected);
    CCatmullCurve back;
    ReadBody(back, expected);
    EXPECT_EQ(back.GetSmoothness(), 12);
    EXPECT_EQ(static_cast<CCatmullPoint*>(back.GetKey(1))->tension, 0.5f);

    // Version 0x1F and before: mode byte, two dropped u32, and on a Catmull curve a
    // dropped 64-bit value; the smoothness stays at its default.
    const Bytes old =
        Cat({{2, 0, 0, 0}, key0, key1, {3}, {9, 9, 9, 9, 8, 8, 8, 8}, {7, 7, 7, 7, 7, 7, 7, 7}});
    CCatmullCurve older;
    ReadBody(older, old, 0x1F);
    EXPECT_EQ(older.GetSmoothness(), 40);
    EXPECT_EQ(older.GetModeByte(), 3);
    C3DInterpolation olderLine;
    ReadBody(olderLine, Cat({kInterpolationPath, {3}, {1, 2, 3, 4, 5, 6, 7, 8}}), 0x1F);
    EXPECT_EQ(olderLine.KeyCount(), 2);
    // Version 0x20 already has the smoothness.
    CCatmullCurve newer;
    EXPECT_THROW(ReadBody(newer, old, 0x20), DB_Exception);
}

TEST(PathPersistence, DamagedPathsAreRefused) {
    // A frame outside the 16-bit frames, keys out of frame order, a smoothness of 0.
    const size_t frameTop = 4 + 12 + 2 + 7;
    Bytes body = Cat({kInterpolationPath, {0}, {1, 0}});
    body[frameTop] = 0x41; // 2^17
    C3DInterpolation bad;
    EXPECT_THROW(ReadBody(bad, body), DB_Exception);
    body[frameTop] = 0x40;
    body[frameTop - 1] = 0x20; // 8.0, after the second key's 4.0
    EXPECT_THROW(ReadBody(bad, body), DB_Exception);
    body[frameTop - 1] = 0x00; // 2.0 is in order
    C3DInterpolation fine;
    ReadBody(fine, body);
    EXPECT_EQ(fine.GetKey(0)->frame, 2.0);
    Bytes flat = Cat({kInterpolationPath, {0}, {0, 0}});
    EXPECT_THROW(ReadBody(bad, flat), DB_Exception);
}

} // namespace
