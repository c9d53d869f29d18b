// The scene list and the Undo and Redo commands: every change runs through the set's
// history, and the list follows the notifications of changes, undos and redos alike.

#include "GuiTestSupport.h"
#include "animationset/CDopeSheetObj.h"
#include "core/UT_CommandHistory.h"
#include "platform/GUT_Commands.h"
#include "platform/GUT_NewAnimationWnd.h"
#include "platform/GUT_PropertiesWnd.h"
#include "platform/GUT_SceneListWnd.h"

#include <QDockWidget>
#include <QLineEdit>
#include <QListView>
#include <QMimeData>
#include <QTest>

namespace {

class SceneListTest : public ShellTest {
protected:
    void SetUp() override {
        ShellTest::SetUp();
        Start();
        NewDocument("Reel");
        ASSERT_TRUE(Run(kCmdFileSave));
    }

    CAnimationSetObj& Set() const { return *Document()->Set(); }
    GUT_SceneListWnd& List() const { return *Frame().SceneList(); }
    QAbstractItemModel& Rows() const { return *List().Model(); }

    // The rows of the list, and the names of the set's sequence: always the same.
    QStringList Shown() const {
        QStringList rows;
        for (int i = 0; i < Rows().rowCount(); ++i)
            rows << Rows().index(i, 0).data().toString();
        QStringList sequence;
        for (const CDopeSheetObj* scene : Set().Sequence())
            sequence << QString::fromStdU16String(scene->Name());
        EXPECT_EQ(rows, sequence);
        return rows;
    }
    // The menu text once the event loop has turned, as the user sees it.
    QString Text(uint32_t id) const {
        QApplication::processEvents();
        return Frame().Action(id)->text();
    }
    QString CurrentName() const { return QString::fromStdU16String(Set().CurrentScene()->Name()); }
};

TEST_F(SceneListTest, AddAndDeleteWithUndoAndRedo) {
    EXPECT_FALSE(Frame().SceneListDock()->isHidden());
    EXPECT_EQ(Shown(), QStringList{"Scene-1"});
    EXPECT_FALSE(Frame().Action(kCmdEditUndo)->isEnabled());
    EXPECT_EQ(Text(kCmdEditUndo), "&Undo\tCtrl+Z");
    // The last scene cannot go.
    EXPECT_FALSE(Frame().Action(kCmdSceneDelete)->isEnabled());
    EXPECT_FALSE(Run(kCmdSceneDelete));

    ASSERT_TRUE(Run(kCmdSceneAdd));
    EXPECT_EQ(Shown(), (QStringList{"Scene-1", "Scene-2"}));
    EXPECT_EQ(CurrentName(), "Scene-2");
    EXPECT_EQ(List().View()->currentIndex().row(), 1);
    EXPECT_EQ(Text(kCmdEditUndo), "&Undo Add Scene\tCtrl+Z");
    EXPECT_TRUE(Frame().isWindowModified());

    // A new scene goes after the current one.
    List().ActivateScene(1);
    ASSERT_TRUE(Run(kCmdSceneAdd));
    EXPECT_EQ(Shown(), (QStringList{"Scene-1", "Scene-3", "Scene-2"}));

    ASSERT_TRUE(Run(kCmdSceneDelete));
    EXPECT_EQ(Shown(), (QStringList{"Scene-1", "Scene-2"}));
    EXPECT_EQ(Text(kCmdEditUndo), "&Undo Delete Scene\tCtrl+Z");

    ASSERT_TRUE(Run(kCmdEditUndo));
    EXPECT_EQ(Shown(), (QStringList{"Scene-1", "Scene-3", "Scene-2"}));
    EXPECT_EQ(Text(kCmdEditRedo), "&Redo Delete Scene\tCtrl+Y");
    ASSERT_TRUE(Run(kCmdEditUndo));
    ASSERT_TRUE(Run(kCmdEditUndo));
    EXPECT_EQ(Shown(), QStringList{"Scene-1"});
    // Back where it was saved.
    EXPECT_FALSE(Frame().isWindowModified());
    EXPECT_FALSE(Frame().Action(kCmdEditUndo)->isEnabled());

    ASSERT_TRUE(Run(kCmdEditRedo));
    EXPECT_EQ(Shown(), (QStringList{"Scene-1", "Scene-2"}));
    EXPECT_TRUE(Frame().isWindowModified());
}

TEST_F(SceneListTest, RenameInPlaceWithTheSetsRules) {
    ASSERT_TRUE(Run(kCmdSceneAdd));
    const QModelIndex first = Rows().index(0, 0);
    EXPECT_TRUE(Rows().flags(first) & Qt::ItemIsEditable);

    EXPECT_TRUE(Rows().setData(first, " Intro ", Qt::EditRole));
    EXPECT_EQ(Shown(), (QStringList{"Intro", "Scene-2"}));
    EXPECT_EQ(Text(kCmdEditUndo), "&Undo Change Scene Properties\tCtrl+Z");

    EXPECT_FALSE(Rows().setData(first, "Scene-2", Qt::EditRole));
    EXPECT_FALSE(Rows().setData(first, "a/b", Qt::EditRole));
    ASSERT_EQ(messages.messages.size(), 2u);
    EXPECT_EQ(messages.messages[0].text,
              u"This name is already used by another scene; please choose a different one.");
    EXPECT_EQ(messages.messages[1].text,
              u"This name contains invalid characters; please choose a different one.");
    EXPECT_EQ(Shown(), (QStringList{"Intro", "Scene-2"}));

    ASSERT_TRUE(Run(kCmdEditUndo));
    EXPECT_EQ(Shown(), (QStringList{"Scene-1", "Scene-2"}));

    // The menu's Rename edits the current scene's row in place.
    ASSERT_TRUE(Run(kCmdSceneRename));
    EXPECT_EQ(List().View()->currentIndex().row(), 1);
    const auto* editor = List().View()->findChild<QLineEdit*>();
    ASSERT_NE(editor, nullptr);
    EXPECT_EQ(editor->text(), "Scene-2");
}

TEST_F(SceneListTest, ReorderByDragging) {
    ASSERT_TRUE(Run(kCmdSceneAdd));
    ASSERT_TRUE(Run(kCmdSceneAdd));
    EXPECT_EQ(Shown(), (QStringList{"Scene-1", "Scene-2", "Scene-3"}));

    // An internal move of the list view: the first row dropped below the last.
    EXPECT_TRUE(Rows().moveRows(QModelIndex(), 0, 1, QModelIndex(), 3));
    EXPECT_EQ(Shown(), (QStringList{"Scene-2", "Scene-3", "Scene-1"}));
    EXPECT_EQ(Text(kCmdEditUndo), "&Undo Reorder Scene\tCtrl+Z");

    // A drop of the dragged row's data: the last row before the first.
    const std::unique_ptr<QMimeData> dragged(Rows().mimeData({Rows().index(2, 0)}));
    ASSERT_NE(dragged, nullptr);
    EXPECT_FALSE(Rows().dropMimeData(dragged.get(), Qt::MoveAction, 0, 0, QModelIndex()));
    EXPECT_EQ(Shown(), (QStringList{"Scene-1", "Scene-2", "Scene-3"}));

    // Onto a row means before it; onto itself or just below changes nothing.
    const std::unique_ptr<QMimeData> middle(Rows().mimeData({Rows().index(1, 0)}));
    EXPECT_FALSE(Rows().dropMimeData(middle.get(), Qt::MoveAction, -1, -1, Rows().index(0, 0)));
    EXPECT_EQ(Shown(), (QStringList{"Scene-2", "Scene-1", "Scene-3"}));
    const size_t entries = Set().History().UndoList().size();
    EXPECT_FALSE(Rows().moveRows(QModelIndex(), 1, 1, QModelIndex(), 2) &&
                 Set().History().UndoList().size() != entries);
    EXPECT_EQ(Set().History().UndoList().size(), entries);

    ASSERT_TRUE(Run(kCmdEditUndo));
    ASSERT_TRUE(Run(kCmdEditUndo));
    EXPECT_EQ(Shown(), (QStringList{"Scene-2", "Scene-3", "Scene-1"}));
    ASSERT_TRUE(Run(kCmdEditUndo));
    EXPECT_EQ(Shown(), (QStringList{"Scene-1", "Scene-2", "Scene-3"}));
}

TEST_F(SceneListTest, VisibilityByCheckBoxAndMenu) {
    const QModelIndex first = Rows().index(0, 0);
    EXPECT_EQ(first.data(Qt::CheckStateRole).toInt(), Qt::Checked);
    EXPECT_EQ(Text(kCmdSceneToggleVisibility), "&Hide Scene");

    EXPECT_TRUE(Rows().setData(first, Qt::Unchecked, Qt::CheckStateRole));
    EXPECT_FALSE(Set().Sequence()[0]->IsVisible());
    EXPECT_EQ(Rows().index(0, 0).data(Qt::CheckStateRole).toInt(), Qt::Unchecked);
    EXPECT_TRUE(Rows().index(0, 0).data(Qt::FontRole).value<QFont>().italic());
    EXPECT_EQ(Text(kCmdEditUndo), "&Undo Hide Scene\tCtrl+Z");
    EXPECT_EQ(Text(kCmdSceneToggleVisibility), "S&how Scene");

    ASSERT_TRUE(Run(kCmdSceneToggleVisibility));
    EXPECT_TRUE(Set().Sequence()[0]->IsVisible());
    EXPECT_EQ(Text(kCmdEditUndo), "&Undo Show Scene\tCtrl+Z");
    ASSERT_TRUE(Run(kCmdEditUndo));
    EXPECT_FALSE(Set().Sequence()[0]->IsVisible());
    EXPECT_EQ(Rows().index(0, 0).data(Qt::CheckStateRole).toInt(), Qt::Unchecked);
}

TEST_F(SceneListTest, AClickMakesASceneCurrentWithoutAnEntryInTheHistory) {
    ASSERT_TRUE(Run(kCmdSceneAdd));
    Frame().resize(900, 600);
    QApplication::processEvents();
    const size_t entries = Set().History().UndoList().size();
    QListView* view = List().View();
    const QRect row = view->visualRect(Rows().index(0, 0));
    // Away from the check box at the row's left end.
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, QPoint(row.right() - 10, row.center().y()));
    EXPECT_EQ(CurrentName(), "Scene-1");
    EXPECT_TRUE(Rows().index(0, 0).data(Qt::FontRole).value<QFont>().bold());
    EXPECT_EQ(Set().History().UndoList().size(), entries);
}

