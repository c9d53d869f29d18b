// The commands on elements and on their rows: each change, what observers hear of it,
// and the state that undo and redo bring back, also across a save that erased files.

#include "DrawingTestUtil.h"
#include "FakeHosts.h"
#include "SetTestUtil.h"
#include "animationset/AS_CameraLevelObj.h"
#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/AS_MediaLinkLevelObj.h"
#include "animationset/AS_MediaManager.h"
#include "animationset/AS_PegLevelObj.h"
#include "animationset/CSketchrunDoc.h"
#include "animationset/DC_CloneLevelCommand.h"
#include "animationset/DC_CreateLevelCommand.h"
#include "animationset/DC_ModifyElementNoteCommand.h"
#include "animationset/DC_RemoveLevelCommand.h"
#include "animationset/DC_RenameLevelCommand.h"
#include "animationset/DC_ReparentLevelCommand.h"
#include "animationset/DC_SwitchLevelCommand.h"
#include "animationset/DC_UpdateElementCommand.h"
#include "core/DB_FileContainer.h"
#include "core/UT_CommandHistory.h"

#include <fstream>
#include <functional>

namespace fs = std::filesystem;

namespace {

// The default scene: default camera 2001, camera 2002, peg 2003, drawing 2004.
constexpr uint32_t kCamera = 2002, kPeg = 2003, kDrawing = 2004;

std::vector<uint8_t> Written(AS_Placement placement) {
    DB_MemFile file;
    DB_Archive archive(&file, false);
    placement.Write(archive);
    return {file.Data(), file.Data() + file.Size()};
}

std::vector<std::pair<uint32_t, int32_t>> Tree(const AS_CompositionOrder& order) {
    std::vector<std::pair<uint32_t, int32_t>> rows;
    for (const AS_CompositionRow& row : order.Rows())
        rows.emplace_back(row.id, row.depth);
    return rows;
}

class ElementCommandsTest : public SetCommandTest {
protected:
    void SetUp() override {
        SetCommandTest::SetUp();
        set = MakeNewSet();
        scene = set->Sequence().front();
    }
    bool Run(DC_Command& command) { return command.Run(u"Test"); }
    AS_DopeSheetLevelObj* Element(uint32_t id) const {
        return scene->IsRemoved(id) ? nullptr : scene->FindElement(id);
    }
    AS_Placement& PlacementOf(uint32_t id) const {
        return static_cast<AS_BaseLevelElement*>(scene->FindElement(id))->Placement();
    }

