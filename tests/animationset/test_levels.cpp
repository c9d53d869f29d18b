// Persisted bodies of every level kind, laid out by hand from the field tables, the
// readings of the earlier format, clones and display names, the placement matrix and
// the drawing files behind a drawing element.

#include "ByteBuilder.h"
#include "DrawingTestUtil.h"
#include "animationset/AS_CameraLevelObj.h"
#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/AS_EffectLevel.h"
#include "animationset/AS_MediaLinkLevelObj.h"
#include "animationset/AS_MediaManager.h"
#include "animationset/AS_ParamGroupLevel.h"
#include "animationset/AS_PegLevelObj.h"
#include "animationset/AS_SoundLevel.h"
#include "animationset/AnimationSetTypes.h"
#include "core/CPersistentType.h"
#include "core/DB_Archive.h"
#include "core/DB_Exception.h"
#include "core/DB_FileContainer.h"
#include "core/DB_MemFile.h"
#include "core/DD_DragDataStore.h"
#include "core/UT_FileTransaction.h"
#include "motion/C3DInterpolation.h"
#include "motion/CCatmullCurve.h"
#include "motion/CSpline.h"
#include "motion/MotionTypes.h"
#include "vector/GR_DrawingAccess.h"
#include "vector/GR_Layer.h"
#include "vector/GR_VectorDrawingObj.h"
#include "vector/GR_VectorStroke.h"
#include "vector/VectorTypes.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

std::vector<uint8_t> BytesOf(const DB_MemFile& file) {
    return {file.Data(), file.Data() + file.Size()};
}

std::vector<uint8_t> Typed(CPersistentObjBase& object) {
    DB_MemFile file;
    DB_Archive archive(&file, false);
    EXPECT_TRUE(archive.WriteTyped(object));
    return BytesOf(file);
}

template <class T> std::unique_ptr<T> ReadBack(const std::vector<uint8_t>& bytes, int32_t version = 51) {
    DB_MemFile file;
    file.Write(bytes.data(), bytes.size());
    file.Rewind();
    DB_Archive archive(&file, false);
    archive.SetVersion(version);
    auto object = archive.ReadNewAs<T>();
    EXPECT_EQ(file.BytesLeft(), 0u);
    return object;
}

// Wide strings of versions below 41: a count, then one byte per character.
ByteBuilder& Old(ByteBuilder& b, std::string_view text) {
    b.U32(static_cast<uint32_t>(text.size()));
    for (char c : text)
        b.U8(static_cast<uint8_t>(c));
    return b;
}

void FillPlacement(AS_Placement& p) {
    p.offset = C3DPoint(1, 2, 3);
    p.rotationPivot = C3DPoint(4, 5, 6);
    p.scalePivot = C3DPoint(7, 8, 9);
    p.fourthPoint = C3DPoint(10, 11, 12);
    p.startFrame = 5;
    p.rotation = 30.0;
    p.verticalScale = -2.0;
    p.horizontalScale = 3.0;
    p.elementType = 2;
    p.keepProportions = true;
}

std::vector<uint8_t> PlacementOf(AS_Placement placement) {
    DB_MemFile file;
    DB_Archive archive(&file, false);
    placement.Write(archive);
    return BytesOf(file);
}

ByteBuilder& PlacementBytes(ByteBuilder& b) {
    for (int i = 1; i <= 12; ++i)
        b.F32(static_cast<float>(i));
    return b.U32(5).F64(30.0).F64(-2.0).F64(3.0).U32(2).Bool(true);
}

class LevelsTest : public ::testing::Test {
protected:
    void SetUp() override {
        CoreRegisterTypes();
        MotionRegisterTypes();
        VectorRegisterTypes();
        AnimationSetRegisterTypes();
    }
};

TEST_F(LevelsTest, DrawingElementBodyAndRoundTrip) {
    auto level = AS_VectorGraphicLevelObj::Create(2004, u"Arm");
    level->SetNote(u"n");
    FillPlacement(level->Placement());
    EXPECT_EQ(level->CommonDrawing()->AddDrawing(u"1"), 1001u);
    level->CommonDrawing()->FindDrawing(1001)->SetLocked(true);
    level->Cells() = {{1001, u"a"}, {AS_kInvalidId, u""}};

    ByteBuilder expected;
    expected.U16(3).U32(2004).Wide(u"n").U32(0);
    expected.U16(1).U16(6).Wide(u"Arm").U32(0).U32(2004).U32(1002).U32(1);
    expected.U32(1001).Wide(u"1").U32(1001).Bool(true).Bool(false);
    PlacementBytes(expected);
    expected.U32(2).U32(1001).Wide(u"a").U32(AS_kInvalidId).Wide(u"");
    const std::vector<uint8_t> bytes = Typed(*level);
    ASSERT_EQ(bytes, expected.Bytes());

    auto read = ReadBack<AS_VectorGraphicLevelObj>(bytes);
    EXPECT_EQ(read->GetKind(), kLevelVectorDrawing);
    EXPECT_EQ(read->GetName(), u"Arm");
    EXPECT_EQ(read->Cells(), level->Cells());
    EXPECT_TRUE(read->CommonDrawing()->FindDrawing(1001)->IsLocked());
    EXPECT_EQ(Typed(*read), bytes);
}

// A new drawing must never take the id of one that exists: entries made under a known id
// (undo, older files) and a damaged counter in a file both move the counter past them.
TEST_F(LevelsTest, DrawingCounterStaysAboveEveryId) {
    auto level = AS_VectorGraphicLevelObj::Create(2004, u"Arm");
    AS_CommonDrawingLevel& common = *level->CommonDrawing();
    common.AddDrawingWithId(1005, u"5");
    EXPECT_EQ(common.AddDrawing(u"6"), 1006u);

    common.SetNextDrawingId(1001);
    auto read = ReadBack<AS_VectorGraphicLevelObj>(Typed(*level));
    AS_CommonDrawingLevel& readCommon = *read->CommonDrawing();
    EXPECT_EQ(readCommon.AddDrawing(u"7"), 1007u);
    EXPECT_EQ(readCommon.FindDrawing(1005)->GetName(), u"5");
    EXPECT_EQ(readCommon.FindDrawing(1006)->GetName(), u"6");
}

