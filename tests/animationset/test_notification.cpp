// The notification proxy, the base of the commands on a set with its context, and the
// scope that runs several commands as one entry of the history.

#include "SetTestUtil.h"
#include "animationset/AS_DopeSheetNotifProxy.h"
#include "animationset/DC_AddSceneCommand.h"
#include "animationset/DC_CommandScope.h"
#include "core/UT_CommandHistory.h"

#include <stdexcept>

namespace {

// A change of an element's note, as element commands are made: ids, not pointers.
class NoteCommand : public DC_Command {
public:
    NoteCommand(CAnimationSetObj& set, uint32_t scene, uint32_t element, UT_WString note, bool notify = true)
        : DC_Command(set, notify), scene_(scene), element_(element), note_(std::move(note)) {}

    std::unique_ptr<UT_Command> Execute() override {
        if (throwOnExecute)
            throw std::runtime_error("disk full");
        CDopeSheetObj* scene = AnimationSet().FindScene(scene_);
        AS_DopeSheetLevelObj* element = scene ? scene->FindElement(element_) : nullptr;
        if (!element)
            return nullptr;
        auto inverse = std::make_unique<NoteCommand>(*this);
        inverse->note_ = element->GetNote();
        element->SetNote(note_);
        AS_DopeSheetUpdateData data(AS_DopeSheetCategory::kElement, kElementNoteChanged, scene);
        data.elements = {element_};
        Send(data);
        return inverse;
    }

    bool throwOnExecute = false;

private:
    uint32_t scene_;
    uint32_t element_;
    UT_WString note_;
};

// One valid code per category, in category order.
const uint32_t kCodeOfCategory[] = {kSceneAdded,
                                    kElementRenamed,
                                    kDrawingLockChanged,
                                    kCellsChanged,
                                    kCompositionOrderChanged,
                                    kPlacementValuesChanged,
                                    kNoDetail,
                                    kNoDetail,
                                    kElementChanged};

class NotificationTest : public SetCommandTest {
protected:
    void SetUp() override {
        SetCommandTest::SetUp();
        set = MakeNewSet();
        DC_AddSceneCommand::NewScene(*set, u"Second", 1)->Run(u"Add Scene");
        first = set->Sequence()[0];
        second = set->Sequence()[1];
        set->History().Clear();
    }
    uint32_t FirstElement(const CDopeSheetObj& scene) const { return scene.Levels().front().level->GetId(); }
    UT_WString NoteOf(const CDopeSheetObj& scene) const { return scene.Levels().front().level->GetNote(); }

