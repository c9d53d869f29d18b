// The scene: default elements, names, the body on the stream with its version rules,
// removal and restoration of elements, and the purge of a save.

#include "ByteBuilder.h"
#include "animationset/AS_CameraLevelObj.h"
#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/AS_PegLevelObj.h"
#include "animationset/AS_SoundLevel.h"
#include "animationset/AnimationSetTypes.h"
#include "animationset/CDopeSheetObj.h"
#include "core/CPersistentType.h"
#include "core/DB_Archive.h"
#include "core/DB_Exception.h"
#include "core/DB_MemFile.h"
#include "core/UT_FileTransaction.h"
#include "motion/MotionTypes.h"
#include "vector/GR_VectorDrawingObj.h"
#include "vector/VectorTypes.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

std::vector<uint8_t> BytesOf(const DB_MemFile& file) {
    return {file.Data(), file.Data() + file.Size()};
}

std::vector<uint8_t> Written(CPersistentObjBase& object, bool embedded = false) {
    DB_MemFile file;
    DB_Archive archive(&file, embedded);
    object.Write(archive);
    return BytesOf(file);
}

std::vector<uint8_t> Typed(CPersistentObjBase& object) {
    DB_MemFile file;
    DB_Archive archive(&file, true);
    archive.WriteTyped(object);
    return BytesOf(file);
}

void ReadInto(CPersistentObjBase& object, const std::vector<uint8_t>& bytes, int32_t version = 51) {
    DB_MemFile file;
    file.Write(bytes.data(), bytes.size());
    file.Rewind();
    DB_Archive archive(&file, false);
    archive.SetVersion(version);
    object.Read(archive);
    EXPECT_EQ(file.BytesLeft(), 0u);
}

std::vector<std::pair<uint32_t, UT_WString>> Listing(const CDopeSheetObj& scene) {
    std::vector<std::pair<uint32_t, UT_WString>> out;
    for (const auto& entry : scene.Levels())
        if (!entry.removed)
            out.emplace_back(entry.level->GetId(), entry.level->GetName());
    return out;
}

class SceneTest : public ::testing::Test {
protected:
    void SetUp() override {
        CoreRegisterTypes();
        MotionRegisterTypes();
        VectorRegisterTypes();
        AnimationSetRegisterTypes();
    }
};

TEST_F(SceneTest, DefaultElementsAndTheirIds) {
    CDopeSheetObj scene;
    scene.Initialise(1, u"Scene-1", nullptr);
    scene.InitialiseDefaultElements(500, 375);
    ASSERT_NE(scene.DefaultCamera(), nullptr);
    EXPECT_EQ(scene.DefaultCamera()->GetId(), 2001u);
    EXPECT_EQ(scene.DefaultCamera()->GetName(), u"<Default>");
    EXPECT_EQ(Listing(scene), (std::vector<std::pair<uint32_t, UT_WString>>{
                                  {2002, u"Camera"}, {2003, u"Peg"}, {2004, u"Drawing"}}));
    EXPECT_EQ(scene.CurrentCamera()->GetId(), 2002u);
    EXPECT_EQ(scene.CurrentCamera()->Width(), 500.0);
    EXPECT_EQ(static_cast<AS_PegLevelObj*>(scene.FindElement(2003))->GetDuration(), 20u);
    EXPECT_EQ(scene.DrawingOrder().GetRowCount(), 1);
    EXPECT_EQ(scene.SceneplanningOrder().GetLevelId(0), 2004u);
    EXPECT_EQ(scene.SceneplanningOrder().GetLevelId(2), 2002u);

    scene.SetCameraSize(800, 600);
    EXPECT_EQ(scene.CurrentCamera()->Height(), 600.0);
    EXPECT_EQ(scene.DefaultCamera()->Width(), 800.0);

    // A second call adds another camera and peg but no second drawing.
    scene.InitialiseDefaultElements(500, 375);
    EXPECT_EQ(scene.FindElement(2005)->GetName(), u"Camera 2");
    EXPECT_EQ(scene.FindElement(2006)->GetName(), u"Peg 2");
    EXPECT_EQ(scene.Levels().size(), 5u);
}

