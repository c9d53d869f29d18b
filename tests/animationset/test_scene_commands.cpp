// The commands on scenes and on the set's properties, what observers hear of them, the
// dirty state of the set, and the scene-planning settings that follow the current scene.

#include "DrawingTestUtil.h"
#include "FakeHosts.h"
#include "SetTestUtil.h"
#include "animationset/AS_CameraLevelObj.h"
#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/CSketchrunDoc.h"
#include "animationset/DC_AddSceneCommand.h"
#include "animationset/DC_ChangeASPropertiesCommand.h"
#include "animationset/DC_ChangeSceneProperties.h"
#include "animationset/DC_DeleteSceneCommand.h"
#include "animationset/DC_ReorderScene.h"
#include "animationset/DC_SetSceneVisibleCommand.h"
#include "animationset/DC_ToggleSceneVisibility.h"
#include "animationset/SPO_SettingsMgr.h"
#include "core/DB_FileContainer.h"
#include "core/UT_CommandHistory.h"

namespace fs = std::filesystem;

namespace {

using Heard = RecordingObserver::Heard;
using Said = std::vector<std::pair<uint32_t, uint32_t>>;

std::vector<uint32_t> SequenceIds(const CAnimationSetObj& set) {
    std::vector<uint32_t> ids;
    for (const CDopeSheetObj* scene : set.Sequence())
        ids.push_back(scene->SceneId());
    return ids;
}

AS_DrawingLevelObj* DrawingElement(CDopeSheetObj& scene) {
    for (const auto& entry : scene.Levels())
        if (auto* drawing = dynamic_cast<AS_DrawingLevelObj*>(entry.level.get()))
            return drawing;
    return nullptr;
}

class SceneCommandsTest : public SetCommandTest {
protected:
    void SetUp() override {
        SetCommandTest::SetUp();
        set = MakeNewSet();
    }
    // Adds scenes named "S2", "S3" and so on through the history, which it then empties.
    void AddScenes(int count) {
        for (int i = 0; i < count; ++i) {
            const UT_WString name = u"S" + UT_FromUtf8(std::to_string(set->Sequence().size() + 1));
            ASSERT_TRUE(DC_AddSceneCommand::NewScene(*set, name, set->Sequence().size())->Run(u"Add Scene"));
        }
        set->History().Clear();
        set->MarkSaved();
    }
    // The inverse the last command left on the undo list.
    template <class T> T* LastInverse() {
        return dynamic_cast<T*>(set->History().UndoList().back().command.Get());
    }

    std::unique_ptr<CAnimationSetObj> set;
};

TEST_F(SceneCommandsTest, AddAndDeleteAreHeardInOrderThroughUndoAndRedo) {
    RecordingObserver observer(*set);
    ASSERT_TRUE(DC_AddSceneCommand::NewScene(*set, u"", 5)->Run(DC_AddSceneCommand::kName));
    ASSERT_EQ(SequenceIds(*set), (std::vector<uint32_t>{1, 2}));
    EXPECT_EQ(set->Sequence()[1]->Name(), u"Scene-2");
    EXPECT_EQ(observer.CodesAndScenes(), (Said{{kSceneAdded, 2}}));

    // Deleting the current scene, the last one, makes the one before it current.
    set->SetCurrentScene(set->Sequence()[1], true);
    observer.heard.clear();
    DC_DeleteSceneCommand remove(*set, 2);
    ASSERT_TRUE(remove.Run(DC_DeleteSceneCommand::kName));
    EXPECT_EQ(SequenceIds(*set), std::vector<uint32_t>{1});
    EXPECT_EQ(set->CurrentScene()->SceneId(), 1u);
    EXPECT_EQ(observer.CodesAndScenes(),
              (Said{{kSceneAboutToBeDeleted, 2}, {kSceneDeleted, 2}, {kSceneActivated, 1}}));
    auto* back = LastInverse<DC_AddSceneCommand>();
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->Index(), 1u);

    observer.heard.clear();
    set->History().Undo();
    EXPECT_EQ(SequenceIds(*set), (std::vector<uint32_t>{1, 2}));
    EXPECT_EQ(observer.CodesAndScenes(), (Said{{kSceneAdded, 2}}));

    // The redo first goes back to the scene the deletion was made in.
    observer.heard.clear();
    set->History().Redo();
    EXPECT_EQ(observer.Codes(), (std::vector<uint32_t>{kSceneActivated, kSceneAboutToBeDeleted, kSceneDeleted,
                                                       kSceneActivated}));
    EXPECT_EQ(observer.heard[0].sceneId, 2u);

