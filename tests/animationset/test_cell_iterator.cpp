// The cell iterator on a scene of three rows, the application's current cell as the set
// and the model change under it, and the commands on cells with their undo.

#include "SetTestUtil.h"
#include "animationset/AS_CellIteratorObservable.h"
#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/AS_SoundLevel.h"
#include "animationset/DC_AddSceneCommand.h"
#include "animationset/DC_ReLabelCellCommand.h"
#include "animationset/DC_RemoveCellsCommand.h"
#include "animationset/DC_RestoreTimingCommand.h"
#include "core/UT_CommandHistory.h"

namespace {

constexpr uint32_t kBlank = AS_kInvalidId;

void Expose(AS_DrawingLevelObj& level, std::string_view text) {
    level.Cells().clear();
    for (char c : text) {
        if (c == '_') {
            level.Cells().push_back({});
            continue;
        }
        const UT_WString name(1, static_cast<char16_t>(u'1' + (c - 'A')));
        uint32_t id = level.FindDrawingId(name);
        if (id == kBlank)
            id = level.CreateDrawing(name);
        level.Cells().push_back({id, {}});
    }
}

std::string Shown(const AS_DrawingLevelObj& level) {
    std::string text;
    for (const AS_CellRecord& cell : level.Cells()) {
        const AS_DopeSheetDrawingObj* drawing = level.CommonDrawing()->FindDrawing(cell.drawingId);
        text += drawing ? static_cast<char>('A' + (drawing->GetName()[0] - u'1')) : '_';
    }
    return text;
}

// Rows of the Drawing order: 0 "Drawing" A A B _ _ C, 1 "Hand" A A A A, 2 a sound.
class CellIteratorTest : public SetCommandTest {
protected:
    void SetUp() override {
        SetCommandTest::SetUp();
        set = MakeNewSet();
        scene = set->CurrentScene();
        drawing = dynamic_cast<AS_DrawingLevelObj*>(scene->FindElementByName(u"Drawing"));
        hand = static_cast<AS_DrawingLevelObj*>(
            scene->AddElement(AS_VectorGraphicLevelObj::Create(scene->NewElementId(), u"Hand")));
        sound = static_cast<AS_SoundLevel*>(
            scene->AddElement(AS_SoundLevel::Create(scene->NewElementId(), u"Voice")));
        Expose(*drawing, "AAB__C");
        Expose(*hand, "AAAA");
        order = &scene->DrawingOrder();
        ASSERT_EQ(order->GetShownCount(), 3);
        ASSERT_EQ(order->GetLevel(0), drawing);
        ASSERT_EQ(order->GetLevel(2), sound);
    }

    AS_DopeSheetCellIterator Iterator(AS_CellPosition from, AS_CellPosition to, AS_CellPosition at) {
        AS_DopeSheetCellIterator it;
        it.Set(scene, order, from, to, at);
        return it;
    }