TEST_F(LevelsTest, PlacementBlockIs81Bytes) {
    AS_Placement placement;
    DB_MemFile file;
    DB_Archive archive(&file, false);
    placement.Write(archive);
    EXPECT_EQ(file.Size(), 81u);
}

TEST_F(LevelsTest, ClonesShareTheCommonHalfOnTheStream) {
    auto level = AS_VectorGraphicLevelObj::Create(2004, u"Arm");
    EXPECT_EQ(level->GetDisplayName(), u"Arm");
    level->Cells() = {{1001, u""}};
    std::unique_ptr<AS_DopeSheetLevelObj> clone = level->Clone(2005, true);
    auto* copy = static_cast<AS_VectorGraphicLevelObj*>(clone.get());
    EXPECT_EQ(level->GetDisplayName(), u"Arm(0)");
    EXPECT_EQ(copy->GetDisplayName(), u"Arm(1)");
    EXPECT_EQ(copy->Cells(), level->Cells());
    EXPECT_EQ(copy->GetCommonId(), 2004u);
    EXPECT_EQ(level->Clone(2006, false)->GetDisplayName(), u"Arm(2)");

    DB_MemFile file;
    {
        DB_Archive archive(&file, false);
        archive.WriteTyped(*level);
        archive.WriteTyped(*copy);
    }
    const std::vector<uint8_t> first = Typed(*level);
    ByteBuilder second;
    second.U16(3).U32(2005).Wide(u"").U32(1).U16(0).U32(1);
    PlacementBytes(second);
    std::vector<uint8_t> tail = second.Bytes();
    // The clone's placement and cells are the original's defaults and cells.
    const std::vector<uint8_t> all = BytesOf(file);
    ASSERT_EQ(all.size(), first.size() + 2 + 4 + 4 + 4 + 2 + 4 + 81 + 4 + 8);
    EXPECT_TRUE(std::equal(first.begin(), first.end(), all.begin()));
    EXPECT_TRUE(std::equal(tail.begin(), tail.begin() + 20, all.begin() + static_cast<long>(first.size())));

    file.Rewind();
    std::unique_ptr<AS_DopeSheetLevelObj> a, b;
    {
        DB_Archive reader(&file, false);
        a = reader.ReadNewAs<AS_DopeSheetLevelObj>();
        b = reader.ReadNewAs<AS_DopeSheetLevelObj>();
    }
    auto* ca = static_cast<AS_ClonableLevel*>(a.get());
    auto* cb = static_cast<AS_ClonableLevel*>(b.get());
    EXPECT_EQ(ca->Common(), cb->Common());
    EXPECT_EQ(ca->HolderCount(), 2);
    EXPECT_EQ(cb->GetDisplayName(), u"Arm(1)");
    a.reset();
    EXPECT_EQ(cb->GetDisplayName(), u"Arm");
    EXPECT_TRUE(cb->IsLastHolder());
}

TEST_F(LevelsTest, PegBody) {
    auto peg = AS_PegLevelObj::Create(2003, u"Peg", 20);
    peg->SetStartFrame(4);
    peg->offsetY = 1.5;
    peg->offsetX = -2.5;
    peg->secondOffsetZ = 9.0;
    peg->SetLooped(true);
    peg->SetLoopType(2);
    peg->SetLoopEnd(33);
    peg->lastField = 7;
    peg->CommonPeg()->baseScale.Set(0.5, 2.0);

    // The curves are the motion library's; here they are made apart and spliced in.
    CSpline rotation(0, 0.0, 19, 0.0), scale(0, 1.0, 19, 1.0), velocity(0, 0.0, 19, 100.0);
    CFunctionPlace velocityPlace;
    CCatmullCurve path(0, C3DPoint(), 19, C3DPoint(), &velocityPlace, 0);
    C3DInterpolation pivot(0, C3DPoint(), 19, C3DPoint(), 0);

    ByteBuilder expected;
    expected.U16(8).U32(2003).Wide(u"").U32(0).U16(1).U16(10).Wide(u"Peg").U32(0).U32(2003).U32(20);
    expected.Raw(Typed(rotation)).Raw(Typed(scale)).Raw(Typed(scale)).Raw(Typed(velocity));
    expected.Raw(Typed(path)).Raw(Typed(pivot));
    expected.Bool(false).F32(0.5f).F32(2.0f).F64(0.0).Bool(false).Bool(false);
    expected.U32(4).F64(1.5).F64(-2.5).F64(0).F64(0).F64(0).F64(9.0).Bool(true).U32(2).U32(33).U32(7);
    const std::vector<uint8_t> bytes = Typed(*peg);
    ASSERT_EQ(bytes, expected.Bytes());

    auto read = ReadBack<AS_PegLevelObj>(bytes);
    EXPECT_EQ(read->GetStartFrame(), 4);
    EXPECT_EQ(read->offsetX, -2.5);
    EXPECT_EQ(read->GetDuration(), 33u);
    EXPECT_EQ(static_cast<CCatmullCurve*>(read->CommonPeg()->Path())->velocityPlace != nullptr, true);
    EXPECT_EQ(Typed(*read), bytes);
}

