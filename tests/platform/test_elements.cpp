// The Element menu of the main window: every change goes through the set's history, the
// timeline follows, and Undo from the Edit menu gives back the set as it was, byte for byte.

#include "GuiTestSupport.h"
#include "animationset/AS_BaseLevelElement.h"
#include "animationset/SetTestUtil.h"
#include "platform/GUT_ElementCommands.h"
#include "platform/GUT_ElementPropertiesWnd.h"
#include "platform/GUT_TimelineWnd.h"

#include <QDoubleSpinBox>
#include <QInputDialog>
#include <QTest>
#include <tuple>

namespace {

// Every field of a placement, for comparing two exactly.
auto Fields(const AS_Placement& p) {
    return std::tuple(p.offset.x, p.offset.y, p.offset.z, p.rotationPivot.x, p.rotationPivot.y,
                      p.scalePivot.x, p.scalePivot.y, p.startFrame, p.rotation, p.verticalScale,
                      p.horizontalScale, p.elementType, p.keepProportions);
}

class ElementMenuTest : public ShellTest {
protected:
    void SetUp() override {
        ShellTest::SetUp();
        Start();
        NewDocument("Reel");
    }

    CAnimationSetObj& Set() const { return *Document()->Set(); }
    CDopeSheetObj& Scene() const { return *Set().CurrentScene(); }
    GUT_ElementCommands& Elements() const { return *Frame().Elements(); }
    AS_CellIteratorObservable& Cell() const { return AS_CellIteratorObservable::Instance(); }

