// The document's Save, Save As and Open flows on real folders, with failures injected
// through the file operations.

#include "ByteBuilder.h"
#include "DrawingTestUtil.h"
#include "FakeHosts.h"
#include "RegisterAll.h"
#include "animationset/AS_CommonDrawingLevel.h"
#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"
#include "animationset/CSketchrunDoc.h"
#include "core/UT_FileOperations.h"

#include <fstream>
#include <gtest/gtest.h>
#include <map>

namespace fs = std::filesystem;

namespace {

std::map<std::string, std::string> Snapshot(const fs::path& root) {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
        const std::string relative = fs::relative(entry.path(), root).string();
        if (entry.is_regular_file()) {
            std::ifstream in(entry.path(), std::ios::binary);
            files[relative] = std::string(std::istreambuf_iterator<char>(in), {});
        } else {
            files[relative] = "<folder>";
        }
    }
    return files;
}

// Fails the n-th rename, counting from 1.
class FailingRenames : public UT_FileOperations {
public:
    explicit FailingRenames(int failAt) : failAt_(failAt) {}
    int Rename(const UT_FilePath& from, const UT_FilePath& to) override {
        if (++count_ == failAt_)
            return EIO;
        return UT_FileOperations::Rename(from, to);
    }
    int Count() const { return count_; }

private:
    int failAt_;
    int count_ = 0;
};

class InstallOperations {
public:
    explicit InstallOperations(UT_FileOperations* operations)
        : previous_(UT_FileOperations::SetCurrent(operations)) {}
    ~InstallOperations() { UT_FileOperations::SetCurrent(previous_); }

private:
    UT_FileOperations* previous_;
};

class DocumentTest : public ::testing::Test {
protected:
    void SetUp() override { RegisterAllTypesForTests(); }

    // A saved project of two scenes; the second is then deleted, so the next save both
    // replaces the project file and erases a scene folder.
    std::unique_ptr<CSketchrunDoc> MakeProjectWithPendingChanges() {
        auto set = std::make_unique<CAnimationSetObj>();
        set->InitialiseNew(12, 500, 375);
        set->SetName(u"Reel");
        auto scene = std::make_unique<CDopeSheetObj>();
        scene->Initialise(set->TakeNextSceneId(), u"Second", &set->PaletteList());
        scene->InitialiseDefaultElements(500, 375);
        set->AddScene(std::move(scene), 1);
        set->SetForcedDirty(true);
        auto document = std::make_unique<CSketchrunDoc>(host);
        document->Attach(std::move(set), UT_FilePath(folder.Path() / "Reel"));
        EXPECT_TRUE(document->Save());
        EXPECT_TRUE(fs::is_directory(folder.Path() / "Reel" / "Scene-002"));
        document->Set()->RemoveScene(2, true);
        document->Set()->SetForcedDirty(true);
        return document;
    }

    TempFolder folder{"doc"};
    ScriptedMessages messages;
    UT_MessageHandlerScope scope{&messages};
    FakeAppHost host;
};

TEST_F(DocumentTest, AFailedRenameAtAnyPointLeavesTheProjectAsItWas) {
    // The renames of a clean save: the old project aside, the new one in, and last the
    // removed scene's folder aside, which may fail without failing the save.
    int renames = 0;
    {
        auto document = MakeProjectWithPendingChanges();
        FailingRenames counting(1000);
        InstallOperations install(&counting);
        ASSERT_TRUE(document->Save());
        renames = counting.Count();
        EXPECT_FALSE(fs::exists(folder.Path() / "Reel" / "Scene-002"));
    }
    ASSERT_EQ(renames, 3);

    for (int failAt = 1; failAt <= renames; ++failAt) {
        fs::remove_all(folder.Path() / "Reel");
        auto document = MakeProjectWithPendingChanges();
        const auto before = Snapshot(folder.Path() / "Reel");
        FailingRenames failing(failAt);
        InstallOperations install(&failing);
        messages.messages.clear();
        const bool saved = document->Save();
        if (failAt == renames) {
            // The folder stays; everything else is saved and no temporary remains.
            EXPECT_TRUE(saved);
            EXPECT_TRUE(fs::is_directory(folder.Path() / "Reel" / "Scene-002"));
            for (const auto& [name, content] : Snapshot(folder.Path() / "Reel")) {
                EXPECT_EQ(name.find(".new"), std::string::npos) << name;
                EXPECT_EQ(name.find(".deleted"), std::string::npos) << name;
            }
            continue;
        }
        EXPECT_FALSE(saved) << "rename " << failAt;
        EXPECT_EQ(Snapshot(folder.Path() / "Reel"), before) << "rename " << failAt;
        EXPECT_TRUE(document->IsModified());
        ASSERT_FALSE(messages.messages.empty());
        EXPECT_EQ(messages.messages.back().text.rfind(u"Error while saving the animation set.\n\n", 0), 0u);
    }
}