TEST_F(LevelsTest, DuplicatesHaveTheirOwnCommonHalf) {
    auto peg = AS_PegLevelObj::Create(2003, u"Peg", 12);
    peg->SetStartFrame(3);
    peg->offsetZ = 4.0;
    peg->CommonPeg()->baseRotation = 10.0;
    auto copy = peg->Duplicate(u"Peg 2", 2009);
    EXPECT_NE(copy->Common(), peg->Common());
    EXPECT_NE(copy->CommonPeg()->Path(), peg->CommonPeg()->Path());
    EXPECT_EQ(copy->GetCommonId(), 2009u);
    EXPECT_TRUE(copy->IsLastHolder());
    EXPECT_TRUE(peg->IsLastHolder());
    auto* path = static_cast<CCatmullCurve*>(copy->CommonPeg()->Path());
    ASSERT_NE(path->velocityPlace, nullptr);
    EXPECT_EQ(path->velocityPlace->get(), copy->CommonPeg()->Velocity());
    // Past the ids and names, the bodies are the same bytes.
    const std::vector<uint8_t> a = Typed(*peg), b = Typed(*copy);
    ASSERT_EQ(a.size() + 4, b.size());
    EXPECT_TRUE(std::equal(a.begin() + 36, a.end(), b.begin() + 40));

    auto camera = AS_CameraLevelObj::Create(2002, u"Camera", 10, 500, 375);
    camera->SetStartFrame(2);
    auto twin = camera->Duplicate(u"Camera 2", 2010);
    EXPECT_NE(twin->Common(), camera->Common());
    EXPECT_EQ(twin->Width(), 500.0);
    EXPECT_EQ(twin->StartFrame(), 2u);
    EXPECT_NE(twin->FieldOfView(), camera->FieldOfView());
}

TEST_F(LevelsTest, PegDurationAndLoopEndRules) {
    auto peg = AS_PegLevelObj::Create(2003, u"Peg", 1);
    EXPECT_EQ(peg->CommonPeg()->Duration(), 2u); // raised to 2
    peg = AS_PegLevelObj::Create(2003, u"Peg", 10);
    peg->SetStartFrame(5);
    EXPECT_EQ(peg->GetDuration(), 10u);
    EXPECT_EQ(peg->GetFirstFrame(), 5);
    EXPECT_EQ(peg->GetLastFrame(), 14);
    peg->SetLooped(true);
    peg->SetLoopEnd(3);
    EXPECT_EQ(peg->GetDuration(), 28u); // (D - 1) x E + 1
    peg->SetLoopType(1);
    EXPECT_EQ(peg->GetLoopEnd(), 14u); // never below the last frame
    peg->SetLoopEnd(20);
    EXPECT_EQ(peg->GetDuration(), 16u); // E - S + 1
    peg->SetLoopType(2);
    EXPECT_EQ(peg->GetDuration(), 20u);
    peg->SetLoopType(9);
    EXPECT_EQ(peg->GetDuration(), 10u);
}

TEST_F(LevelsTest, CameraBodyAndDefaults) {
    auto camera = AS_CameraLevelObj::Create(2002, u"Camera", 10, 500, 375);
    const double z = 2500.0 / std::tan(0.261903);
    EXPECT_NEAR(z, 9326.26, 0.01);
    CSpline fov(0, 30.0, 9, 30.0);
    ByteBuilder expected;
    expected.U16(7).U32(2002).Wide(u"").U32(0).U16(1).U16(9).Wide(u"Camera").U32(0).U32(2002);
    expected.F64(0).F64(0).F64(z).F64(375).F64(500).Bool(true).F64(30.0).Raw(Typed(fov)).U32(0).U32(10);
    const std::vector<uint8_t> bytes = Typed(*camera);
    ASSERT_EQ(bytes, expected.Bytes());
    auto read = ReadBack<AS_CameraLevelObj>(bytes);
    EXPECT_EQ(read->Width(), 500.0);
    EXPECT_EQ(read->GetLastFrame(), 10);
    EXPECT_EQ(Typed(*read), bytes);

    auto plain = AS_CameraLevelObj::Create(1, u"C", 10, 0, 0);
    EXPECT_EQ(plain->Width(), 640.0);
    EXPECT_EQ(plain->Height(), 480.0);
}

TEST_F(LevelsTest, EffectParamGroupAndSoundBodies) {
    auto payload = std::make_unique<DB_MemFile>();
    payload->Write("xy", 2);
    auto effect = AS_EffectLevel::Create(2010, u"Fx", std::move(payload));
    effect->SetFirstFrame(3);
    effect->SetLength(25);
    ByteBuilder expected;
    expected.U16(18).U32(2010).Wide(u"").U32(0).U16(1).U16(19).Wide(u"Fx").U32(0).U32(2010).U32(20);
    expected.U16(600).U32(2).U8('x').U8('y').U32(3).U32(25);
    std::vector<uint8_t> bytes = Typed(*effect);
    ASSERT_EQ(bytes, expected.Bytes());
    EXPECT_EQ(Typed(*ReadBack<AS_EffectLevel>(bytes)), bytes);
    // A length above the common duration is stored, but the duration is the lower one;
    // the common duration itself is stored as 0.
    EXPECT_EQ(effect->GetDuration(), 20u);
    effect->SetLength(20);
    EXPECT_EQ(effect->StoredLength(), 0u);
    effect->SetLength(7);
    EXPECT_EQ(effect->GetDuration(), 7u);
    EXPECT_EQ(effect->GetLastFrame(), 9);

    auto group = AS_ParamGroupLevel::Create(2011, u"G");
    bytes = Typed(*group);
    EXPECT_EQ(
        bytes,
        ByteBuilder().U16(20).U32(2011).Wide(u"").U32(0).U16(1).U16(21).Wide(u"G").U32(0).U32(2011).Bytes());
    EXPECT_EQ(group->Clone(5, true), nullptr);

    auto sound = AS_SoundLevel::Create(2012, u"S");
    bytes = Typed(*sound);
    EXPECT_EQ(
        bytes,
        ByteBuilder().U16(11).U32(2012).Wide(u"").U32(0).U16(1).U16(15).Wide(u"S").U32(0).U32(2012).Bytes());
    EXPECT_EQ(ReadBack<AS_SoundLevel>(bytes)->GetName(), u"S");
}