    // The only scene left cannot go: a set always keeps one.
    DC_DeleteSceneCommand last(*set, 1);
    EXPECT_EQ(last.Execute(), nullptr);
    EXPECT_EQ(set->Sequence().size(), 1u);
    EXPECT_EQ(DC_DeleteSceneCommand(*set, 99).Execute(), nullptr);
}

TEST_F(SceneCommandsTest, ADeletedSceneComesBackWholeFromItsSnapshot) {
    AddScenes(2);
    CDopeSheetObj* scene = set->FindScene(2);
    AS_DrawingLevelObj* drawing = DrawingElement(*scene);
    ASSERT_NE(drawing, nullptr);
    drawing->CommonDrawing()
        ->AddDrawingWithId(1001, u"1")
        ->SetDrawing(MarkedDrawing(0x42, FirstColour(set->PaletteList())));
    const uint32_t defaultCamera = scene->DefaultCamera()->GetId();
    const uint32_t nextElement = scene->NextElementId();
    const SetState before = StateOf(*set);

    DC_DeleteSceneCommand remove(*set, 2, true);
    ASSERT_TRUE(remove.Run(DC_DeleteSceneCommand::kName));
    EXPECT_EQ(set->FindScene(2), nullptr);
    EXPECT_NE(StateOf(*set), before);
    set->History().Undo();

    // A new object, read from the snapshot, with the drawing that lived only in memory.
    CDopeSheetObj* restored = set->FindScene(2);
    ASSERT_NE(restored, nullptr);
    EXPECT_EQ(SequenceIds(*set), (std::vector<uint32_t>{1, 2, 3}));
    AS_DopeSheetDrawingObj* entry = DrawingElement(*restored)->CommonDrawing()->FindDrawing(1001);
    ASSERT_NE(entry, nullptr);
    ASSERT_TRUE(entry->HasDrawing());
    EXPECT_EQ(MarkerOf(entry->GetDrawing()), 0x42);
    // The default camera is not in the stream: it comes back under its own id, so the
    // scene's counter of element ids stays where it was.
    EXPECT_EQ(restored->DefaultCamera()->GetId(), defaultCamera);
    EXPECT_EQ(restored->NextElementId(), nextElement);
    EXPECT_EQ(StateOf(*set), before);

    // An addition of a scene that is there already fails.
    DC_AddSceneCommand again(*set, *restored, 0);
    EXPECT_EQ(again.Execute(), nullptr);
    EXPECT_EQ(again.Size(), again.Snapshot().Size() + 12);
}

TEST_F(SceneCommandsTest, ReorderMovesBackAndLeavesNoOpsAlone) {
    AddScenes(3);
    RecordingObserver observer(*set);
    DC_ReorderScene forward(*set, 0, 3);
    ASSERT_TRUE(forward.Run(DC_ReorderScene::kName));
    EXPECT_EQ(SequenceIds(*set), (std::vector<uint32_t>{2, 3, 1, 4}));
    auto* reverse = LastInverse<DC_ReorderScene>();
    ASSERT_NE(reverse, nullptr);
    EXPECT_EQ(reverse->From(), 2u);
    EXPECT_EQ(reverse->To(), 0u);
    set->History().Undo();
    EXPECT_EQ(SequenceIds(*set), (std::vector<uint32_t>{1, 2, 3, 4}));

    DC_ReorderScene backward(*set, 3, 0);
    ASSERT_TRUE(backward.Run(DC_ReorderScene::kName));
    EXPECT_EQ(SequenceIds(*set), (std::vector<uint32_t>{4, 1, 2, 3}));
    reverse = LastInverse<DC_ReorderScene>();
    EXPECT_EQ(reverse->From(), 0u);
    EXPECT_EQ(reverse->To(), 4u);
    set->History().Undo();
    EXPECT_EQ(SequenceIds(*set), (std::vector<uint32_t>{1, 2, 3, 4}));

    // To its own place or the next one: nothing moves, and the inverse moves nothing.
    for (size_t to : {1u, 2u}) {
        DC_ReorderScene still(*set, 1, to);
        ASSERT_TRUE(still.Run(DC_ReorderScene::kName));
        EXPECT_EQ(SequenceIds(*set), (std::vector<uint32_t>{1, 2, 3, 4}));
        set->History().Undo();
        EXPECT_EQ(SequenceIds(*set), (std::vector<uint32_t>{1, 2, 3, 4}));
    }
    EXPECT_EQ(DC_ReorderScene(*set, 4, 0).Execute(), nullptr);
    for (const Heard& heard : observer.heard)
        EXPECT_EQ(heard.code, kSceneReordered);
    EXPECT_EQ(observer.heard.size(), 8u);
}