    std::unique_ptr<CAnimationSetObj> set;
    CDopeSheetObj* scene = nullptr;
    AS_CompositionOrder* order = nullptr;
    AS_DrawingLevelObj* drawing = nullptr;
    AS_DrawingLevelObj* hand = nullptr;
    AS_SoundLevel* sound = nullptr;
};

TEST_F(CellIteratorTest, MovesStopAtTheEdgesOfTheSelectionAndTheGrid) {
    AS_DopeSheetCellIterator it = Iterator({1, 0}, {3, 1}, {1, 0});
    EXPECT_EQ(it.SelectedLevels(), (std::vector<int32_t>{0, 1}));
    EXPECT_EQ(it.SelectedFrames(), (std::vector<AS_FrameRange>{{1, 3}, {1, 3}}));

    EXPECT_TRUE(it.NextFrameInRange());
    EXPECT_TRUE(it.NextFrameInRange());
    EXPECT_FALSE(it.NextFrameInRange());
    EXPECT_EQ(it.Cell(), (AS_CellPosition{3, 0}));
    EXPECT_TRUE(it.NextSelectedLevel());
    EXPECT_FALSE(it.NextSelectedLevel()) << "past the last selected level";
    EXPECT_EQ(it.Cell(), (AS_CellPosition{3, 1}));
    EXPECT_TRUE(it.PrevSelectedLevelAtStart());
    EXPECT_EQ(it.Cell(), (AS_CellPosition{1, 0}));
    EXPECT_FALSE(it.PrevSelectedLevel());
    EXPECT_FALSE(it.PrevFrameInRange());

    // Rows beyond the selection are reached one by one, up to the last row of the order.
    EXPECT_TRUE(it.NextLevel());
    EXPECT_TRUE(it.NextLevel());
    EXPECT_EQ(it.SelectionPosition(), -1);
    EXPECT_FALSE(it.IsInSelection());
    EXPECT_FALSE(it.NextFrameInRange()) << "an unselected row has no range";
    EXPECT_FALSE(it.NextLevel());
    EXPECT_TRUE(it.PrevSelectedLevel()) << "from outside, the selected row before";
    EXPECT_EQ(it.LevelIndex(), 1);
    EXPECT_TRUE(it.SetLevelZero());
    EXPECT_FALSE(it.PrevLevel());

    EXPECT_TRUE(it.GoToSelectionEnd());
    EXPECT_EQ(it.Cell(), (AS_CellPosition{3, 1}));
    EXPECT_TRUE(it.GoToSelectionStart());
    EXPECT_FALSE(it.GoToSelectionStart()) << "no move, no change";
    EXPECT_TRUE(it.GoToRangeEnd());
    EXPECT_EQ(it.Frame(), 3);
    EXPECT_TRUE(it.NextFrame());
    EXPECT_FALSE(it.IsInSelection());
    EXPECT_TRUE(it.PrevFrameInRange()) << "back into the range from beyond it";
    EXPECT_EQ(it.Frame(), 3);

    // A rectangle is normalised and cut to the rows that the order has.
    it.SetSelection({4, 2}, {2, 9});
    EXPECT_EQ(it.SelectedLevels(), (std::vector<int32_t>{2}));
    EXPECT_EQ(it.SelectedFrames(), (std::vector<AS_FrameRange>{{2, 3}}));
    it.SetCell({7, 0});
    it.SelectCurrentCell();
    EXPECT_TRUE(it.IsSingleCell());
    EXPECT_EQ(it.GetFirstSelectedFrame(), 7);
    EXPECT_EQ(it.GetLastSelectedFrame(), 7);
}

TEST_F(CellIteratorTest, SelectAllAndQueries) {
    AS_DopeSheetCellIterator it = Iterator({0, 0}, {0, 0}, {0, 0});
    EXPECT_EQ(it.GetSceneLastFrame(), 5);
    EXPECT_EQ(it.GetTotalDuration(), 10u);
    it.SelectAll(false);
    EXPECT_TRUE(it.Flag());
    EXPECT_EQ(it.Cell(), (AS_CellPosition{5, 2}));
    EXPECT_TRUE(it.IsAtLastFrame());
    EXPECT_EQ(it.SelectedFrames(), std::vector<AS_FrameRange>(3, AS_FrameRange{0, 6}));
    it.SelectAll(true);
    EXPECT_EQ(it.Cell(), (AS_CellPosition{0, 0}));
    it.SetSelection({3, 0}, {4, 0});
    EXPECT_FALSE(it.Flag());
    EXPECT_FALSE(it.SelectionHasCells()) << "frames 4 and 5 of the first row are blank";
    it.SetSelection({3, 0}, {4, 1});
    EXPECT_TRUE(it.SelectionHasCells());

    it.SetCell({2, 0});
    AS_DrawingKey key;
    ASSERT_TRUE(it.GetDrawingKey(key));
    EXPECT_EQ(key, (AS_DrawingKey{scene->SceneId(), drawing->GetCommonId(), drawing->FindDrawingId(u"2")}));
    EXPECT_EQ(it.GetCellLabel(), u"Drawing-2");
    it.SetFrame(3);
    EXPECT_FALSE(it.GetDrawingKey(key));
    EXPECT_EQ(it.GetDrawing(), nullptr);
    EXPECT_EQ(it.GetCellLabel(), u"Drawing");
    it.SetCell({0, 2});
    EXPECT_EQ(it.GetDrawingLevel(), nullptr);
    EXPECT_EQ(it.GetSoundLevel(), sound);
    EXPECT_EQ(it.GetCellLabel(), u"NoLevel");
    EXPECT_FALSE(it.NextDrawing());

    // A new drawing in a blank cell takes the next number.
    it.SetCell({3, 0});
    const AS_DopeSheetDrawingObj* made = it.CreateDrawingAtCell();
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->GetName(), u"4");
    EXPECT_EQ(drawing->DrawingIdAt(3), made->GetId());