TEST_F(LevelsTest, LevelRefusesACommonHalfOfAnotherSort) {
    // A peg level whose shared reference holds a camera's common half.
    const std::vector<uint8_t> bytes =
        ByteBuilder().U16(8).U32(1).Wide(u"").U32(0).U16(1).U16(9).Wide(u"C").U32(0).U32(1).Bytes();
    EXPECT_THROW(ReadBack<AS_PegLevelObj>(bytes), DB_Exception);
    // A null common half.
    const std::vector<uint8_t> none = ByteBuilder().U16(11).U32(1).Wide(u"").U32(0).U16(0).U32(0).Bytes();
    EXPECT_THROW(ReadBack<AS_SoundLevel>(none), DB_Exception);
}

TEST_F(LevelsTest, Version31DrawingElement) {
    ByteBuilder b;
    b.U16(3).U32(2007);
    Old(b, "note").U32(0).U16(1).U16(6);
    Old(b, "Leg").U32(0).U32(777).U32(1003).U32(1).U32(1002);
    Old(Old(b, "dropped"), "7").U32(1002).Bool(false).Bool(true);
    b.U32(1).U32(1002);
    Old(b, "c");
    b.U32(12345);
    PlacementBytes(b);
    auto level = ReadBack<AS_VectorGraphicLevelObj>(b.Bytes(), 31);
    EXPECT_EQ(level->GetNote(), u"note");
    EXPECT_EQ(level->GetCommonId(), 2007u); // rebuilt from the level's id
    EXPECT_EQ(level->CommonDrawing()->NextDrawingId(), 1003u);
    const AS_DopeSheetDrawingObj* drawing = level->CommonDrawing()->FindDrawing(1002);
    ASSERT_NE(drawing, nullptr);
    EXPECT_EQ(drawing->GetName(), u"7");
    EXPECT_TRUE(drawing->HasFile());
    EXPECT_EQ(level->Cells(), (std::vector<AS_CellRecord>{{1002, u"c"}}));
    EXPECT_EQ(level->Placement().startFrame, 5u);
    EXPECT_EQ(level->Placement().elementType, 2u);
}

TEST_F(LevelsTest, Version31PegReadsLoopEndAsADouble) {
    auto peg = AS_PegLevelObj::Create(2003, u"Peg", 20);
    CFunctionPlace velocityPlace;
    CSpline rotation(0, 0.0, 19, 0.0), scale(0, 1.0, 19, 1.0), velocity(0, 0.0, 19, 100.0);
    CCatmullCurve path(0, C3DPoint(), 19, C3DPoint(), &velocityPlace, 0);
    C3DInterpolation pivot(0, C3DPoint(), 19, C3DPoint(), 0);
    // Paths of the earlier format end with the mode byte and two dropped u32, and the
    // motion path with one more dropped u64.
    std::vector<uint8_t> pathBytes = Typed(path), pivotBytes = Typed(pivot);
    pathBytes.resize(pathBytes.size() - 2);
    pivotBytes.resize(pivotBytes.size() - 2);
    pathBytes = ByteBuilder().Raw(pathBytes).U32(0).U32(0).U64(0).Bytes();
    pivotBytes = ByteBuilder().Raw(pivotBytes).U32(0).U32(0).Bytes();

    ByteBuilder b;
    b.U16(8).U32(2003).U32(0).U32(0).U16(1).U16(10);
    Old(b, "Peg").U32(0).U32(99).U32(20);
    b.Raw(Typed(rotation))
        .Raw(Typed(scale))
        .Raw(Typed(scale))
        .Raw(Typed(velocity))
        .Raw(pathBytes)
        .Raw(pivotBytes);
    b.Bool(true).F32(1.0f).F32(1.0f).F64(15.0).Bool(true).U32(4242).Bool(true);
    b.U32(2).F64(0).F64(0).F64(0).F64(0).F64(0).F64(0).Bool(true).U32(0).F64(6.9).U32(3);
    auto read = ReadBack<AS_PegLevelObj>(b.Bytes(), 31);
    EXPECT_EQ(read->GetCommonId(), 2003u);
    EXPECT_EQ(read->GetLoopEnd(), 6u);
    EXPECT_EQ(read->lastField, 3u);
    EXPECT_TRUE(read->CommonPeg()->pivotOnScaling);
    EXPECT_EQ(read->CommonPeg()->baseRotation, 15.0);
}

TEST_F(LevelsTest, PlacementMatrix) {
    AS_Placement p;
    p.scalePivot = C3DPoint(10, 0, 0);
    p.rotationPivot = C3DPoint(0, 10, 0);
    p.offset = C3DPoint(100, 200, 5);
    p.horizontalScale = 2.0;
    p.verticalScale = 3.0;
    p.rotation = 450.0; // 90 degrees after reduction
    const AS_Matrix m = p.Matrix();
    auto apply = [&](float x, float y) {
        return std::make_pair(x * m[0] + y * m[4] + m[12], x * m[1] + y * m[5] + m[13]);
    };
    // (11, 1): scaled about (10, 0) to (12, 3); about the pivot (0, 10) that is (12, -7),
    // a quarter turn counter-clockwise gives (7, 12), back and offset: (107, 222).
    auto [x, y] = apply(11, 1);
    EXPECT_NEAR(x, 107.0f, 1e-4);
    EXPECT_NEAR(y, 222.0f, 1e-4);
    EXPECT_FLOAT_EQ(m[14], 5.0f);
    AS_Placement identity;
    EXPECT_EQ(identity.Matrix(), AS_IdentityMatrix());
}

TEST_F(LevelsTest, ImageElementBody) {
    auto level = AS_BitmapLevelObj::Create(2008, u"Bg");
    level->CommonDrawing()->AddDrawing(u"sky");
    level->Cells() = {{AS_kInvalidId, u"x"}, {1001, u""}};
    ByteBuilder expected;
    expected.U16(13).U32(2008).Wide(u"").U32(0);
    expected.U16(1).U16(16).Wide(u"Bg").U32(0).U32(2008).U32(1002).U32(1);
    expected.U32(1001).Wide(u"sky").U32(1001).Bool(false).Bool(false);
    expected.Raw(PlacementOf(AS_Placement()));
    expected.U32(2).U32(AS_kInvalidId).Wide(u"x").U32(1001).Wide(u"");
    const std::vector<uint8_t> bytes = Typed(*level);
    ASSERT_EQ(bytes, expected.Bytes());
    auto read = ReadBack<AS_BitmapLevelObj>(bytes);
    EXPECT_EQ(read->GetFileExtension(), u"tga");
    EXPECT_EQ(read->GetFirstFrame(), 1);
    EXPECT_EQ(read->GetDuration(), 1u);
    EXPECT_EQ(Typed(*read), bytes);
}