TEST_F(SceneCommandsTest, NamesOfNewScenesAndTheNameRules) {
    EXPECT_EQ(set->NewSceneName(), u"Scene-2");
    AddScenes(1);
    ASSERT_TRUE(DC_ChangeSceneProperties(*set, 2, u"Scene-2", {255, 255, 255, 255}).Run(u"Rename"));
    EXPECT_EQ(set->NewSceneName(), u"Scene-3");
    AddScenes(1);
    ASSERT_TRUE(DC_ChangeSceneProperties(*set, 3, u"Scene-4", {255, 255, 255, 255}).Run(u"Rename"));
    // The numbering looks for a free name, not at the count of scenes.
    EXPECT_EQ(set->NewSceneName(), u"Scene-3");
    // A deleted scene leaves its name free.
    ASSERT_TRUE(DC_DeleteSceneCommand(*set, 2).Run(u"Delete"));
    EXPECT_EQ(set->NewSceneName(), u"Scene-2");

    EXPECT_EQ(set->CheckSceneName(u""), u"The name of the scene cannot be empty.");
    EXPECT_EQ(set->CheckSceneName(u"a/b"),
              u"This name contains invalid characters; please choose a different one.");
    EXPECT_EQ(set->CheckSceneName(u"Take.2"),
              u"This name contains invalid characters; please choose a different one.");
    EXPECT_EQ(set->CheckSceneName(u"Scene-4"),
              u"This name is already used by another scene; please choose a different one.");
    EXPECT_EQ(set->CheckSceneName(u"Scene-4", 3), u"");
    EXPECT_TRUE(set->IsSceneNameFree(u"Scene-2"));
}

TEST_F(SceneCommandsTest, PropertiesOfScenesAndOfTheSetGoBack) {
    AddScenes(1);
    RecordingObserver observer(*set);
    CDopeSheetObj* scene = set->FindScene(2);
    ASSERT_TRUE(
        DC_ChangeSceneProperties(*set, 2, u"Chase", {10, 20, 30, 40}).Run(DC_ChangeSceneProperties::kName));
    EXPECT_EQ(scene->Name(), u"Chase");
    EXPECT_EQ(scene->BackgroundColour(), (std::array<uint8_t, 4>{10, 20, 30, 40}));
    set->History().Undo();
    EXPECT_EQ(scene->Name(), u"S2");
    EXPECT_EQ(scene->BackgroundColour(), (std::array<uint8_t, 4>{255, 255, 255, 255}));
    EXPECT_EQ(observer.CodesAndScenes(), (Said{{kScenePropertiesChanged, 2}, {kScenePropertiesChanged, 2}}));
    EXPECT_EQ(DC_ChangeSceneProperties(*set, 7, u"X", {}).Execute(), nullptr);

    observer.heard.clear();
    ASSERT_TRUE(DC_ChangeASPropertiesCommand(*set, 24, 1920, 1080).Run(DC_ChangeASPropertiesCommand::kName));
    EXPECT_EQ(set->FrameRate(), 24u);
    for (CDopeSheetObj* each : set->Sequence()) {
        EXPECT_EQ(each->DefaultCamera()->Width(), 1920u);
        EXPECT_EQ(each->DefaultCamera()->Height(), 1080u);
    }
    set->History().Undo();
    EXPECT_EQ(set->FrameRate(), 12u);
    EXPECT_EQ(set->CameraWidth(), 500u);
    EXPECT_EQ(set->CameraHeight(), 375u);
    EXPECT_EQ(scene->DefaultCamera()->Width(), 500u);
    ASSERT_EQ(observer.heard.size(), 2u);
    EXPECT_EQ(observer.heard[0].category, AS_DopeSheetCategory::kAnimationProperties);
    EXPECT_EQ(observer.heard[0].code, kNoDetail);
}