TEST_F(SceneTest, UniqueNamesAndNameChecks) {
    CDopeSheetObj scene;
    scene.Initialise(1, u"S", nullptr);
    auto add = [&](const UT_WString& name) {
        const uint32_t id = scene.NewElementId();
        scene.AddElement(AS_SoundLevel::Create(id, name));
        return id;
    };
    EXPECT_EQ(scene.UniqueName(u"Arm"), u"Arm");
    add(u"Arm");
    EXPECT_EQ(scene.UniqueName(u"Arm"), u"Arm 2");
    add(u"Arm 2");
    EXPECT_EQ(scene.UniqueName(u"Arm"), u"Arm 3");
    const uint32_t seven = add(u"Arm 7");
    EXPECT_EQ(scene.UniqueName(u"Arm 7"), u"Arm 8");
    EXPECT_EQ(scene.UniqueName(u"Arm 2"), u"Arm 3");
    EXPECT_EQ(scene.UniqueName(u"Arm x"), u"Arm x");
    scene.RemoveElement(seven, false);
    EXPECT_EQ(scene.UniqueName(u"Arm 7"), u"Arm 7");

    EXPECT_EQ(scene.CheckElementName(u""), u"The name of the element cannot be empty.");
    EXPECT_EQ(scene.CheckElementName(u"Arm"), u"The new element name already exists.");
    EXPECT_EQ(scene.CheckElementName(u"Arm", 2001), u"");
    EXPECT_EQ(scene.CheckElementName(u"a/b"),
              u"This name contains invalid characters; please choose a different one.");
    EXPECT_EQ(scene.CheckElementName(u".."),
              u"This name contains invalid characters; please choose a different one.");
    EXPECT_EQ(scene.CheckElementName(u"Leg"), u"");
}

TEST_F(SceneTest, FolderNames) {
    EXPECT_EQ(CDopeSheetObj::SceneFolderName(1), u"Scene-001");
    EXPECT_EQ(CDopeSheetObj::SceneFolderName(42), u"Scene-042");
    EXPECT_EQ(CDopeSheetObj::SceneFolderName(1000), u"Scene-1000");
    CDopeSheetObj scene;
    scene.Initialise(7, u"S", nullptr);
    scene.SetFolder(UT_FilePath("/projects/p"));
    EXPECT_EQ(scene.SceneFolder().Path(), fs::path("/projects/p/Scene-007"));
}

TEST_F(SceneTest, BodyBytesAndVersionRules) {
    CDopeSheetObj scene;
    scene.Initialise(3, u"Intro", nullptr);
    const uint32_t id = scene.NewElementId();
    scene.AddElement(AS_SoundLevel::Create(id, u"Voice"));
    scene.SetBackgroundColour({1, 2, 3, 4});
    scene.SetVisible(false);

    auto row = [](ByteBuilder& b, uint32_t rowId) { b.U32(rowId).Bool(true).U32(1).Bool(false).Bool(true); };
    ByteBuilder expected;
    expected.U32(1).U16(11).U32(2001).Wide(u"").U32(0).U16(1).U16(15).Wide(u"Voice").U32(0).U32(2001);
    expected.U32(3).Wide(u"Intro").U8(1).U8(3).U8(2).U8(4).Bool(false).U32(2);
    expected.U16(5).U32(1);
    row(expected, 2001);
    expected.U16(4).U32(1);
    row(expected, 2001);
    expected.U32(2001).U32(AS_kInvalidId);
    const std::vector<uint8_t> bytes = Written(scene);
    ASSERT_EQ(bytes, expected.Bytes());

    CDopeSheetObj back;
    ReadInto(back, bytes);
    EXPECT_EQ(back.SceneId(), 3u);
    EXPECT_EQ(back.Name(), u"Intro");
    EXPECT_EQ(back.BackgroundColour(), (std::array<uint8_t, 4>{1, 2, 3, 4}));
    EXPECT_FALSE(back.IsVisible());
    EXPECT_EQ(back.NextElementId(), 2001u);
    EXPECT_EQ(back.SceneplanningOrder().GetLevel(0), back.FindElement(2001));
    EXPECT_EQ(Written(back), bytes);

    // Before version 38 there is no background colour, before 29 no visible flag.
    auto old = [&](int32_t version) {
        ByteBuilder b;
        b.U32(0).U32(9).U32(2).U8('A').U8('B');
        if (version >= 29)
            b.Bool(false);
        b.U32(2).U16(5).U32(0).U16(4).U32(0).U32(2000).U32(AS_kInvalidId);
        CDopeSheetObj scene;
        ReadInto(scene, b.Bytes(), version);
        EXPECT_EQ(scene.Name(), u"AB");
        EXPECT_EQ(scene.BackgroundColour(), (std::array<uint8_t, 4>{255, 255, 255, 255}));
        return scene.IsVisible();
    };
    EXPECT_FALSE(old(37));
    EXPECT_TRUE(old(28));
}