TEST_F(LevelsTest, MediaElementBodyWithRunsSharingATemplate) {
    auto walk = std::make_shared<AS_MediaObj>(UT_UniqueId(0x1122334455667788ull), u"Walk");
    auto run = std::make_shared<AS_MediaObj>(UT_UniqueId(9), u"Run");
    auto media = AS_MediaLinkLevelObj::Create(2020, u"M");
    FillPlacement(media->Placement());
    ASSERT_TRUE(media->SetCells({{2, 6, 0, walk}, {6, 8, 3, run}, {10, 12, 1, walk}}));

    // The common half travels as the parameter group's; the first template enters the
    // table after it, so the third run refers to index 2.
    ByteBuilder expected;
    expected.U16(12).U32(2020).Wide(u"").U32(0).U16(1).U16(21).Wide(u"M").U32(0).U32(2020);
    expected.U32(3);
    expected.U32(2).U32(6).U32(0).U16(1).U16(17).U64(0x1122334455667788ull).Wide(u"Walk");
    expected.U32(6).U32(8).U32(3).U16(1).U16(17).U64(9).Wide(u"Run");
    expected.U32(10).U32(12).U32(1).U16(0).U32(2);
    PlacementBytes(expected);
    const std::vector<uint8_t> bytes = Typed(*media);
    ASSERT_EQ(bytes, expected.Bytes());

    auto read = ReadBack<AS_MediaLinkLevelObj>(bytes);
    ASSERT_EQ(read->Cells().size(), 3u);
    EXPECT_EQ(read->Cells()[0].media, read->Cells()[2].media);
    EXPECT_EQ(read->Cells()[1].media->GetName(), u"Run");
    EXPECT_EQ(read->GetName(), u"M");
    EXPECT_EQ(Typed(*read), bytes);

    EXPECT_EQ(media->GetFirstFrame(), 2);
    EXPECT_EQ(media->GetLastFrame(), 11);
    EXPECT_EQ(media->GetDuration(), 10u);
    EXPECT_EQ(media->CellIndexAt(1), -1);
    EXPECT_EQ(media->CellIndexAt(6), 1);
    EXPECT_EQ(media->CellIndexAt(8), -1);
    EXPECT_EQ(media->CellName(2), u"Walk");
    EXPECT_EQ(media->CellName(4), u"| 3");
    EXPECT_EQ(media->CellName(7), u"| 5");
    EXPECT_EQ(media->CellName(9), u"");

    // Moving the start frame moves every run, but never before frame 0.
    EXPECT_TRUE(media->SetStartFrame(3)); // from 5
    EXPECT_EQ(media->Cells()[0].start, 0u);
    EXPECT_EQ(media->Cells()[2].end, 10u);
    EXPECT_FALSE(media->SetStartFrame(2));
    EXPECT_EQ(media->Placement().startFrame, 3u);
    EXPECT_EQ(media->Cells()[0].start, 0u);
    auto clone = media->Clone(2021, true);
    EXPECT_EQ(static_cast<AS_MediaLinkLevelObj*>(clone.get())->Cells(), media->Cells());
    EXPECT_EQ(clone->GetDisplayName(), u"M(1)");
}

TEST_F(LevelsTest, MediaRunsThatOverlapOrLackATemplateAreRefused) {
    auto walk = std::make_shared<AS_MediaObj>(UT_UniqueId(1), u"Walk");
    auto media = AS_MediaLinkLevelObj::Create(2020, u"M");
    EXPECT_FALSE(media->SetCells({{2, 6, 0, walk}, {5, 8, 0, walk}}));
    EXPECT_FALSE(media->SetCells({{6, 8, 0, walk}, {2, 4, 0, walk}}));
    EXPECT_FALSE(media->SetCells({{6, 5, 0, walk}}));
    EXPECT_FALSE(media->SetCells({{2, 6, 0, nullptr}}));
    EXPECT_TRUE(media->Cells().empty());

    ByteBuilder overlap;
    overlap.U16(12).U32(1).Wide(u"").U32(0).U16(1).U16(21).Wide(u"M").U32(0).U32(1).U32(2);
    overlap.U32(0).U32(4).U32(0).U16(1).U16(17).U64(1).Wide(u"W");
    overlap.U32(3).U32(5).U32(0).U16(0).U32(2);
    PlacementBytes(overlap);
    EXPECT_THROW(ReadBack<AS_MediaLinkLevelObj>(overlap.Bytes()), DB_Exception);
}

TEST_F(LevelsTest, MediaObjectBodyInEachVersion) {
    AS_MediaObj entry(UT_UniqueId(77), u"Lib/Walk");
    entry.SetId(0x7FFFFFFF);
    DB_MemFile file;
    {
        DB_Archive archive(&file, false);
        entry.Write(archive);
    }
    EXPECT_EQ(BytesOf(file), ByteBuilder().U64(77).Wide(u"Lib/Walk").Bytes());
    DB_MemFile embedded;
    {
        DB_Archive archive(&embedded, true);
        entry.Write(archive);
    }
    EXPECT_EQ(BytesOf(embedded), ByteBuilder().U64(77).Wide(u"Lib/Walk").U32(0x7FFFFFFF).Bytes());

    auto read = [](const std::vector<uint8_t>& bytes, int32_t version) {
        DB_MemFile in;
        in.Write(bytes.data(), bytes.size());
        in.Rewind();
        DB_Archive archive(&in, false);
        archive.SetVersion(version);
        auto back = std::make_unique<AS_MediaObj>();
        back->Read(archive);
        EXPECT_EQ(in.BytesLeft(), 0u);
        return back;
    };
    ByteBuilder form40;
    Old(form40.Bool(true).U64(5), "W");
    auto v40 = read(form40.Bytes(), 40);
    EXPECT_TRUE(v40->IsGlobal());
    EXPECT_EQ(v40->TemplateId(), UT_UniqueId(5));
    EXPECT_EQ(v40->GetId(), AS_kInvalidId);
    ByteBuilder old;
    old.Bool(true);
    Old(old, "Cats\\Walk").U16(600).U32(2).U8(1).U8(2);
    auto v31 = read(old.Bytes(), 31);
    EXPECT_EQ(v31->GetName(), u"Cats/Walk");
    EXPECT_TRUE(v31->IsGlobal());
}