    // Without a scene every query has the empty answer.
    AS_DopeSheetCellIterator none;
    EXPECT_EQ(none.GetLevel(), nullptr);
    EXPECT_EQ(none.GetLevelId(), kBlank);
    EXPECT_EQ(none.GetCommonId(), kBlank);
    EXPECT_EQ(none.GetSceneLastFrame(), 0);
    EXPECT_FALSE(none.IsAtLastFrame());
    EXPECT_EQ(none.GetCellLabel(), u"NoLevel");
    EXPECT_EQ(none.CreateDrawingAtCell(), nullptr);
    none.SelectAll(true);
    EXPECT_TRUE(none.IsSelectionEmpty());
    EXPECT_EQ(none.GetFirstSelectedFrame(), -1);
}

TEST_F(CellIteratorTest, NextAndPreviousDrawing) {
    AS_DopeSheetCellIterator it = Iterator({0, 0}, {0, 0}, {0, 0});
    it.SelectAll(true);
    EXPECT_TRUE(it.NextDrawing());
    EXPECT_EQ(it.Frame(), 2);
    EXPECT_TRUE(it.NextDrawing()) << "over the blanks";
    EXPECT_EQ(it.Frame(), 5);
    EXPECT_FALSE(it.NextDrawing());
    EXPECT_TRUE(it.PrevDrawing());
    EXPECT_EQ(it.Frame(), 2);
    EXPECT_TRUE(it.PrevDrawing());
    EXPECT_EQ(it.Frame(), 0) << "the first frame of the run before";
    it.SetFrame(1);
    EXPECT_FALSE(it.PrevDrawing()) << "the same drawing all the way back";
    it.SetFrame(4);
    EXPECT_TRUE(it.PrevDrawing()) << "from a blank frame, any drawing";
    EXPECT_EQ(it.Frame(), 2);

    // The selection's last frame bounds the walk forward.
    it.SetSelection({0, 0}, {4, 0});
    it.SetCell({2, 0});
    EXPECT_FALSE(it.NextDrawing());
    EXPECT_EQ(it.Frame(), 2);
    it.SetCell({40, 0});
    EXPECT_TRUE(it.PrevDrawing()) << "from far past the exposure";
    EXPECT_EQ(it.Frame(), 5);
    it.SetCell({3, 1});
    EXPECT_FALSE(it.PrevDrawing());
}

TEST_F(CellIteratorTest, CurrentCellFollowsTheCurrentSetSceneAndMode) {
    AS_CellIteratorObservable& current = AS_CellIteratorObservable::Instance();
    EXPECT_EQ(current.Scene(), nullptr);
    CAnimationSetObj::SetCurrent(set.get());
    EXPECT_EQ(current.Scene(), scene);
    EXPECT_EQ(current.Order(), order);
    EXPECT_EQ(current.Cell(), (AS_CellPosition{0, 0}));
    EXPECT_TRUE(current.IsSingleCell());

    set->SetSceneplanningMode(true);
    EXPECT_EQ(current.Order(), &scene->SceneplanningOrder());
    set->SetSceneplanningMode(false);
    current.SetCell({3, 1});
    set->SetCurrentScene(scene, true);
    EXPECT_EQ(current.Cell(), (AS_CellPosition{3, 1})) << "the same scene and order keep the position";

    ASSERT_TRUE(DC_AddSceneCommand::NewScene(*set, u"Second", 1)->Run(u"Add Scene"));
    set->SetCurrentScene(set->Sequence()[1], true);
    EXPECT_EQ(current.Scene(), set->Sequence()[1]);
    EXPECT_EQ(current.Cell(), (AS_CellPosition{0, 0}));
    // A set that is not current leaves the cell alone.
    std::unique_ptr<CAnimationSetObj> other = MakeNewSet();
    other->SetCurrentScene(other->Sequence()[0], true);
    EXPECT_EQ(current.Scene(), set->Sequence()[1]);
    other.reset();
    set.reset();
    EXPECT_EQ(current.Scene(), nullptr) << "the current set went";
    EXPECT_EQ(current.GetLevel(), nullptr);
}

