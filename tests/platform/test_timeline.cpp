// The timeline as the user works it: clicks and keys move the current cell, typed names
// expose drawings, the Exposure menu changes the cells through the history, and Undo gives
// the set back byte for byte.

#include "GuiTestSupport.h"
#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/SetTestUtil.h"
#include "platform/GUT_TimelineWnd.h"

#include <QLineEdit>
#include <QTest>

namespace {

using Cell = GUT_TimelineWnd::Cell;

class TimelineTest : public ShellTest {
protected:
    void SetUp() override {
        ShellTest::SetUp();
        Start();
        NewDocument("Reel");
        Frame().resize(1000, 700);
        Frame().show();
        QApplication::processEvents();
        level = dynamic_cast<AS_DrawingLevelObj*>(Set().CurrentScene()->FindElementByName(u"Drawing"));
        ASSERT_NE(level, nullptr);
        const auto& rows = Timeline().Rows();
        for (size_t i = 0; i < rows.size(); ++i)
            if (rows[i].id == level->GetId())
                row = static_cast<int32_t>(i);
        ASSERT_GE(row, 0);
    }

    CAnimationSetObj& Set() const { return *Document()->Set(); }
    GUT_TimelineWnd& Timeline() const { return *Frame().Timeline(); }
    AS_CellIteratorObservable& Current() const { return AS_CellIteratorObservable::Instance(); }

    void Click(int32_t frame, Qt::KeyboardModifiers modifiers = {}) const {
        QTest::mouseClick(Timeline().viewport(), Qt::LeftButton, modifiers,
                          Timeline().CellRect(frame, row).center());
    }
    // Types a name into the current cell and presses Enter, as the user does.
    void Type(const QString& name) const {
        QTest::keyClicks(&Timeline(), name.left(1));
        QLineEdit* editor = Timeline().Editor();
        ASSERT_NE(editor, nullptr);
        QTest::keyClicks(editor, name.mid(1));
        EXPECT_EQ(editor->text(), name);
        QTest::keyClick(editor, Qt::Key_Return);
        EXPECT_EQ(Timeline().Editor(), nullptr);
    }
    // What the row shows from frame 0 on: a name where a run starts, "-" where a drawing
    // is held, "." where the cell is blank.
    QStringList Shown(int32_t frames) const {
        QStringList cells;
        for (int32_t frame = 0; frame < frames; ++frame) {
            const Cell cell = Timeline().CellAt(frame, row);
            cells << (cell.kind == Cell::kRunStart ? cell.text : cell.kind == Cell::kHeld ? "-" : ".");
        }
        return cells;
    }