TEST_F(SceneTest, DefaultSceneRoundTripsWithItsCurrentCamera) {
    CDopeSheetObj scene;
    scene.Initialise(1, u"Scene-1", nullptr);
    scene.InitialiseDefaultElements(500, 375);
    const std::vector<uint8_t> bytes = Written(scene);
    CDopeSheetObj back;
    ReadInto(back, bytes);
    EXPECT_EQ(back.CurrentCamera(), back.FindElement(2002));
    EXPECT_EQ(back.DefaultCamera(), nullptr);
    EXPECT_EQ(Listing(back), Listing(scene));
    EXPECT_EQ(Written(back), bytes);
    // The default camera is made again on demand, with a new id.
    back.EnsureDefaultCamera(500, 375);
    EXPECT_EQ(back.DefaultCamera()->GetId(), 2005u);
    EXPECT_EQ(back.CurrentCamera(), back.FindElement(2002));
}

TEST_F(SceneTest, DamagedBodiesThrow) {
    CDopeSheetObj scene;
    scene.Initialise(1, u"S", nullptr);
    scene.AddElement(AS_SoundLevel::Create(scene.NewElementId(), u"A"));
    const std::vector<uint8_t> good = Written(scene);
    for (size_t cut = 0; cut < good.size(); cut += 7) {
        CDopeSheetObj back;
        DB_MemFile file;
        file.Write(good.data(), cut);
        file.Rewind();
        DB_Archive archive(&file, false);
        EXPECT_THROW(back.Read(archive), DB_Exception) << cut;
    }
    // Three orders, or the same element id twice.
    ByteBuilder orders;
    orders.U32(0).U32(1).U32(0).U8(255).U8(255).U8(255).U8(255).Bool(true).U32(3);
    CDopeSheetObj back;
    EXPECT_THROW(ReadInto(back, orders.Bytes()), DB_Exception);
    const std::vector<uint8_t> element = Typed(*AS_SoundLevel::Create(2001, u"A"));
    ByteBuilder twice;
    twice.U32(2).Raw(element).Raw(element);
    EXPECT_THROW(ReadInto(back, twice.Bytes()), DB_Exception);
}