TEST_F(DocumentTest, SecondSaveWithoutChangesTouchesNothing) {
    auto document = MakeProjectWithPendingChanges();
    ASSERT_TRUE(document->Save());
    const fs::path project = folder.Path() / "Reel" / "Reel.qmp";
    const auto stamp = fs::last_write_time(project);
    const auto before = Snapshot(folder.Path() / "Reel");
    FailingRenames counting(1000);
    InstallOperations install(&counting);
    EXPECT_TRUE(document->Save());
    EXPECT_EQ(counting.Count(), 0);
    EXPECT_EQ(fs::last_write_time(project), stamp);
    EXPECT_EQ(Snapshot(folder.Path() / "Reel"), before);
}

TEST_F(DocumentTest, SaveAsCopiesTheFolderAndRefusesItsOwnInside) {
    auto document = MakeProjectWithPendingChanges();
    ASSERT_TRUE(document->Save());
    fs::create_directories(folder.Path() / "Reel" / "Sound");
    std::ofstream(folder.Path() / "Reel" / "Sound" / "take.wav") << "RIFF";

    // Into the project folder itself, or below it: refused, nothing changes.
    messages.messages.clear();
    EXPECT_FALSE(document->SaveAsTo(UT_FromUtf8((folder.Path() / "Reel").string()), u"Inner"));
    ASSERT_EQ(messages.messages.size(), 1u);
    EXPECT_EQ(messages.messages[0].text.rfind(u"Unable to save in ", 0), 0u);
    EXPECT_FALSE(fs::exists(folder.Path() / "Reel" / "Inner"));
    EXPECT_EQ(document->Set()->Name(), u"Reel");

    ASSERT_TRUE(document->SaveAsTo(folder.Wide(), u"Copy"));
    const fs::path copy = folder.Path() / "Copy";
    EXPECT_TRUE(fs::is_regular_file(copy / "Copy.qmp"));
    EXPECT_FALSE(fs::exists(copy / "Reel.qmp"));
    EXPECT_TRUE(fs::is_regular_file(copy / "Sound" / "take.wav"));
    EXPECT_TRUE(fs::is_directory(copy / "Scene-001"));
    EXPECT_TRUE(fs::is_regular_file(folder.Path() / "Reel" / "Reel.qmp")); // the original stays
    EXPECT_EQ(document->Set()->Name(), u"Copy");
    EXPECT_FALSE(document->IsModified());

    CSketchrunDoc reopened(host);
    ASSERT_TRUE(reopened.OpenPath(UT_FilePath(copy / "Copy.qmp")));
    EXPECT_EQ(reopened.Set()->Sequence().size(), 1u);
}

TEST_F(DocumentTest, CancellingTheCopyOfSaveAsLeavesTheProjectAsItWas) {
    auto document = MakeProjectWithPendingChanges();
    ASSERT_TRUE(document->Save());
    fs::create_directories(folder.Path() / "Reel" / "Sound");
    std::ofstream(folder.Path() / "Reel" / "Sound" / "take.wav") << "RIFF";
    const auto before = Snapshot(folder.Path() / "Reel");

    host.cancelProgressAfter = 2;
    messages.messages.clear();
    EXPECT_FALSE(document->SaveAsTo(folder.Wide(), u"Copy"));
    ASSERT_EQ(host.progressTitles.size(), 1u);
    EXPECT_TRUE(messages.messages.empty()); // a cancel is no failure
    EXPECT_FALSE(fs::exists(folder.Path() / "Copy"));
    EXPECT_EQ(Snapshot(folder.Path() / "Reel"), before);
    EXPECT_EQ(document->Set()->Name(), u"Reel");
    EXPECT_EQ(document->ProjectFolder().Path(), folder.Path() / "Reel");

    // Into a folder that was there already: the cancel leaves that folder alone.
    fs::create_directories(folder.Path() / "Kept");
    EXPECT_FALSE(document->SaveAsTo(folder.Wide(), u"Kept"));
    EXPECT_TRUE(fs::is_directory(folder.Path() / "Kept"));
}