    // The names in the timeline's row headers, top to bottom.
    QStringList Rows() const {
        QStringList names;
        for (const GUT_TimelineWnd::Row& row : Frame().Timeline()->Rows())
            names << row.name;
        return names;
    }
    QString CurrentName() const {
        const AS_DopeSheetLevelObj* level = Elements().Current();
        return level ? QString::fromStdU16String(level->GetDisplayName()) : QString();
    }
    bool Enabled(uint32_t id) const {
        QApplication::processEvents();
        return Frame().Action(id)->isEnabled();
    }
    // A click on the row header of the timeline.
    void ClickRow(int row) const {
        GUT_TimelineWnd& timeline = *Frame().Timeline();
        ASSERT_GE(row, 0);
        QTest::mouseClick(timeline.viewport(), Qt::LeftButton, {}, timeline.RowHeaderRect(row).center());
        ASSERT_EQ(Cell().LevelIndex(), row);
    }
    // Undoes or redoes `count` steps from the Edit menu.
    void Repeat(uint32_t id, int count) {
        for (int i = 0; i < count; ++i)
            ASSERT_TRUE(Run(id)) << i;
    }
};

TEST_F(ElementMenuTest, AddRenameCloneChangeAndDeleteUndoToTheSameBytes) {
    const SetState before = StateOf(Set());
    const QStringList rows = Rows();

    ASSERT_TRUE(Run(kCmdElementNewDrawing));
    ASSERT_EQ(Rows().size(), rows.size() + 1);
    // The new element is the current cell's, and the timeline marks its row.
    const uint32_t added = Elements().Current()->GetId();
    EXPECT_EQ(Frame().Timeline()->Rows()[static_cast<size_t>(Cell().LevelIndex())].id, added);
    EXPECT_TRUE(Rows().contains(CurrentName()));

    {
        ModalScript script;
        script.Then(ModalScript::Answer("Rename Element", "Arm"));
        ASSERT_TRUE(Run(kCmdElementRename));
    }
    EXPECT_EQ(CurrentName(), "Arm");
    EXPECT_TRUE(Rows().contains("Arm"));
    // A name another element has is refused with a message and changes nothing.
    messages.messages.clear();
    ASSERT_NE(Scene().FindElementByName(u"Drawing"), nullptr);
    EXPECT_FALSE(Elements().Rename(added, u"Drawing"));
    EXPECT_EQ(messages.messages.size(), 1u);
    EXPECT_EQ(CurrentName(), "Arm");

    ASSERT_TRUE(Run(kCmdElementClone));
    EXPECT_NE(Elements().Current()->GetId(), added);
    EXPECT_TRUE(CurrentName().startsWith("Arm(")) << CurrentName().toStdString();
    EXPECT_EQ(Rows().size(), rows.size() + 2);

    // Properties: the fields the user changed, and nothing else, as one step.
    const auto* placed = dynamic_cast<const AS_BaseLevelElement*>(Elements().Current());
    ASSERT_NE(placed, nullptr);
    const AS_Placement old = placed->Placement();
    {
        ModalScript script;
        script.Then([](QWidget* modal) {
            auto* window = dynamic_cast<GUT_ElementPropertiesWnd*>(modal);
            ASSERT_NE(window, nullptr) << modal->windowTitle().toStdString();
            window->RotationField()->setValue(30);
            window->OffsetField(0)->setValue(12.5);
            ModalScript::Accept(window);
        });
        ASSERT_TRUE(Run(kCmdElementProperties));
    }
    AS_Placement expected = old;
    expected.rotation = 30;
    expected.offset.x = 12.5;
    EXPECT_EQ(Fields(placed->Placement()), Fields(expected));
    ASSERT_TRUE(Run(kCmdEditUndo));
    EXPECT_EQ(Fields(placed->Placement()), Fields(old));
    ASSERT_TRUE(Run(kCmdEditRedo));
    EXPECT_EQ(Fields(placed->Placement()), Fields(expected));

    const uint32_t clone = Elements().Current()->GetId();
    ASSERT_TRUE(Run(kCmdElementDelete));
    EXPECT_TRUE(Scene().IsRemoved(clone));
    EXPECT_EQ(Rows().size(), rows.size() + 1);
    const QStringList after = Rows();
    const SetState changed = StateOf(Set());

    Repeat(kCmdEditUndo, 5);
    EXPECT_FALSE(Frame().Action(kCmdEditUndo)->isEnabled());
    EXPECT_EQ(Rows(), rows);
    EXPECT_TRUE(StateOf(Set()) == before);
    Repeat(kCmdEditRedo, 5);
    EXPECT_EQ(Rows(), after);
    EXPECT_TRUE(StateOf(Set()) == changed);
}

TEST_F(ElementMenuTest, NoteAndRowMovesInTheDrawingOrder) {
    ASSERT_TRUE(Run(kCmdElementNewDrawing));
    const uint32_t added = Elements().Current()->GetId();
    {
        ModalScript script;
        script.Then(ModalScript::Answer("Element Note", "Keep the arm\nbehind the body"));
        ASSERT_TRUE(Run(kCmdElementNote));
    }
    EXPECT_EQ(Scene().FindElement(added)->GetNote(), u"Keep the arm\nbehind the body");

    // The new row is the last one: it moves up past the row above it, and no further down.
    const int row = Cell().LevelIndex();
    ASSERT_EQ(row + 1, static_cast<int>(Rows().size()));
    EXPECT_FALSE(Enabled(kCmdElementMoveDown));
    const QString above = Rows().at(row - 1);
    const QString name = CurrentName();
    ASSERT_TRUE(Run(kCmdElementMoveUp));
    EXPECT_EQ(CurrentName(), name);
    EXPECT_EQ(Rows().at(row - 1), name);
    EXPECT_EQ(Rows().at(row), above);
    EXPECT_EQ(Cell().LevelIndex(), row - 1) << "the cell goes with the element";
    EXPECT_EQ(Scene().DrawingOrder().FindRow(added), row - 1);

    ASSERT_TRUE(Run(kCmdEditUndo));
    EXPECT_EQ(Rows().at(row), name);
    EXPECT_EQ(Rows().at(row - 1), above);
    ASSERT_TRUE(Run(kCmdEditUndo));
    EXPECT_TRUE(Scene().FindElement(added)->GetNote().empty());
}

TEST_F(ElementMenuTest, SceneplanningTreeReparentMoveAndDeleteWithChildren) {
    ASSERT_TRUE(Run(kCmdSceneplanningMode));
    const SetState before = StateOf(Set());
    ASSERT_TRUE(Run(kCmdElementNewPeg));
    const uint32_t peg = Elements().Current()->GetId();
    const QString pegName = CurrentName();
    ASSERT_TRUE(Run(kCmdElementNewDrawing));
    const uint32_t drawing = Elements().Current()->GetId();
    auto rowOf = [this](uint32_t id) {
        const auto& rows = Frame().Timeline()->Rows();
        for (size_t i = 0; i < rows.size(); ++i)
            if (rows[i].id == id)
                return static_cast<int>(i);
        return -1;
    };
    EXPECT_EQ(Frame().Timeline()->Rows()[static_cast<size_t>(rowOf(drawing))].depth, 0);

    {
        ModalScript script;
        script.Then(ModalScript::Answer("Change Parent", pegName));
        ASSERT_TRUE(Run(kCmdElementParent));
    }
    const AS_SPCompositionOrder& order = Scene().SceneplanningOrder();
    EXPECT_EQ(order.GetParentOfLevel(drawing), order.FindRow(peg));
    // Below its parent in the timeline, one step in.
    EXPECT_EQ(rowOf(drawing), rowOf(peg) + 1);
    EXPECT_EQ(Frame().Timeline()->Rows()[static_cast<size_t>(rowOf(drawing))].depth, 1);
    EXPECT_EQ(Elements().Current()->GetId(), drawing);
    // An element never goes below itself or its own children.
    const std::vector<uint32_t> candidates = Elements().ParentCandidates(peg);
    EXPECT_EQ(std::count(candidates.begin(), candidates.end(), drawing), 0);
    EXPECT_EQ(std::count(candidates.begin(), candidates.end(), peg), 0);
    // Alone below its parent, the drawing has nowhere to move.
    EXPECT_FALSE(Frame().Action(kCmdElementMoveUp)->isEnabled() && Run(kCmdElementMoveUp));

    // The peg and the top row above it trade places; its child goes with it.
    ClickRow(rowOf(peg));
    if (rowOf(peg) > 0) {
        const int pegRow = rowOf(peg);
        ASSERT_TRUE(Run(kCmdElementMoveUp));
        EXPECT_LT(rowOf(peg), pegRow);
        EXPECT_EQ(rowOf(drawing), rowOf(peg) + 1);
        ASSERT_TRUE(Run(kCmdEditUndo));
        EXPECT_EQ(rowOf(peg), pegRow);
    }

    // Deleting the peg takes its child, once the user agrees; Cancel keeps both.
    ClickRow(rowOf(peg));
    messages.answers = {UT_MessageHandler::kCancel};
    EXPECT_FALSE(Run(kCmdElementDelete));
    EXPECT_EQ(messages.questions.size(), 1u);
    EXPECT_FALSE(Scene().IsRemoved(peg) || Scene().IsRemoved(drawing));
    messages.answers = {UT_MessageHandler::kOk};
    ASSERT_TRUE(Run(kCmdElementDelete));
    EXPECT_TRUE(Scene().IsRemoved(peg) && Scene().IsRemoved(drawing));
    EXPECT_EQ(rowOf(peg), -1);
    EXPECT_EQ(rowOf(drawing), -1);

    // One step gives both back, and the rest goes back to the bytes of the start.
    ASSERT_TRUE(Run(kCmdEditUndo));
    EXPECT_EQ(rowOf(drawing), rowOf(peg) + 1);
    Repeat(kCmdEditUndo, 3);
    EXPECT_TRUE(StateOf(Set()) == before);
}

} // namespace