TEST_F(CellIteratorTest, CurrentCellAfterElementsAreDeleted) {
    CAnimationSetObj::SetCurrent(set.get());
    AS_CellIteratorObservable& current = AS_CellIteratorObservable::Instance();
    current.SetSelection({1, 0}, {3, 2});
    current.SetCell({3, 2});
    auto remove = [&](AS_DopeSheetLevelObj* level) {
        const uint32_t id = level->GetId();
        scene->RemoveElement(id, false);
        set->NotifProxy().NotifyElements(nullptr, kElementRemoved, scene, {id});
    };
    // A change that leaves every selected row in place moves nothing.
    set->NotifProxy().NotifyElements(nullptr, kElementRenamed, scene, {hand->GetId()});
    EXPECT_EQ(current.SelectedLevels().size(), 3u);

    remove(sound);
    EXPECT_EQ(current.Cell(), (AS_CellPosition{1, 0})) << "the selection's first cell";
    EXPECT_TRUE(current.IsSingleCell());
    current.SetCell({2, 1});
    current.SelectCurrentCell();
    remove(drawing);
    EXPECT_EQ(current.Cell(), (AS_CellPosition{2, 0})) << "cut to the last row left";
    EXPECT_EQ(current.GetLevel(), hand);
    remove(hand);
    EXPECT_EQ(current.LevelIndex(), -1);
    EXPECT_TRUE(current.IsSelectionEmpty());
    EXPECT_EQ(current.GetLevel(), nullptr);
    EXPECT_EQ(current.GetCellLabel(), u"NoLevel");
    EXPECT_FALSE(current.NextLevel());
}

TEST_F(CellIteratorTest, WholeSceneSelectionFollowsTheExposure) {
    CAnimationSetObj::SetCurrent(set.get());
    AS_CellIteratorObservable& current = AS_CellIteratorObservable::Instance();
    current.SelectAll(true);
    current.SetCell({2, 1});
    hand->SetCell(hand->FindDrawingId(u"1"), 9);
    AS_DopeSheetUpdateData data(AS_DopeSheetCategory::kExposure, kCellsChanged, scene);
    set->NotifProxy().Notify(nullptr, data);
    EXPECT_EQ(current.GetLastSelectedFrame(), 9);
    EXPECT_EQ(current.Cell(), (AS_CellPosition{2, 1}));
    // A selection of its own is the user's, and stays.
    current.SetSelection({0, 0}, {1, 0});
    hand->SetCell(hand->FindDrawingId(u"1"), 12);
    set->NotifProxy().Notify(nullptr, data);
    EXPECT_EQ(current.GetLastSelectedFrame(), 1);
}