TEST_F(SceneTest, CorruptedScenesThrowOrReadCleanly) {
    CDopeSheetObj scene;
    scene.Initialise(1, u"Scene-1", nullptr);
    scene.InitialiseDefaultElements(500, 375);
    scene.AddElement(AS_SoundLevel::Create(scene.NewElementId(), u"Voice"));
    scene.SceneplanningOrder().Reparent(0, 1);
    const std::vector<uint8_t> good = Written(scene);
    std::mt19937 random(7);
    int failures = 0;
    for (int round = 0; round < 1500; ++round) {
        std::vector<uint8_t> bytes = good;
        const int flips = 1 + static_cast<int>(random() % 4);
        for (int i = 0; i < flips; ++i)
            bytes[random() % bytes.size()] = static_cast<uint8_t>(random());
        DB_MemFile file;
        file.Write(bytes.data(), bytes.size());
        file.Rewind();
        DB_Archive archive(&file, false);
        CDopeSheetObj back;
        try {
            back.Read(archive);
        } catch (const DB_Exception&) {
            ++failures;
            continue;
        }
        // Whatever was read answers queries and writes again.
        int32_t first = 0, last = 0;
        back.SceneplanningOrder().GetFrameRange(first, last);
        for (int row = 0; row < back.SceneplanningOrder().GetRowCount(); ++row)
            back.SceneplanningOrder().GetParent(row);
        Written(back, true);
    }
    EXPECT_GT(failures, 0);
}

TEST_F(SceneTest, RemovedElementComesBackAndSavePurgesIt) {
    const fs::path root = fs::temp_directory_path() / ("qms_scene_" + std::to_string(::getpid()));
    fs::remove_all(root);
    fs::create_directories(root);
    {
        CDopeSheetObj scene;
        scene.Initialise(1, u"S", nullptr);
        scene.SetFolder(UT_FilePath(root));
        ASSERT_TRUE(scene.MakeFolders());
        EXPECT_TRUE(fs::is_directory(root / "Scene-001" / "Bitmap"));
        EXPECT_TRUE(fs::is_directory(root / "Scene-001" / "Drawing"));
        const uint32_t id = scene.NewElementId();
        auto* level = static_cast<AS_VectorGraphicLevelObj*>(
            scene.AddElement(AS_VectorGraphicLevelObj::Create(id, u"Arm")));
        level->CommonDrawing()
            ->AddDrawingWithId(1001, u"1")
            ->SetDrawing(std::make_unique<GR_VectorDrawingObj>());
        {
            UT_FileTransaction::Handle transaction = UT_FileTransaction::Get();
            Written(scene);
            ASSERT_TRUE(transaction->Commit());
        }
        const fs::path file = root / "Scene-001" / "Drawing" / "Arm-1.qmd";
        ASSERT_TRUE(fs::exists(file));

        // Removal keeps the element in the map and out of the orders.
        scene.RemoveElement(id, true);
        EXPECT_TRUE(scene.IsRemoved(id));
        EXPECT_NE(scene.FindElement(id), nullptr);
        EXPECT_EQ(scene.FindElementByName(u"Arm"), nullptr);
        EXPECT_EQ(scene.DrawingOrder().FindRow(id), -1);
        // An undo puts the object back in its entry.
        std::unique_ptr<AS_DopeSheetLevelObj> again = scene.FindElement(id)->Clone(id, true);
        scene.AddElement(std::move(again));
        EXPECT_FALSE(scene.IsRemoved(id));
        EXPECT_EQ(scene.Levels().size(), 1u);
        EXPECT_EQ(scene.DrawingOrder().FindRow(id), 0);
        EXPECT_EQ(scene.SceneplanningOrder().GetRowCount(), 1);

        // Removed again and saved: the entry goes and its file goes with the transaction.
        scene.RemoveElement(id, true);
        {
            UT_FileTransaction::Handle transaction = UT_FileTransaction::Get();
            const std::vector<uint8_t> bytes = Written(scene);
            EXPECT_EQ(std::vector<uint8_t>(bytes.begin(), bytes.begin() + 4), ByteBuilder().U32(0).Bytes());
            EXPECT_TRUE(fs::exists(file));
            ASSERT_TRUE(transaction->Commit());
        }
        EXPECT_FALSE(fs::exists(file));
        EXPECT_TRUE(scene.Levels().empty());
        EXPECT_EQ(scene.FindElement(id), nullptr);
    }
    fs::remove_all(root);
}

} // namespace