TEST_F(LevelsTest, MediaManagerMergesByTemplateAndPrunesUnusedEntries) {
    AS_MediaManager manager;
    auto level = AS_MediaLinkLevelObj::Create(1, u"A");
    auto other = AS_MediaLinkLevelObj::Create(2, u"B");
    // Two streams brought two objects for one template.
    ASSERT_TRUE(level->SetCells({{0, 4, 0, std::make_shared<AS_MediaObj>(UT_UniqueId(8), u"Walk")}}));
    ASSERT_TRUE(other->SetCells({{0, 2, 0, std::make_shared<AS_MediaObj>(UT_UniqueId(8), u"Walk")},
                                 {2, 3, 0, std::make_shared<AS_MediaObj>(UT_UniqueId(9), u"Run")}}));
    level->SetMediaManager(&manager);
    other->SetMediaManager(&manager);
    ASSERT_EQ(manager.Entries().size(), 2u);
    EXPECT_EQ(level->Cells()[0].media, other->Cells()[0].media);
    EXPECT_EQ(manager.FindByTemplateId(UT_UniqueId(8))->GetId(), 0x7FFFFFFFu);
    EXPECT_EQ(manager.FindByTemplateId(UT_UniqueId(9))->GetId(), 0x7FFFFFFEu);
    EXPECT_EQ(manager.FindById(0x7FFFFFFE)->GetName(), u"Run");

    // An entry that no cell uses goes, unless it was opened for editing.
    other.reset();
    manager.Prune();
    ASSERT_EQ(manager.Entries().size(), 1u);
    level.reset();
    manager.Entries().front()->SetOpenedForEditing(true);
    manager.Prune();
    ASSERT_EQ(manager.Entries().size(), 1u);
    manager.Entries().front()->SetOpenedForEditing(false);
    manager.Prune();
    EXPECT_TRUE(manager.Entries().empty());
}

TEST_F(LevelsTest, ClipboardFormsStartWithTheElementHeader) {
    auto drawing = AS_VectorGraphicLevelObj::Create(2004, u"Arm");
    drawing->SetNote(u"left");
    FillPlacement(drawing->Placement());
    std::unique_ptr<DD_DragDataStore> store = drawing->WriteToDragData();
    ByteBuilder expected;
    expected.U32(2004).Wide(u"Arm").U32(2004).Wide(u"left");
    PlacementBytes(expected);
    EXPECT_EQ(BytesOf(store->File()), expected.Bytes());

    // The store travels as its length and bytes, and its reader takes the header itself.
    DB_MemFile outer;
    {
        DB_Archive archive(&outer, true);
        ASSERT_TRUE(archive.WriteTyped(*store));
    }
    EXPECT_EQ(BytesOf(outer), ByteBuilder()
                                  .U16(50)
                                  .U32(static_cast<uint32_t>(expected.Bytes().size()))
                                  .Raw(expected.Bytes())
                                  .Bytes());
    outer.Rewind();
    DB_Archive reader(&outer, true);
    reader.SetVersion(51);
    auto carried = reader.ReadNewAs<DD_DragDataStore>();
    const AS_ElementHeader header = AS_DopeSheetLevelObj::ReadDragHeader(carried->Archive());
    EXPECT_EQ(header.id, 2004u);
    EXPECT_EQ(header.name, u"Arm");
    EXPECT_EQ(header.commonId, 2004u);
    auto pasted = AS_VectorGraphicLevelObj::Create(3000, u"Arm");
    pasted->ReadFromDragData(*carried);
    EXPECT_EQ(pasted->GetNote(), u"left");
    EXPECT_EQ(PlacementOf(pasted->Placement()), PlacementOf(drawing->Placement()));

    // The effect carries its common half and its frames, the parameter group its common
    // fields.
    auto payload = std::make_unique<DB_MemFile>();
    auto effect = AS_EffectLevel::Create(2010, u"Fx", std::move(payload));
    effect->SetFirstFrame(4);
    effect->SetLength(6);
    EXPECT_EQ(BytesOf(effect->WriteToDragData()->File()), ByteBuilder()
                                                              .U32(2010)
                                                              .Wide(u"Fx")
                                                              .U32(2010)
                                                              .Wide(u"")
                                                              .Wide(u"Fx")
                                                              .U32(0)
                                                              .U32(2010)
                                                              .U32(20)
                                                              .U16(600)
                                                              .U32(0)
                                                              .U32(4)
                                                              .U32(6)
                                                              .Bytes());
    auto group = AS_ParamGroupLevel::Create(2011, u"G");
    EXPECT_EQ(BytesOf(group->WriteToDragData()->File()),
              ByteBuilder().U32(2011).Wide(u"G").U32(2011).Wide(u"").Wide(u"G").U32(0).U32(2011).Bytes());

    // A peg carries its common body and its own fields; read into a new peg they give the
    // same form again.
    auto peg = AS_PegLevelObj::Create(2003, u"Peg", 12);
    peg->SetStartFrame(6);
    peg->offsetX = 2.5;
    std::unique_ptr<DD_DragDataStore> pegStore = peg->WriteToDragData();
    pegStore->Rewind();
    AS_DopeSheetLevelObj::ReadDragHeader(pegStore->Archive());
    auto pastedPeg = AS_PegLevelObj::Create(4000, u"Other", 30);
    pastedPeg->ReadFromDragData(*pegStore);
    EXPECT_EQ(pastedPeg->GetStartFrame(), 6);
    EXPECT_EQ(pastedPeg->offsetX, 2.5);
    EXPECT_EQ(pastedPeg->CommonPeg()->Duration(), 12u);
    // Only the level's own id differs.
    std::vector<uint8_t> again = BytesOf(pastedPeg->WriteToDragData()->File());
    std::vector<uint8_t> original = BytesOf(pegStore->File());
    EXPECT_EQ(std::vector<uint8_t>(again.begin(), again.begin() + 4), ByteBuilder().U32(4000).Bytes());
    EXPECT_EQ(std::vector<uint8_t>(again.begin() + 4, again.end()),
              std::vector<uint8_t>(original.begin() + 4, original.end()));
}