TEST_F(CellIteratorTest, CellCommandsUndoExactlyAndCarryTheSelection) {
    CAnimationSetObj::SetCurrent(set.get());
    AS_CellIteratorObservable& current = AS_CellIteratorObservable::Instance();
    RecordingObserver observer(*set);
    UT_CommandHistory& history = set->History();
    const SetState start = StateOf(*set);
    const uint32_t counter = drawing->CommonDrawing()->NextDrawingId();

    // A drawing of a new name is made; the exposure grows to reach frame 8.
    DC_ReLabelCellCommand relabel(*set, DC_CellSelection::OfElement(scene->SceneId(), drawing->GetId(), 7, 8),
                                  u"Blink");
    ASSERT_TRUE(relabel.Run(DC_ReLabelCellCommand::kName));
    EXPECT_EQ(Shown(*drawing).substr(0, 6), "AAB__C");
    const uint32_t blink = drawing->FindDrawingId(u"Blink");
    EXPECT_EQ(drawing->DrawingIdAt(7), blink);
    EXPECT_EQ(drawing->DrawingIdAt(8), blink);
    EXPECT_EQ(current.SelectedFrames(), (std::vector<AS_FrameRange>{{7, 2}}));
    const SetState relabelled = StateOf(*set);

    // Then the first four frames go, the later ones moving back.
    DC_RemoveCellsCommand remove(*set, DC_CellSelection::OfElement(scene->SceneId(), drawing->GetId(), 0, 3),
                                 true);
    ASSERT_TRUE(remove.Run(DC_RemoveCellsCommand::kDeleteName));
    EXPECT_EQ(drawing->Cells().size(), 5u);
    EXPECT_EQ(Shown(*drawing).substr(0, 2), "_C");
    EXPECT_EQ(observer.Codes(), (std::vector<uint32_t>{kCellsChanged, kCellsRemoved}));

    // The user wanders off; undo brings the cell back to the removal's frames.
    current.SetCell({0, 1});
    current.SelectCurrentCell();
    history.Undo();
    EXPECT_EQ(StateOf(*set), relabelled);
    EXPECT_EQ(current.SelectedFrames(), (std::vector<AS_FrameRange>{{0, 4}}));
    EXPECT_EQ(current.LevelIndex(), 0);
    history.Undo();
    EXPECT_EQ(StateOf(*set), start) << "the drawing, the grown frames and the drawing counter are gone";
    EXPECT_EQ(drawing->CommonDrawing()->NextDrawingId(), counter);
    EXPECT_EQ(drawing->FindDrawingId(u"Blink"), kBlank);
    history.Redo();
    EXPECT_EQ(drawing->FindDrawingId(u"Blink"), blink) << "the redo gives the drawing its id again";
    EXPECT_EQ(StateOf(*set), relabelled);
    EXPECT_EQ(observer.Codes(), (std::vector<uint32_t>{kCellsChanged, kCellsRemoved, kCellsChanged,
                                                       kCellsChanged, kCellsChanged}));
}

TEST_F(CellIteratorTest, TimingOnTwosAndBack) {
    Expose(*drawing, "AAABC__C");
    const SetState start = StateOf(*set);
    DC_RestoreTimingCommand twos(*set, DC_CellSelection::OfElement(scene->SceneId(), drawing->GetId(), 1, 4),
                                 2);
    ASSERT_TRUE(twos.Run(DC_RestoreTimingCommand::kName));
    EXPECT_EQ(Shown(*drawing), "AABBCC__C") << "from the start of the run at frame 2 on";
    const SetState onTwos = StateOf(*set);
    set->History().Undo();
    EXPECT_EQ(Shown(*drawing), "AAABC__C");
    EXPECT_EQ(StateOf(*set), start);
    set->History().Redo();
    EXPECT_EQ(StateOf(*set), onTwos);

    // Only the run at the first frame: the whole flag.
    DC_RestoreTimingCommand hold(*set, DC_CellSelection::OfElement(scene->SceneId(), drawing->GetId(), 3, 8),
                                 4, true);
    ASSERT_TRUE(hold.Run(DC_RestoreTimingCommand::kName));
    EXPECT_EQ(Shown(*drawing), "AABBBBCC__C");
    set->History().Undo();
    EXPECT_EQ(StateOf(*set), onTwos);

    // Nothing to retime in a sound element: the command fails and says so.
    DC_RestoreTimingCommand wrong(*set, DC_CellSelection::OfElement(scene->SceneId(), sound->GetId(), 0, 3),
                                  2);
    EXPECT_EQ(wrong.Execute(), nullptr);
}

} // namespace