TEST_F(DocumentTest, OpenTakesTheNameFromTheFileAndRejectsDamage) {
    auto document = MakeProjectWithPendingChanges();
    ASSERT_TRUE(document->Save());
    const fs::path project = folder.Path() / "Reel" / "Reel.qmp";
    fs::rename(project, folder.Path() / "Reel" / "Renamed.qmp");

    CSketchrunDoc reopened(host);
    ASSERT_TRUE(reopened.OpenPath(UT_FilePath(folder.Path() / "Reel" / "Renamed")));
    EXPECT_EQ(reopened.Set()->Name(), u"Renamed");
    EXPECT_FALSE(reopened.IsModified());
    ASSERT_NE(reopened.Set()->CurrentScene(), nullptr);
    EXPECT_EQ(reopened.Set()->CurrentScene()->SceneId(), 1u);

    // A wrong kind in the header.
    std::ifstream in(folder.Path() / "Reel" / "Renamed.qmp", std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(in)), {});
    bytes[28] = 1;
    std::ofstream(folder.Path() / "Reel" / "Kind.qmp", std::ios::binary) << bytes;
    CSketchrunDoc wrongKind(host);
    messages.messages.clear();
    EXPECT_FALSE(wrongKind.OpenPath(UT_FilePath(folder.Path() / "Reel" / "Kind.qmp")));
    ASSERT_EQ(messages.messages.size(), 1u);
    EXPECT_EQ(messages.messages[0].text, UT_FromUtf8((folder.Path() / "Reel" / "Kind.qmp").string()) +
                                             u"  is not a valid Quilmoor Studio file.");
}

TEST_F(DocumentTest, OpeningReadsNoDrawingFileAndSavingWritesOnlyChangedOnes) {
    auto document = MakeProjectWithPendingChanges();
    auto* level = static_cast<AS_VectorGraphicLevelObj*>(document->Set()->FindScene(1)->FindElement(2004));
    ASSERT_NE(level, nullptr);
    for (const char16_t* name : {u"1", u"2"}) {
        level->CommonDrawing()
            ->FindDrawing(level->CommonDrawing()->AddDrawing(name))
            ->SetDrawing(MarkedDrawing(name[0]));
    }
    ASSERT_TRUE(document->Save());
    const fs::path drawings = folder.Path() / "Reel" / "Scene-001" / "Drawing";
    ASSERT_TRUE(fs::is_regular_file(drawings / "Drawing-1.qmd"));
    ASSERT_TRUE(fs::is_regular_file(drawings / "Drawing-2.qmd"));

    // With the drawing files gone, the project still opens cleanly: nothing reads them
    // until a drawing is wanted, and only then is the loss reported.
    fs::remove(drawings / "Drawing-1.qmd");
    const std::string second = [&] {
        std::ifstream in(drawings / "Drawing-2.qmd", std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }();
    fs::remove(drawings / "Drawing-2.qmd");
    messages.messages.clear();
    CSketchrunDoc reopened(host);
    ASSERT_TRUE(reopened.OpenPath(UT_FilePath(folder.Path() / "Reel" / "Reel.qmp")));
    EXPECT_TRUE(messages.messages.empty());
    auto* opened = static_cast<AS_VectorGraphicLevelObj*>(reopened.Set()->FindScene(1)->FindElement(2004));
    ASSERT_NE(opened, nullptr);
    AS_DopeSheetDrawingObj* one = opened->CommonDrawing()->FindDrawing(1001);
    AS_DopeSheetDrawingObj* two = opened->CommonDrawing()->FindDrawing(1002);
    ASSERT_NE(one, nullptr);
    ASSERT_NE(two, nullptr);
    EXPECT_TRUE(one->HasFile() && two->HasFile());
    EXPECT_FALSE(one->HasDrawing() || two->HasDrawing());

    // The second drawing comes back and is used; a forced save rewrites the project but
    // neither drawing: one was never loaded, the other is unchanged.
    std::ofstream(drawings / "Drawing-2.qmd", std::ios::binary) << second;
    ASSERT_NE(two->GetDrawing(), nullptr);
    const auto stamp = fs::last_write_time(drawings / "Drawing-2.qmd");
    ASSERT_TRUE(reopened.Save(false, true));
    EXPECT_FALSE(fs::exists(drawings / "Drawing-1.qmd"));
    EXPECT_EQ(fs::last_write_time(drawings / "Drawing-2.qmd"), stamp);
    EXPECT_TRUE(messages.messages.empty());
}

} // namespace