TEST_F(LevelsTest, HeaderOfAnEarlierClipboardHasANameForTheCommonId) {
    DB_MemFile file;
    ByteBuilder bytes;
    Old(Old(bytes.U32(2005), "Arm"), "dropped");
    const std::vector<uint8_t> raw = bytes.Bytes();
    file.Write(raw.data(), raw.size());
    file.Rewind();
    DB_Archive archive(&file, true);
    archive.SetVersion(40);
    const AS_ElementHeader header = AS_DopeSheetLevelObj::ReadDragHeader(archive);
    EXPECT_EQ(header.name, u"Arm");
    EXPECT_EQ(header.commonId, 2005u);
    EXPECT_EQ(file.BytesLeft(), 0u);
}

// Drawing files in a scene folder.
class DrawingFilesTest : public LevelsTest {
protected:
    void SetUp() override {
        LevelsTest::SetUp();
        root = fs::temp_directory_path() / ("qms_levels_" + std::to_string(::getpid()));
        fs::remove_all(root);
        fs::create_directories(root / "Scene-001" / "Drawing");
    }
    void TearDown() override { fs::remove_all(root); }
    void Put(const std::string& name, const std::vector<uint8_t>& bytes) {
        std::ofstream(root / "Scene-001" / "Drawing" / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    std::vector<uint8_t> Get(const std::string& name) {
        std::ifstream in(root / "Scene-001" / "Drawing" / name, std::ios::binary);
        return std::vector<uint8_t>((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    }
    std::vector<uint8_t> SaveProject(AS_DopeSheetLevelObj& level) {
        DB_MemFile file;
        {
            UT_FileTransaction::Handle transaction = UT_FileTransaction::Get();
            DB_Archive archive(&file, false);
            archive.WriteTyped(level);
            EXPECT_TRUE(transaction->Commit());
        }
        return BytesOf(file);
    }
    fs::path root;
};

TEST_F(DrawingFilesTest, LazyLoadRenameAndSaveKeepOldFiles) {
    auto level = AS_VectorGraphicLevelObj::Create(2004, u"Arm");
    level->SetFolder(UT_FilePath(root / "Scene-001"));
    AS_CommonDrawingLevel* common = level->CommonDrawing();
    const uint32_t one = common->AddDrawing(u"1");
    const uint32_t two = common->AddDrawing(u"2");
    EXPECT_EQ(common->GetDrawingPath(u"Arm-12").Path(), root / "Scene-001" / "Drawing" / "Arm-12.qmd");
    Put("Arm-1.qmd", MarkedDrawingFile('a'));
    Put("Arm-2.qmd", MarkedDrawingFile('b'));

    // A reopened project: the entries know only that they have a file.
    ByteBuilder project;
    project.U16(3).U32(2004).Wide(u"").U32(0).U16(1).U16(6).Wide(u"Arm").U32(0).U32(2004).U32(1003).U32(2);
    project.U32(one).Wide(u"1").U32(one).Bool(false).Bool(true);
    project.U32(two).Wide(u"2").U32(two).Bool(false).Bool(true);
    AS_Placement defaults;
    {
        DB_MemFile f;
        DB_Archive a(&f, false);
        defaults.Write(a);
        project.Raw(BytesOf(f));
    }
    project.U32(0);
    auto opened = ReadBack<AS_VectorGraphicLevelObj>(project.Bytes());
    opened->SetFolder(UT_FilePath(root / "Scene-001"));
    AS_CommonDrawingLevel* openedCommon = opened->CommonDrawing();
    EXPECT_FALSE(openedCommon->FindDrawing(one)->HasDrawing());
    EXPECT_FALSE(openedCommon->FindDrawing(two)->HasDrawing());
    ASSERT_NE(openedCommon->FindDrawing(one)->GetDrawing(), nullptr);
    EXPECT_EQ(MarkerOf(openedCommon->FindDrawing(one)->GetDrawing()), 'a');
    EXPECT_FALSE(openedCommon->FindDrawing(two)->HasDrawing());

    // Saving unchanged drawings writes no file.
    fs::remove(root / "Scene-001" / "Drawing" / "Arm-1.qmd");
    SaveProject(*opened);
    EXPECT_FALSE(fs::exists(root / "Scene-001" / "Drawing" / "Arm-1.qmd"));
    Put("Arm-1.qmd", MarkedDrawingFile('a'));

    // Renaming the element loads every drawing under the old name; the save writes them
    // under the new one and leaves the old files.
    opened->SetName(u"Hand");
    SaveProject(*opened);
    EXPECT_EQ(Get("Hand-1.qmd"), MarkedDrawingFile('a'));
    EXPECT_EQ(Get("Hand-2.qmd"), MarkedDrawingFile('b'));
    EXPECT_EQ(Get("Arm-1.qmd"), MarkedDrawingFile('a'));
    EXPECT_EQ(Get("Arm-2.qmd"), MarkedDrawingFile('b'));

    // Renaming one drawing works the same way.
    openedCommon->FindDrawing(two)->Rename(u"20");
    SaveProject(*opened);
    EXPECT_EQ(Get("Hand-20.qmd"), MarkedDrawingFile('b'));
    EXPECT_TRUE(fs::exists(root / "Scene-001" / "Drawing" / "Hand-2.qmd"));
}

TEST_F(DrawingFilesTest, MissingFileGivesAnEmptyCellAndNoFile) {
    ByteBuilder project;
    project.U16(3).U32(2004).Wide(u"").U32(0).U16(1).U16(6).Wide(u"Arm").U32(0).U32(2004).U32(1002).U32(1);
    project.U32(1001).Wide(u"1").U32(1001).Bool(false).Bool(true);
    AS_Placement defaults;
    {
        DB_MemFile f;
        DB_Archive a(&f, false);
        defaults.Write(a);
        project.Raw(BytesOf(f));
    }
    project.U32(0);
    auto opened = ReadBack<AS_VectorGraphicLevelObj>(project.Bytes());
    opened->SetFolder(UT_FilePath(root / "Scene-001"));
    AS_DopeSheetDrawingObj* drawing = opened->CommonDrawing()->FindDrawing(1001);
    EXPECT_EQ(drawing->GetDrawing(), nullptr);
    EXPECT_FALSE(drawing->HasFile());
    // A file that is not a drawing file does not load either.
    Put("Arm-1.qmd", {1, 2, 3});
    EXPECT_EQ(drawing->GetDrawing(), nullptr);
}

TEST_F(DrawingFilesTest, ModifiedDrawingsAreSavedThroughTheTransaction) {
    auto level = AS_VectorGraphicLevelObj::Create(2004, u"Arm");
    level->SetFolder(UT_FilePath(root / "Scene-001"));
    AS_CommonDrawingLevel* common = level->CommonDrawing();
    common->AddDrawingWithId(1001, u"1")->SetDrawing(MarkedDrawing('x'));
    common->AddDrawingWithId(1002, u"2");
    SaveProject(*level);
    EXPECT_EQ(Get("Arm-1.qmd"), MarkedDrawingFile('x'));
    EXPECT_FALSE(fs::exists(root / "Scene-001" / "Drawing" / "Arm-2.qmd"));
    AS_DopeSheetDrawingObj* entry = common->FindDrawing(1001);
    EXPECT_TRUE(entry->HasFile());
    EXPECT_FALSE(entry->GetDrawing()->IsModified());

    // An edit marks the drawing; the next save writes it again, and only it.
    GR_DrawingAccess access;
    access.SetDrawing(dynamic_cast<GR_VectorDrawingObj*>(entry->GetDrawing()));
    access.RemoveLayer({0, 0});
    EXPECT_TRUE(entry->GetDrawing()->IsModified());
    fs::remove(root / "Scene-001" / "Drawing" / "Arm-2.qmd");
    SaveProject(*level);
    EXPECT_EQ(Get("Arm-1.qmd"), ByteBuilder().Header(1).U16(202).U8(0).Bool(false).U32(0).Bytes());

    // A project of an older version converts every drawing on saving, loaded or not.
    Put("Arm-1.qmd", MarkedDrawingFile('y'));
    common->ReleaseUnmodified();
    EXPECT_FALSE(entry->HasDrawing());
    fs::remove(root / "Scene-001" / "Drawing" / "Arm-1.qmd");
    Put("Arm-1.qmd", MarkedDrawingFile('z'));
    DB_MemFile file;
    {
        UT_FileTransaction::Handle transaction = UT_FileTransaction::Get();
        DB_Archive archive(&file, false);
        archive.SetConverting(true);
        archive.WriteTyped(*level);
        EXPECT_TRUE(transaction->Commit());
    }
    EXPECT_FALSE(entry->HasDrawing());
    EXPECT_EQ(Get("Arm-1.qmd"), MarkedDrawingFile('z'));
}

TEST_F(DrawingFilesTest, EmbeddedFormCarriesTheDrawing) {
    auto level = AS_VectorGraphicLevelObj::Create(2004, u"Arm");
    level->SetFolder(UT_FilePath(root / "Scene-001"));
    AS_DopeSheetDrawingObj* entry = level->CommonDrawing()->AddDrawingWithId(1001, u"1");
    entry->SetDrawing(MarkedDrawing('q'));
    AS_DopeSheetDrawingObj empty(u"2", 1002);

    DB_MemFile file;
    {
        DB_Archive archive(&file, true);
        entry->Write(archive);
        empty.Write(archive);
    }
    const std::vector<uint8_t> drawingFile = MarkedDrawingFile('q');
    // The drawing's typed object is what its file holds after the 33 bytes of the header.
    const std::vector<uint8_t> typed(drawingFile.begin() + 33, drawingFile.end());
    const std::vector<uint8_t> expected = ByteBuilder()
                                              .Wide(u"1")
                                              .U32(1001)
                                              .Bool(false)
                                              .Bool(true)
                                              .Raw(typed)
                                              .Wide(u"2")
                                              .U32(1002)
                                              .Bool(false)
                                              .Bool(false)
                                              .Bytes();
    ASSERT_EQ(BytesOf(file), expected);

    file.Rewind();
    DB_Archive reader(&file, true);
    AS_DopeSheetDrawingObj back;
    back.Read(reader);
    EXPECT_FALSE(back.HasFile());
    ASSERT_TRUE(back.HasDrawing());
    EXPECT_EQ(MarkerOf(back.GetDrawing()), 'q');
    EXPECT_TRUE(back.GetDrawing()->IsModified());

    // Something else than a drawing in its place is refused.
    const std::vector<uint8_t> wrong =
        ByteBuilder().Wide(u"1").U32(1001).Bool(false).Bool(true).U16(600).U32(0).Bytes();
    DB_MemFile bad;
    bad.Write(wrong.data(), wrong.size());
    bad.Rewind();
    DB_Archive badReader(&bad, true);
    AS_DopeSheetDrawingObj refused;
    EXPECT_THROW(refused.Read(badReader), DB_Exception);
}

} // namespace