    std::unique_ptr<CAnimationSetObj> set;
    CDopeSheetObj* first = nullptr;
    CDopeSheetObj* second = nullptr;
};

TEST_F(NotificationTest, OrdersAreStaleBeforeAnyObserverHearsOfAChange) {
    RecordingObserver observer(*set);
    for (uint32_t category = 0; category <= 8; ++category) {
        CleanOrders(*set);
        const auto c = static_cast<AS_DopeSheetCategory>(category);
        ASSERT_TRUE(AS_CodeBelongsTo(c, kCodeOfCategory[category]));
        set->NotifProxy().Notify(nullptr, AS_DopeSheetUpdateData(c, kCodeOfCategory[category]));
    }
    ASSERT_EQ(observer.heard.size(), 9u);
    for (uint32_t category = 0; category <= 8; ++category) {
        const bool touchesOrders = (category >= 1 && category <= 5) || category == 8;
        EXPECT_EQ(observer.heard[category].ordersDirty, touchesOrders) << "category " << category;
        // No scene named: the current one.
        EXPECT_EQ(observer.heard[category].sceneId, first->SceneId());
    }

    // A record that names a scene marks that scene's orders, not the current one's.
    CleanOrders(*set);
    set->NotifProxy().Notify(nullptr,
                             AS_DopeSheetUpdateData(AS_DopeSheetCategory::kExposure, kCellsChanged, second));
    EXPECT_TRUE(second->DrawingOrder().IsRangeDirty());
    EXPECT_TRUE(second->SceneplanningOrder().IsRangeDirty());
    EXPECT_FALSE(first->DrawingOrder().IsRangeDirty());
}

TEST_F(NotificationTest, PermanentObserversComeFirstAndTheSenderIsSkipped) {
    std::vector<std::string> log;
    RecordingObserver view(*set, "view");
    view.log = &log;
    // Permanent observers are process-wide: a proxy calls them without attaching them.
    RecordingObserver iterator(*set, "iterator"), selection(*set, "selection");
    set->NotifProxy().Detach(&iterator);
    set->NotifProxy().Detach(&selection);
    iterator.log = selection.log = &log;
    AS_DopeSheetNotifProxy::AddPermanentObserver(&iterator);
    AS_DopeSheetNotifProxy::AddPermanentObserver(&selection);
    AS_DopeSheetNotifProxy::AddPermanentObserver(&iterator);

    set->NotifProxy().NotifyScene(nullptr, kSceneActivated, second);
    EXPECT_EQ(log, (std::vector<std::string>{"iterator", "selection", "view"}));

    log.clear();
    set->NotifProxy().NotifyScene(&selection, kSceneActivated, second);
    set->NotifProxy().NotifyScene(&view, kSceneActivated, second);
    EXPECT_EQ(log, (std::vector<std::string>{"iterator", "view", "iterator", "selection"}));

    // A permanent observer that goes away while the first one is told is not called.
    log.clear();
    struct Remover : AS_DopeSheetObserverInterface {
        AS_DopeSheetObserverInterface* victim = nullptr;
        void DopeSheetChanged(const void*, const AS_DopeSheetUpdateData&) override {
            AS_DopeSheetNotifProxy::RemovePermanentObserver(victim);
        }
    } remover;
    remover.victim = &selection;
    AS_DopeSheetNotifProxy::ResetPermanentObservers();
    AS_DopeSheetNotifProxy::AddPermanentObserver(&remover);
    AS_DopeSheetNotifProxy::AddPermanentObserver(&selection);
    set->NotifProxy().NotifyScene(nullptr, kSceneActivated, second);
    EXPECT_EQ(log, (std::vector<std::string>{"view"}));
}

TEST_F(NotificationTest, ObserversLearnThatTheSetGoes) {
    RecordingObserver a(*set), b(*set);
    set.reset();
    EXPECT_FALSE(a.Attached());
    EXPECT_FALSE(b.Attached());
}

class ModeRecorder : public DC_ModeCommandTarget {
public:
    void OnModeCommand(CAnimationSetObj& set, uint32_t commandId) override {
        commands.push_back(commandId);
        set.SetSceneplanningMode(commandId == DC_Command::kSceneplanningModeCommand);
    }
    std::vector<uint32_t> commands;
};

TEST_F(NotificationTest, UndoAndRedoBringBackTheModeAndSceneOfTheCommand) {
    set->SetCurrentScene(second, true);
    set->SetSceneplanningMode(true);
    NoteCommand note(*set, second->SceneId(), FirstElement(*second), u"look here");
    EXPECT_EQ(note.Context(), (DC_CommandContext{true, second->SceneId()}));
    ASSERT_TRUE(note.Run(u"Note"));

    // Elsewhere, in the other mode.
    set->SetCurrentScene(first, true);
    set->SetSceneplanningMode(false);
    ModeRecorder frame;
    DC_Command::SetModeCommandTarget(&frame);
    RecordingObserver observer(*set);
    set->History().Undo();
    EXPECT_EQ(frame.commands, std::vector<uint32_t>{DC_Command::kSceneplanningModeCommand});
    EXPECT_EQ(set->CurrentScene(), second);
    // The scene is made current before the change goes out.
    EXPECT_EQ(observer.Codes(), (std::vector<uint32_t>{kSceneActivated, kElementNoteChanged}));
    EXPECT_EQ(NoteOf(*second), u"");

    // Without a main window the set's copy of the mode switches by itself; a redo from
    // where the undo left has nothing to restore.
    DC_Command::SetModeCommandTarget(nullptr);
    observer.heard.clear();
    set->History().Redo();
    EXPECT_EQ(observer.Codes(), std::vector<uint32_t>{kElementNoteChanged});
    set->SetSceneplanningMode(false);
    set->History().Undo();
    EXPECT_TRUE(set->IsSceneplanningMode());
    EXPECT_EQ(frame.commands.size(), 1u);
}

TEST_F(NotificationTest, SilentCommandsSendNothing) {
    RecordingObserver observer(*set);
    NoteCommand quiet(*set, first->SceneId(), FirstElement(*first), u"x", false);
    ASSERT_TRUE(quiet.Run(u"Note"));
    set->History().Undo();
    set->History().Redo();
    EXPECT_TRUE(observer.heard.empty());
    EXPECT_EQ(NoteOf(*first), u"x");
}

TEST_F(NotificationTest, ScopeMakesOneEntryAndItsRecordFollowsUndoAndRedo) {
    RecordingObserver observer(*set);
    const uint32_t a = first->SceneId(), b = second->SceneId();
    {
        DC_CommandScope scope(*set, u"Two notes");
        NoteCommand one(*set, a, FirstElement(*first), u"1", false);
        NoteCommand two(*set, b, FirstElement(*second), u"2", false);
        EXPECT_TRUE(scope.Execute(one));
        // Code that runs its own command on the history lands in the scope too.
        EXPECT_TRUE(two.Run(u"ignored"));
        AS_DopeSheetUpdateData record(AS_DopeSheetCategory::kElement, kElementChanged, second);
        scope.NotifyOnClose(record);
        EXPECT_TRUE(observer.heard.empty());
    }
    ASSERT_EQ(set->History().UndoList().size(), 1u);
    EXPECT_EQ(set->History().UndoName(), u"Two notes");
    const std::vector<RecordingObserver::Heard> once = {
        {AS_DopeSheetCategory::kElement, kElementChanged, b, true}};
    EXPECT_EQ(observer.heard, once);

    observer.heard.clear();
    set->History().Undo();
    EXPECT_EQ(NoteOf(*first), u"");
    EXPECT_EQ(NoteOf(*second), u"");
    EXPECT_EQ(observer.heard, once);
    observer.heard.clear();
    set->History().Redo();
    EXPECT_EQ(NoteOf(*first), u"1");
    EXPECT_EQ(NoteOf(*second), u"2");
    EXPECT_EQ(observer.heard, once);
}

TEST_F(NotificationTest, ScopesNestAndEmptyScopesAddNothing) {
    NoteCommand before(*set, first->SceneId(), FirstElement(*first), u"0");
    ASSERT_TRUE(before.Run(u"Before"));
    set->History().Undo();
    { DC_CommandScope empty(*set, u"Nothing"); }
    EXPECT_TRUE(set->History().CanRedo());
    EXPECT_FALSE(set->History().CanUndo());
    {
        DC_CommandScope outer(*set, u"Outer");
        NoteCommand one(*set, first->SceneId(), FirstElement(*first), u"1");
        outer.Execute(one);
        {
            DC_CommandScope inner(*set, u"Inner");
            NoteCommand two(*set, second->SceneId(), FirstElement(*second), u"2");
            inner.Execute(two);
        }
        EXPECT_FALSE(set->History().CanUndo());
    }
    ASSERT_EQ(set->History().UndoList().size(), 1u);
    EXPECT_FALSE(set->History().IsGroupOpen());
    set->History().Undo();
    EXPECT_EQ(NoteOf(*first), u"");
    EXPECT_EQ(NoteOf(*second), u"");
}

TEST_F(NotificationTest, AnExceptionUndoesWhatTheScopeDid) {
    NoteCommand kept(*set, first->SceneId(), FirstElement(*first), u"kept");
    ASSERT_TRUE(kept.Run(u"Kept"));
    const SetState before = StateOf(*set);
    RecordingObserver observer(*set);
    try {
        DC_CommandScope scope(*set, u"Broken");
        NoteCommand one(*set, first->SceneId(), FirstElement(*first), u"1");
        NoteCommand two(*set, second->SceneId(), FirstElement(*second), u"2");
        NoteCommand three(*set, second->SceneId(), FirstElement(*second), u"3");
        three.throwOnExecute = true;
        scope.Execute(one);
        scope.Execute(two);
        scope.Execute(three);
        FAIL() << "the third command throws";
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(StateOf(*set), before);
    EXPECT_EQ(set->History().UndoList().size(), 1u);
    EXPECT_EQ(set->History().UndoName(), u"Kept");
    EXPECT_FALSE(set->History().IsGroupOpen());
    // Two changes, then their undoing, newest first.
    EXPECT_EQ(observer.heard.size(), 4u);

    // Abort does the same without an exception.
    {
        DC_CommandScope scope(*set, u"Aborted");
        NoteCommand one(*set, second->SceneId(), FirstElement(*second), u"1");
        scope.Execute(one);
        scope.Abort();
        EXPECT_FALSE(scope.IsOpen());
        EXPECT_EQ(NoteOf(*second), u"");
    }
    EXPECT_EQ(set->History().UndoList().size(), 1u);
}

TEST_F(NotificationTest, AFailedCommandInAScopeEmptiesTheHistory) {
    NoteCommand kept(*set, first->SceneId(), FirstElement(*first), u"kept");
    ASSERT_TRUE(kept.Run(u"Kept"));
    {
        DC_CommandScope scope(*set, u"Scope");
        NoteCommand one(*set, second->SceneId(), FirstElement(*second), u"1");
        NoteCommand missing(*set, 999, 1, u"?");
        NoteCommand after(*set, first->SceneId(), FirstElement(*first), u"after");
        EXPECT_TRUE(scope.Execute(one));
        EXPECT_FALSE(scope.Execute(missing));
        EXPECT_TRUE(scope.Execute(after));
    }
    // Only what came after the failure can be undone.
    ASSERT_EQ(set->History().UndoList().size(), 1u);
    EXPECT_EQ(set->History().SavedPosition(), -1);
    set->History().Undo();
    EXPECT_EQ(NoteOf(*first), u"kept");
    EXPECT_EQ(NoteOf(*second), u"1");
}

} // namespace