    std::unique_ptr<CAnimationSetObj> set;
    CDopeSheetObj* scene = nullptr;
};

TEST_F(ElementCommandsTest, CreatedElementsOfEverySortComeBackWithTheirIds) {
    RecordingObserver heard(*set);
    const SetState start = StateOf(*set);
    DC_CreateLevelCommand arms(*set, 1, 2, u"Drawing", DC_CreateLevelCommand::kVectorDrawing);
    ASSERT_TRUE(Run(arms));
    EXPECT_EQ(arms.CreatedIds(), (std::vector<uint32_t>{2005, 2006}));
    EXPECT_EQ(Element(2005)->GetName(), u"Drawing 2");
    EXPECT_EQ(Element(2006)->GetName(), u"Drawing 3");
    // The Drawing order appends, the Sceneplanning order puts new rows on top.
    EXPECT_EQ(scene->DrawingOrder().GetLevelId(2), 2006u);
    EXPECT_EQ(scene->SceneplanningOrder().GetLevelId(0), 2006u);

    const struct {
        uint32_t code;
        uint32_t kind;
        bool inDrawingOrder;
    } sorts[] = {{DC_CreateLevelCommand::kBitmap, kLevelImage, true},
                 {DC_CreateLevelCommand::kSound, kLevelSound, true},
                 {DC_CreateLevelCommand::kPeg, kLevelPeg, false},
                 {DC_CreateLevelCommand::kCamera, kLevelCamera, false},
                 {DC_CreateLevelCommand::kMediaLink, kLevelMedia, true}};
    for (const auto& sort : sorts) {
        DC_CreateLevelCommand create(*set, 1, 1, u"E", sort.code, 24);
        ASSERT_TRUE(Run(create));
        const uint32_t id = create.CreatedIds().front();
        EXPECT_EQ(Element(id)->GetKind(), sort.kind);
        EXPECT_EQ(scene->DrawingOrder().FindRow(id) >= 0, sort.inDrawingOrder);
        // A new peg does not count for the frame range.
        EXPECT_EQ(scene->SceneplanningOrder().IsEnabled(scene->SceneplanningOrder().FindRow(id)),
                  sort.kind != kLevelPeg);
    }
    auto* camera = static_cast<AS_CameraLevelObj*>(Element(2010));
    EXPECT_EQ(camera->Width(), 500.0);
    EXPECT_EQ(camera->GetDuration(), 24u);
    EXPECT_EQ(static_cast<AS_PegLevelObj*>(Element(2009))->CommonPeg()->Duration(), 24u);

    const SetState end = StateOf(*set);
    heard.heard.clear();
    while (set->History().CanUndo())
        set->History().Undo();
    EXPECT_EQ(StateOf(*set).body, start.body);
    EXPECT_EQ(heard.Codes().back(), kElementRemoved);
    while (set->History().CanRedo())
        set->History().Redo();
    EXPECT_EQ(StateOf(*set).body, end.body);
    EXPECT_EQ(heard.Codes().back(), kElementsAdded);

    // Unknown sorts and names that a file may not have make nothing.
    ScriptedMessages messages;
    UT_MessageHandlerScope scope(&messages);
    DC_CreateLevelCommand unknown(*set, 1, 1, u"X", 6);
    EXPECT_FALSE(Run(unknown));
    DC_CreateLevelCommand escaping(*set, 1, 1, u"../x", DC_CreateLevelCommand::kVectorDrawing);
    EXPECT_FALSE(Run(escaping));
    ASSERT_EQ(messages.messages.size(), 1u);
    EXPECT_EQ(messages.messages[0].text, u"Unable to create the level(s) using the given name.");
    EXPECT_EQ(scene->FindElementByName(u"../x"), nullptr);
}

TEST_F(ElementCommandsTest, RemovedClonesComeBackSharingTheirDrawingsAfterASave) {
    TempFolder folder("element-commands");
    ScriptedMessages messages;
    UT_MessageHandlerScope scope(&messages);
    FakeAppHost host;
    auto* drawing = static_cast<AS_VectorGraphicLevelObj*>(Element(kDrawing));
    drawing->CommonDrawing()->AddDrawingWithId(1001, u"1")->SetDrawing(MarkedDrawing('d'));
    drawing->Cells() = {{1001, u""}};
    set->SetName(u"Reel");
    set->SetForcedDirty(true);
    CSketchrunDoc document(host);
    document.Attach(std::move(set), UT_FilePath(folder.Path() / "Reel"));
    CAnimationSetObj& attached = *document.Set();
    ASSERT_TRUE(document.Save());
    const fs::path file = folder.Path() / "Reel" / "Scene-001" / "Drawing" / "Drawing-1.qmd";
    ASSERT_TRUE(fs::exists(file));

    DC_CloneLevelCommand clone(attached, 1, kDrawing);
    ASSERT_TRUE(Run(clone));
    const uint32_t cloneId = clone.CloneId();
    EXPECT_EQ(Element(kDrawing)->GetDisplayName(), u"Drawing(0)");
    EXPECT_EQ(Element(cloneId)->GetDisplayName(), u"Drawing(1)");
    EXPECT_EQ(static_cast<AS_DrawingLevelObj*>(Element(cloneId))->Cells(), drawing->Cells());

    // The clone leaves the drawings behind; the original then takes them along.
    RecordingObserver heard(attached);
    std::vector<std::vector<uint32_t>> lists;
    struct ListObserver : AS_DopeSheetObserverInterface {
        std::vector<std::vector<uint32_t>>* lists;
        void DopeSheetChanged(const void*, const AS_DopeSheetUpdateData& data) override {
            if (data.code == kElementsAboutToBeRemoved)
                lists->push_back(data.elements);
        }
        void DopeSheetObservableGone(const void*) override {}
    } listener;
    listener.lists = &lists;
    attached.NotifProxy().Attach(&listener);
    DC_RemoveLevelCommand removeClone(attached, 1, {cloneId});
    ASSERT_TRUE(Run(removeClone));
    DC_RemoveLevelCommand removeOriginal(attached, 1, {kDrawing});
    ASSERT_TRUE(Run(removeOriginal));
    attached.NotifProxy().Detach(&listener);
    EXPECT_EQ(lists, (std::vector<std::vector<uint32_t>>{{}, {kDrawing}}));
    EXPECT_EQ(heard.Codes(), (std::vector<uint32_t>{kElementsAboutToBeRemoved, kElementRemoved,
                                                    kElementsAboutToBeRemoved, kElementRemoved}));
    EXPECT_TRUE(fs::exists(file));
    ASSERT_TRUE(document.Save());
    EXPECT_FALSE(fs::exists(file));

    // Back from the snapshots: one common half for both, the drawing in memory until the
    // next save writes its file again.
    attached.History().Undo();
    attached.History().Undo();
    auto* original = static_cast<AS_DrawingLevelObj*>(Element(kDrawing));
    auto* twin = static_cast<AS_DrawingLevelObj*>(Element(cloneId));
    ASSERT_NE(original, nullptr);
    ASSERT_NE(twin, nullptr);
    EXPECT_EQ(original->Common(), twin->Common());
    EXPECT_EQ(twin->GetDisplayName(), u"Drawing(1)");
    EXPECT_EQ(MarkerOf(original->CommonDrawing()->FindDrawing(1001)->GetDrawing()), 'd');
    EXPECT_EQ(scene->LivePosition(kDrawing), 2);
    ASSERT_TRUE(document.Save());
    EXPECT_TRUE(fs::exists(file));
    EXPECT_TRUE(messages.messages.empty());
}

TEST_F(ElementCommandsTest, RemovingAParentAndTheCurrentCameraIsUndoneWhole) {
    DC_ReparentLevelCommand hang(*set, 1, kDrawing, kPeg);
    ASSERT_TRUE(Run(hang));
    const auto tree = Tree(scene->SceneplanningOrder());
    EXPECT_EQ(scene->SceneplanningOrder().GetParentOfLevel(kDrawing),
              scene->SceneplanningOrder().FindRow(kPeg));
    ASSERT_EQ(scene->CurrentCamera()->GetId(), kCamera);
    const SetState before = StateOf(*set);

    const AS_DopeSheetLevelObj* peg = Element(kPeg);
    DC_RemoveLevelCommand remove(*set, 1, {kPeg, kCamera});
    ASSERT_TRUE(Run(remove));
    EXPECT_EQ(scene->CurrentCamera(), scene->DefaultCamera());
    // The peg's row went with the rows under it.
    EXPECT_EQ(scene->SceneplanningOrder().FindRow(kDrawing), -1);
    EXPECT_EQ(scene->DrawingOrder().FindRow(kDrawing), 0);

    // No save purged them: the same objects come back, with nothing to read or write.
    set->History().Undo();
    EXPECT_EQ(Element(kPeg), peg);
    EXPECT_EQ(Tree(scene->SceneplanningOrder()), tree);
    EXPECT_EQ(scene->CurrentCamera()->GetId(), kCamera);
    EXPECT_EQ(StateOf(*set).body, before.body);

    // An element that is not there, or named twice, is not removed.
    DC_RemoveLevelCommand twice(*set, 1, {kPeg, kPeg});
    EXPECT_FALSE(Run(twice));
    EXPECT_NE(Element(kPeg), nullptr);
}

TEST_F(ElementCommandsTest, EachFieldCodeAndItsUndo) {
    using Cmd = DC_UpdateElementCommand;
    struct Case {
        uint32_t field;
        Cmd::Value value;
        std::function<void(AS_Placement&)> expect;
    };
    auto point = [](double x, double y, double z) {
        Cmd::Value v;
        v.point = C3DPoint(x, y, z);
        return v;
    };
    auto number = [](double n) {
        Cmd::Value v;
        v.number = n;
        return v;
    };
    const std::vector<Case> cases = {
        {Cmd::kOffset, point(1, 2, 3), [](AS_Placement& p) { p.offset = C3DPoint(1, 2, 3); }},
        {Cmd::kStartFrame, number(7), [](AS_Placement& p) { p.startFrame = 7; }},
        {Cmd::kRotation, number(45), [](AS_Placement& p) { p.rotation = 45; }},
        {Cmd::kRotationPivotY, number(5), [](AS_Placement& p) { p.rotationPivot.y = 5; }},
        {Cmd::kRotationPivotX, number(6), [](AS_Placement& p) { p.rotationPivot.x = 6; }},
        {Cmd::kRotationPivotZ, number(7), [](AS_Placement& p) { p.rotationPivot.z = 7; }},
        {Cmd::kRotationPivot, point(8, 9, 10), [](AS_Placement& p) { p.rotationPivot = C3DPoint(8, 9, 10); }},
        {Cmd::kScalePivotY, number(5), [](AS_Placement& p) { p.scalePivot.y = 5; }},
        {Cmd::kScalePivotX, number(6), [](AS_Placement& p) { p.scalePivot.x = 6; }},
        {Cmd::kScalePivotZ, number(7), [](AS_Placement& p) { p.scalePivot.z = 7; }},
        {Cmd::kScalePivot, point(8, 9, 10), [](AS_Placement& p) { p.scalePivot = C3DPoint(8, 9, 10); }},
        {Cmd::kFourthPoint, point(1, 1, 1), [](AS_Placement& p) { p.fourthPoint = C3DPoint(1, 1, 1); }},
        {Cmd::kFlipVertical, {}, [](AS_Placement& p) { p.verticalScale = 2; }},
        {Cmd::kFlipHorizontal, {}, [](AS_Placement& p) { p.horizontalScale = -0.5; }},
        // Keep proportions is on: the other scale follows with its own sign.
        {Cmd::kVerticalScale, number(-4),
         [](AS_Placement& p) {
             p.verticalScale = -4;
             p.horizontalScale = 4;
         }},
        {Cmd::kHorizontalScale, number(3),
         [](AS_Placement& p) {
             p.horizontalScale = 3;
             p.verticalScale = -3;
         }},
        {Cmd::kElementType, number(1), [](AS_Placement& p) { p.elementType = 1; }},
        {Cmd::kKeepProportions, number(0), [](AS_Placement& p) { p.keepProportions = false; }},
    };
    for (const Case& c : cases) {
        AS_Placement& placement = PlacementOf(kDrawing);
        placement = AS_Placement();
        placement.verticalScale = -2.0;
        placement.horizontalScale = 0.5;
        placement.keepProportions = true;
        const AS_Placement original = placement;
        AS_Placement expected = placement;
        c.expect(expected);
        RecordingObserver heard(*set);
        Cmd update(*set, 1, kDrawing, c.field, c.value);
        ASSERT_TRUE(Run(update)) << c.field;
        EXPECT_EQ(Written(placement), Written(expected)) << c.field;
        EXPECT_EQ(heard.Codes(),
                  (std::vector<uint32_t>{c.field == Cmd::kKeepProportions ? kProportionalScaling
                                                                          : kPlacementValuesChanged}))
            << c.field;
        set->History().Undo();
        EXPECT_EQ(Written(PlacementOf(kDrawing)), Written(original)) << c.field;
        set->History().Redo();
        EXPECT_EQ(Written(PlacementOf(kDrawing)), Written(expected)) << c.field;
    }

    // Turning keep proportions on makes the horizontal scale follow the vertical one.
    AS_Placement& placement = PlacementOf(kDrawing);
    placement.keepProportions = false;
    placement.verticalScale = -2.0;
    placement.horizontalScale = 0.0;
    ASSERT_TRUE(Run(*std::make_unique<Cmd>(*set, 1, kDrawing, Cmd::kKeepProportions, number(1))));
    EXPECT_EQ(placement.horizontalScale, 2.0);

    // The name goes through the scene's check; a refused name changes nothing.
    Cmd::Value name;
    name.name = u"Peg";
    ASSERT_TRUE(Run(*std::make_unique<Cmd>(*set, 1, kDrawing, Cmd::kElementName, name)));
    EXPECT_EQ(Element(kDrawing)->GetName(), u"Drawing");
    name.name = u"Arm";
    ASSERT_TRUE(Run(*std::make_unique<Cmd>(*set, 1, kDrawing, Cmd::kElementName, name)));
    EXPECT_EQ(Element(kDrawing)->GetName(), u"Arm");
    set->History().Undo();
    EXPECT_EQ(Element(kDrawing)->GetName(), u"Drawing");

    // Codes that do not exist, element types beyond the list and elements without a
    // placement are refused.
    EXPECT_FALSE(Run(*std::make_unique<Cmd>(*set, 1, kDrawing, 19, number(0))));
    EXPECT_FALSE(Run(*std::make_unique<Cmd>(*set, 1, kDrawing, Cmd::kElementType, number(3))));
    EXPECT_FALSE(Run(*std::make_unique<Cmd>(*set, 1, kPeg, Cmd::kRotation, number(3))));
}

TEST_F(ElementCommandsTest, StartFrameOfAMediaElementMovesItsRuns) {
    DC_CreateLevelCommand create(*set, 1, 1, u"Media", DC_CreateLevelCommand::kMediaLink);
    ASSERT_TRUE(Run(create));
    const uint32_t id = create.CreatedIds().front();
    auto* media = static_cast<AS_MediaLinkLevelObj*>(Element(id));
    auto walk = std::make_shared<AS_MediaObj>(UT_UniqueId(4), u"Walk");
    ASSERT_TRUE(media->SetCells({{0, 8, 0, walk}}));
    DC_UpdateElementCommand::Value value;
    value.number = 4;
    DC_UpdateElementCommand later(*set, 1, id, DC_UpdateElementCommand::kStartFrame, value);
    ASSERT_TRUE(Run(later));
    EXPECT_EQ(media->Cells().front().start, 3u);
    EXPECT_EQ(media->Cells().front().end, 11u);
    set->History().Undo();
    EXPECT_EQ(media->Cells().front().start, 0u);
    EXPECT_EQ(media->Placement().startFrame, 1u);
    // Start frame 0 would put the run before the first frame.
    value.number = 0;
    EXPECT_FALSE(Run(*std::make_unique<DC_UpdateElementCommand>(
        *set, 1, id, DC_UpdateElementCommand::kStartFrame, value)));
}

TEST_F(ElementCommandsTest, RenameAndNoteGoBack) {
    RecordingObserver heard(*set);
    DC_RenameLevelCommand rename(*set, 1, kPeg, u"Root");
    ASSERT_TRUE(Run(rename));
    DC_ModifyElementNoteCommand note(*set, 1, kPeg, u"moves everything");
    ASSERT_TRUE(Run(note));
    EXPECT_EQ(Element(kPeg)->GetName(), u"Root");
    EXPECT_EQ(Element(kPeg)->GetNote(), u"moves everything");
    set->History().Undo();
    set->History().Undo();
    EXPECT_EQ(Element(kPeg)->GetName(), u"Peg");
    EXPECT_EQ(Element(kPeg)->GetNote(), u"");
    EXPECT_EQ(heard.Codes(), (std::vector<uint32_t>{kElementRenamed, kElementNoteChanged, kElementNoteChanged,
                                                    kElementRenamed}));

    // A parent below itself, or one that is not there, is refused.
    EXPECT_FALSE(Run(*std::make_unique<DC_ReparentLevelCommand>(*set, 1, kPeg, kPeg)));
    EXPECT_FALSE(Run(*std::make_unique<DC_ReparentLevelCommand>(*set, 1, kPeg, 4242)));
}

TEST_F(ElementCommandsTest, UndoingANewElementLeavesTheRowsItCameAboveAlone) {
    // A child moved to the top keeps its depth; a new row above it becomes its parent.
    ASSERT_TRUE(Run(*std::make_unique<DC_ReparentLevelCommand>(*set, 1, kDrawing, kPeg)));
    ASSERT_TRUE(Run(*std::make_unique<DC_SwitchLevelCommand>(
        *set, 1, 1, std::vector<DC_SwitchLevelCommand::Move>{{kDrawing, AS_kInvalidId, true}})));
    const auto rows = Tree(scene->SceneplanningOrder());
    ASSERT_EQ(rows.front(), std::make_pair(kDrawing, 2));
    DC_CreateLevelCommand create(*set, 1, 1, u"Arm", DC_CreateLevelCommand::kVectorDrawing);
    ASSERT_TRUE(Run(create));
    DC_CloneLevelCommand clone(*set, 1, kDrawing);
    ASSERT_TRUE(Run(clone));
    const auto grown = Tree(scene->SceneplanningOrder());
    set->History().Undo();
    set->History().Undo();
    EXPECT_EQ(Tree(scene->SceneplanningOrder()), rows);
    set->History().Redo();
    set->History().Redo();
    EXPECT_EQ(Tree(scene->SceneplanningOrder()), grown);
}

} // namespace
