// A project with many drawings: opening it reads no drawing file, a drawing is read
// when it is first used, and a save writes the project file and the drawings that
// changed, nothing else.

#include "DrawingTestUtil.h"
#include "FakeHosts.h"
#include "RegisterAll.h"
#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"
#include "animationset/CSketchrunDoc.h"
#include "core/DB_Archive.h"
#include "core/DB_FileContainer.h"
#include "core/DB_MemFile.h"
#include "core/UT_FileOperations.h"

#include <fstream>
#include <gtest/gtest.h>
#include <set>

namespace fs = std::filesystem;

namespace {

constexpr int kDrawings = 60;

// The marker of the drawing of that number in one generation of the files.
double Marker(int generation, int number) {
    return generation * 1000 + number;
}

// Writes down where the save's renames put files: every file that a save writes
// reaches its place through one (the file it replaces first steps aside to a name
// ending in ".deleted").
class RecordingRenames : public UT_FileOperations {
public:
    int Rename(const UT_FilePath& from, const UT_FilePath& to) override {
        const std::string name = to.Path().filename().string();
        if (!name.ends_with(".deleted"))
            placed.insert(name);
        return UT_FileOperations::Rename(from, to);
    }
    std::set<std::string> placed;
};

class LazyDrawingsTest : public ::testing::Test {
protected:
    void SetUp() override { RegisterAllTypesForTests(); }

    fs::path DrawingFile(int number) const {
        return folder.Path() / "Reel" / "Scene-001" / "Drawing" /
               ("Drawing-" + std::to_string(number) + ".qmd");
    }
    AS_CommonDrawingLevel& Drawings(CSketchrunDoc& document) const {
        auto* level = static_cast<AS_DrawingLevelObj*>(document.Set()->Sequence().front()->FindElement(2004));
        return *level->CommonDrawing();
    }

    TempFolder folder{"lazy"};
    ScriptedMessages messages;
    UT_MessageHandlerScope scope{&messages};
    FakeAppHost host;
};

TEST_F(LazyDrawingsTest, DrawingsAreReadOnFirstUseAndOnlyChangedOnesAreWritten) {
    {
        auto set = std::make_unique<CAnimationSetObj>();
        set->InitialiseNew(12, 500, 375);
        set->SetName(u"Reel");
        set->SetForcedDirty(true);
        auto* level = static_cast<AS_DrawingLevelObj*>(set->Sequence().front()->FindElement(2004));
        for (int i = 1; i <= kDrawings; ++i) {
            const uint32_t id = level->CommonDrawing()->AddDrawing(UT_FromUtf8(std::to_string(i)));
            level->CommonDrawing()->FindDrawing(id)->SetDrawing(MarkedDrawing(Marker(1, i)));
            level->Cells().push_back({id, u""});
        }
        CSketchrunDoc document(host);
        document.Attach(std::move(set), UT_FilePath(folder.Path() / "Reel"));
        ASSERT_TRUE(document.Save());
    }
    for (int i = 1; i <= kDrawings; ++i)
        ASSERT_TRUE(fs::exists(DrawingFile(i))) << i;

    CSketchrunDoc document(host);
    ASSERT_TRUE(document.OpenPath(UT_FilePath(folder.Path() / "Reel" / "Reel.qmp")));
    AS_CommonDrawingLevel& drawings = Drawings(document);
    ASSERT_EQ(drawings.DrawingCount(), static_cast<size_t>(kDrawings));
    for (uint32_t id : drawings.GetDrawingIds())
        EXPECT_FALSE(drawings.FindDrawing(id)->HasDrawing());

    // The files change behind the open project: what a drawing shows when first used is
    // what its file holds then, so nothing was read before.
    for (int i = 1; i <= kDrawings; ++i) {
        const std::vector<uint8_t> bytes = MarkedDrawingFile(Marker(2, i));
        std::ofstream(DrawingFile(i), std::ios::binary | std::ios::trunc)
            .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    }
    AS_DopeSheetDrawingObj* seventh = drawings.FindDrawingByName(u"7");
    ASSERT_NE(seventh->GetDrawing(), nullptr);
    EXPECT_EQ(MarkerOf(seventh->GetDrawing()), Marker(2, 7));
    for (uint32_t id : drawings.GetDrawingIds())
        EXPECT_EQ(drawings.FindDrawing(id)->HasDrawing(), drawings.FindDrawing(id) == seventh);

    // Read but unchanged, the drawing is not written again; changed, it is, with the
    // project file and nothing else.
    drawings.FindDrawingByName(u"12")->SetDrawing(MarkedDrawing(Marker(3, 7)));
    RecordingRenames renames;
    UT_FileOperations* previous = UT_FileOperations::SetCurrent(&renames);
    const bool saved = document.Save(false, true);
    UT_FileOperations::SetCurrent(previous);
    ASSERT_TRUE(saved);
    EXPECT_EQ(renames.placed, (std::set<std::string>{"Reel.qmp", "Drawing-12.qmd"}));
    EXPECT_EQ(MarkerOfFile(UT_FilePath(DrawingFile(12))), Marker(3, 7));
    EXPECT_TRUE(messages.messages.empty());
}

} // namespace