    AS_DrawingLevelObj* level = nullptr;
    int32_t row = -1;
};

TEST_F(TimelineTest, TypedNamesAndTheExposureMenuReachTheModelAndUndo) {
    const SetState before = StateOf(Set());
    Click(0);
    EXPECT_EQ(Current().Cell(), (AS_CellPosition{0, row}));
    // Nothing to change on blank cells.
    QApplication::processEvents();
    EXPECT_FALSE(Frame().Action(kCmdCellTwos)->isEnabled());
    EXPECT_FALSE(Run(kCmdCellTwos));

    // A name, and the cursor goes on to the next frame for the next one.
    Type("1");
    EXPECT_EQ(Current().Cell(), (AS_CellPosition{1, row}));
    Type("2");
    EXPECT_EQ(Shown(3), (QStringList{"1", "2", "."}));
    const uint32_t one = level->DrawingIdAt(0);
    EXPECT_NE(one, AS_kInvalidId);
    EXPECT_NE(level->DrawingIdAt(1), one);

    // Shift+click selects; twos hold each drawing of the selection for two frames.
    Click(0);
    Click(1, Qt::ShiftModifier);
    EXPECT_EQ(Current().SelectedFrames().front(), (AS_FrameRange{0, 2}));
    ASSERT_TRUE(Run(kCmdCellTwos));
    EXPECT_EQ(Shown(5), (QStringList{"1", "-", "2", "-", "."}));
    EXPECT_EQ(level->DrawingIdAt(1), one);

    // One frame more of the run under the cursor, then one frame less.
    Click(2);
    ASSERT_TRUE(Run(kCmdCellExtendRun));
    EXPECT_EQ(Shown(5), (QStringList{"1", "-", "2", "-", "-"}));
    ASSERT_TRUE(Run(kCmdCellShortenRun));
    EXPECT_EQ(Shown(5), (QStringList{"1", "-", "2", "-", "."}));

    // Remove takes the cell out and the rest moves up; Insert puts a blank in front.
    Click(0);
    ASSERT_TRUE(Run(kCmdCellRemove));
    EXPECT_EQ(Shown(4), (QStringList{"1", "2", "-", "."}));
    ASSERT_TRUE(Run(kCmdCellInsert));
    EXPECT_EQ(Shown(5), (QStringList{".", "1", "2", "-", "."}));

    // A typed name over a selection relabels all of it.
    Click(2);
    Click(3, Qt::ShiftModifier);
    Type("7");
    EXPECT_EQ(Shown(5), (QStringList{".", "1", "7", "-", "."}));
    // Clear empties the cells and keeps the frames where they are.
    Click(1);
    ASSERT_TRUE(Run(kCmdCellClear));
    EXPECT_EQ(Shown(5), (QStringList{".", ".", "7", "-", "."}));
    const QStringList after = Shown(5);
    const SetState changed = StateOf(Set());

    int steps = 0;
    while (Frame().Action(kCmdEditUndo)->isEnabled()) {
        ASSERT_TRUE(Run(kCmdEditUndo));
        ASSERT_LT(++steps, 20);
    }
    EXPECT_EQ(steps, 9);
    EXPECT_EQ(Shown(5), (QStringList{".", ".", ".", ".", "."}));
    EXPECT_TRUE(StateOf(Set()) == before);
    for (int i = 0; i < steps; ++i)
        ASSERT_TRUE(Run(kCmdEditRedo));
    EXPECT_EQ(Shown(5), after);
    EXPECT_TRUE(StateOf(Set()) == changed);
}

TEST_F(TimelineTest, KeysMoveTheCellAndBadNamesAreRefused) {
    Click(3);
    QTest::keyClick(&Timeline(), Qt::Key_Right);
    EXPECT_EQ(Current().Cell(), (AS_CellPosition{4, row}));
    QTest::keyClick(&Timeline(), Qt::Key_Left, Qt::ShiftModifier);
    QTest::keyClick(&Timeline(), Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_EQ(Current().Cell(), (AS_CellPosition{2, row}));
    EXPECT_EQ(Current().SelectedFrames().front(), (AS_FrameRange{2, 2}));
    QTest::keyClick(&Timeline(), Qt::Key_Home);
    EXPECT_EQ(Current().Cell(), (AS_CellPosition{0, row}));
    EXPECT_TRUE(Current().IsSingleCell());

    // Escape leaves the editor without a change; a name with a slash is refused.
    QTest::keyClicks(&Timeline(), "9");
    ASSERT_NE(Timeline().Editor(), nullptr);
    QTest::keyClick(Timeline().Editor(), Qt::Key_Escape);
    EXPECT_EQ(Timeline().Editor(), nullptr);
    EXPECT_EQ(level->DrawingIdAt(0), AS_kInvalidId);
    messages.messages.clear();
    Type("a/b");
    EXPECT_EQ(level->DrawingIdAt(0), AS_kInvalidId);
    ASSERT_EQ(messages.messages.size(), 1u);
    EXPECT_FALSE(Frame().Action(kCmdEditUndo)->isEnabled());

    // The timeline follows whoever moves the current cell.
    Current().SetCell({6, row});
    Current().SelectCurrentCell();
    Current().NotifyMove(nullptr);
    Type("5");
    EXPECT_NE(level->DrawingIdAt(6), AS_kInvalidId);
    EXPECT_EQ(Timeline().CellAt(6, row), (Cell{Cell::kRunStart, "5"}));

    // The keys of the Exposure menu, while the timeline has the focus: Insert puts a blank
    // cell in front, Delete clears.
    Frame().activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&Frame()));
    Click(6);
    ASSERT_TRUE(Timeline().hasFocus());
    // The commands follow the cell once the event loop turns, as it does between two keys.
    QApplication::processEvents();
    QTest::keyClick(&Timeline(), Qt::Key_Insert);
    EXPECT_EQ(Timeline().CellAt(7, row), (Cell{Cell::kRunStart, "5"}));
    Click(7);
    QApplication::processEvents();
    QTest::keyClick(&Timeline(), Qt::Key_Delete);
    EXPECT_EQ(level->DrawingIdAt(7), AS_kInvalidId);
}

} // namespace