TEST_F(SceneListTest, UndoGoesBackToTheModeAndSceneOfTheChange) {
    ASSERT_TRUE(Run(kCmdSceneplanningMode));
    ASSERT_TRUE(Run(kCmdSceneAdd));
    ASSERT_TRUE(Rows().setData(Rows().index(1, 0), "Chase", Qt::EditRole));
    ASSERT_TRUE(Run(kCmdDrawingMode));
    List().ActivateScene(1);
    EXPECT_EQ(CurrentName(), "Scene-1");

    ASSERT_TRUE(Run(kCmdEditUndo));
    EXPECT_TRUE(Frame().IsSceneplanningMode());
    EXPECT_TRUE(Set().IsSceneplanningMode());
    EXPECT_EQ(Shown(), (QStringList{"Scene-1", "Scene-2"}));
    EXPECT_EQ(CurrentName(), "Scene-2");
    EXPECT_TRUE(Frame().Action(kCmdSceneplanningMode)->isChecked());
}

TEST_F(SceneListTest, AnimationPropertiesRunThroughTheHistory) {
    auto answer = [](const char* frameRate) {
        return [=](QWidget* modal) {
            auto* window = dynamic_cast<GUT_PropertiesWnd*>(modal);
            ASSERT_NE(window, nullptr);
            EXPECT_EQ(window->FrameRateField()->text(), "12");
            window->FrameRateField()->setText(QString::fromLatin1(frameRate));
            window->WidthField()->setText("640");
            ModalScript::Accept(window);
        };
    };
    {
        ModalScript script;
        script.Then([](QWidget* modal) { ModalScript::Reject(modal); });
        EXPECT_FALSE(Run(kCmdFileProperties));
    }
    {
        // A refused value keeps the sheet open; Cancel then changes nothing.
        ModalScript script;
        script.Then(answer("0")).Then([](QWidget* modal) { ModalScript::Reject(modal); });
        EXPECT_FALSE(Run(kCmdFileProperties));
        EXPECT_TRUE(script.Done());
        ASSERT_EQ(messages.messages.size(), 1u);
        EXPECT_EQ(messages.messages[0].text, u"The minimum value is 1");
    }
    EXPECT_FALSE(Set().History().CanUndo());
    {
        ModalScript script;
        script.Then(answer("24"));
        ASSERT_TRUE(Run(kCmdFileProperties));
    }
    EXPECT_EQ(Set().FrameRate(), 24u);
    EXPECT_EQ(Set().CameraWidth(), 640u);
    EXPECT_EQ(Text(kCmdEditUndo), "&Undo Change Animation Properties\tCtrl+Z");
    ASSERT_TRUE(Run(kCmdEditUndo));
    EXPECT_EQ(Set().FrameRate(), 12u);
    EXPECT_EQ(Set().CameraWidth(), 500u);
}

} // namespace