TEST_F(SceneCommandsTest, VisibilityOfScenesAndOfRows) {
    AddScenes(1);
    EXPECT_EQ(DC_ToggleSceneVisibility::NameFor(*set, 2), u"Hide Scene");
    ASSERT_TRUE(DC_ToggleSceneVisibility(*set, 2).Run(DC_ToggleSceneVisibility::NameFor(*set, 2)));
    EXPECT_FALSE(set->FindScene(2)->IsVisible());
    EXPECT_EQ(DC_ToggleSceneVisibility::NameFor(*set, 2), u"Show Scene");
    set->History().Undo();
    EXPECT_TRUE(set->FindScene(2)->IsVisible());
    set->History().Redo();
    EXPECT_FALSE(set->FindScene(2)->IsVisible());

    // A row of the Sceneplanning order, hidden alone: a child keeps its flag.
    CDopeSheetObj* scene = set->FindScene(1);
    AS_SPCompositionOrder& order = scene->SceneplanningOrder();
    ASSERT_GE(order.GetRowCount(), 2);
    const uint32_t parent = order.Rows()[0].id, child = order.Rows()[1].id;
    ASSERT_TRUE(order.Reparent(1, 0));
    ASSERT_EQ(order.GetParentOfLevel(child), order.FindRow(parent));
    RecordingObserver observer(*set);
    CleanOrders(*set);
    ASSERT_TRUE(DC_SetSceneVisibleCommand(*set, 1, parent, 1, false).Run(u"Hide"));
    EXPECT_FALSE(order.IsShown(order.FindRow(parent)));
    EXPECT_TRUE(order.IsShown(order.FindRow(child)));
    EXPECT_EQ(observer.heard, (std::vector<Heard>{{AS_DopeSheetCategory::kCompositionOrder,
                                                   kCompositionOrderChanged, 1, true}}));
    auto* inverse = LastInverse<DC_SetSceneVisibleCommand>();
    ASSERT_NE(inverse, nullptr);
    EXPECT_TRUE(inverse->Shown());
    set->History().Undo();
    EXPECT_TRUE(order.IsShown(order.FindRow(parent)));

    EXPECT_EQ(DC_SetSceneVisibleCommand(*set, 1, 12345, 1, false).Execute(), nullptr);
    EXPECT_EQ(DC_SetSceneVisibleCommand(*set, 1, parent, 2, false).Execute(), nullptr);
}

TEST_F(SceneCommandsTest, TheSetKnowsWhenItIsDirty) {
    AddScenes(1);
    EXPECT_FALSE(set->IsDirty());
    ASSERT_TRUE(DC_ToggleSceneVisibility(*set, 2).Run(u"Hide Scene"));
    EXPECT_TRUE(set->IsDirty());
    set->History().Undo();
    EXPECT_FALSE(set->IsDirty());
    set->History().Redo();
    set->MarkSaved();
    EXPECT_FALSE(set->IsDirty());
    set->History().Undo();
    EXPECT_TRUE(set->IsDirty());
    set->History().Redo();
    EXPECT_FALSE(set->IsDirty());
    // A change of the user colours counts, and so does a set forced dirty.
    set->UserColors().ToggleFlag(PR_UserColorSettings::kShowNotes);
    EXPECT_TRUE(set->IsDirty());
    set->MarkSaved();
    set->SetForcedDirty(true);
    EXPECT_TRUE(set->IsDirty());
    set->MarkSaved();
    EXPECT_FALSE(set->IsDirty());
}

TEST_F(SceneCommandsTest, ColoursOfDeletedElementsGoAtTheNextSaveOnly) {
    AddScenes(1);
    const PR_ColorRecord red{200, 0, 0, 120};
    const uint32_t element = set->FindScene(2)->Levels().front().level->GetId();
    set->UserColors().SetColor(PR_UserColorSettings::kElementColors, {1, element}, red);
    set->UserColors().SetColor(PR_UserColorSettings::kElementColors, {2, element}, red);
    set->UserColors().SetColor(PR_UserColorSettings::kBackgroundColors, {2, element}, red);
    set->UserColors().SetColor(PR_UserColorSettings::kElementColors, {1, 9999}, red);
    ASSERT_TRUE(DC_DeleteSceneCommand(*set, 2).Run(u"Delete"));

    // A snapshot copies them as they are and leaves them modified.
    StateOf(*set);
    EXPECT_EQ(set->UserColors().Count(PR_UserColorSettings::kElementColors), 3u);
    EXPECT_TRUE(set->UserColors().IsModified());

    DB_MemFile file;
    DB_Archive archive(&file, false);
    set->UserColors().Write(archive);
    EXPECT_EQ(set->UserColors().Count(PR_UserColorSettings::kElementColors), 1u);
    EXPECT_TRUE(set->UserColors().HasColor(PR_UserColorSettings::kElementColors, {1, element}));
    EXPECT_EQ(set->UserColors().Count(PR_UserColorSettings::kBackgroundColors), 0u);
    EXPECT_FALSE(set->UserColors().IsModified());
}

TEST_F(SceneCommandsTest, ASavedDeletionErasesTheSceneFolderThroughTheTransaction) {
    TempFolder folder("scene-commands");
    ScriptedMessages messages;
    UT_MessageHandlerScope scope(&messages);
    FakeAppHost host;
    AddScenes(1);
    set->SetName(u"Reel");
    set->SetForcedDirty(true);
    CSketchrunDoc document(host);
    document.Attach(std::move(set), UT_FilePath(folder.Path() / "Reel"));
    CAnimationSetObj& attached = *document.Set();
    ASSERT_TRUE(document.Save());
    const fs::path sceneFolder = folder.Path() / "Reel" / "Scene-002";
    ASSERT_TRUE(fs::is_directory(sceneFolder));

    // Deleted and undone before the save: the folder stays.
    ASSERT_TRUE(DC_DeleteSceneCommand(attached, 2).Run(u"Delete Scene"));
    attached.History().Undo();
    EXPECT_FALSE(document.IsModified());
    attached.History().Redo();
    EXPECT_TRUE(document.IsModified());
    EXPECT_TRUE(fs::is_directory(sceneFolder));
    ASSERT_TRUE(document.Save());
    EXPECT_FALSE(fs::exists(sceneFolder));
    EXPECT_FALSE(document.IsModified());
    EXPECT_TRUE(messages.messages.empty());
}

// Settings.

class SettingsRecorder : public SPO_SettingsObserverInterface {
public:
    void SettingsChanged(const void*, const SPO_SettingsUpdateData& data) override { heard.push_back(data); }
    std::vector<SPO_SettingsUpdateData> heard;
};

TEST_F(SceneCommandsTest, FrameRangeFollowsTheOrderUntilItIsCustom) {
    AddScenes(1);
    SPO_SettingsMgr settings(set.get());
    set->SetSettingsManager(&settings);
    SettingsRecorder recorder;
    settings.Attach(&recorder);
    for (int flag = 0; flag < SPO_SettingsMgr::kFlagCount; ++flag)
        EXPECT_EQ(settings.GetFlag(static_cast<SPO_SettingsMgr::Flag>(flag)), flag == 2) << flag;
    settings.SetFlag(SPO_SettingsMgr::kShowGrid, true);
    settings.SetFlag(SPO_SettingsMgr::kShowGrid, true);
    ASSERT_EQ(recorder.heard.size(), 1u);
    EXPECT_EQ(recorder.heard[0].what, SPO_SettingsUpdateData::kFlag);
    EXPECT_EQ(recorder.heard[0].flag, SPO_SettingsMgr::kShowGrid);

    // Frames 2 to 7 exposed in the drawing element of the first scene.
    CDopeSheetObj* scene = set->FindScene(1);
    AS_DrawingLevelObj* drawing = DrawingElement(*scene);
    drawing->CommonDrawing()->AddDrawingWithId(1001, u"1");
    drawing->Cells().resize(8);
    for (size_t frame = 2; frame < 8; ++frame)
        drawing->Cells()[frame].drawingId = 1001;
    scene->MarkDirty();
    EXPECT_EQ(settings.GetFirstFrame(), 2);
    EXPECT_EQ(settings.GetLastFrame(), 7);

    // Hiding the row takes the element out of the range, and its undo puts it back.
    ASSERT_TRUE(DC_SetSceneVisibleCommand(*set, 1, drawing->GetId(), 1, false).Run(u"Hide"));
    EXPECT_EQ(settings.GetFirstFrame(), -1);
    EXPECT_EQ(settings.GetLastFrame(), -1);
    set->History().Undo();
    EXPECT_EQ(settings.GetLastFrame(), 7);

    // Another scene made current: the range moves with it, and observers hear of it.
    recorder.heard.clear();
    set->SetCurrentScene(set->FindScene(2), true);
    EXPECT_EQ(settings.GetLastFrame(), -1);
    ASSERT_EQ(recorder.heard.size(), 1u);
    EXPECT_EQ(recorder.heard[0].what, SPO_SettingsUpdateData::kFrameRange);
    set->SetCurrentScene(scene, true);

    // A custom range starts from the order's range and then stays as set.
    settings.SetCustomRange(true);
    EXPECT_TRUE(settings.IsCustomRange());
    EXPECT_EQ(settings.GetFirstFrame(), 2);
    EXPECT_EQ(settings.GetLastFrame(), 7);
    settings.SetFirstFrame(4);
    settings.SetLastFrame(40);
    set->History().Redo();
    set->SetCurrentScene(set->FindScene(2), true);
    EXPECT_EQ(settings.GetFirstFrame(), 4);
    EXPECT_EQ(settings.GetLastFrame(), 40);
    settings.SetCustomRange(false);
    EXPECT_EQ(settings.GetLastFrame(), -1);
    settings.Detach(&recorder);
}

} // namespace
