// The palette dock: palettes, colours and flavors changed from the Palette menu and the
// panel, each through the set's history; the panel follows undo and redo like any change.

#include "GuiTestSupport.h"
#include "animationset/SetTestUtil.h"
#include "colour/CM_Color.h"
#include "platform/GUT_PaletteWnd.h"
#include "platform/GUT_TintWnd.h"

#include <QAbstractItemModel>
#include <QColorDialog>
#include <QComboBox>
#include <QDockWidget>
#include <QInputDialog>
#include <QListView>
#include <QSpinBox>

namespace {

class PaletteDockTest : public ShellTest {
protected:
    void SetUp() override {
        ShellTest::SetUp();
        Start();
        NewDocument("Reel");
    }

    CAnimationSetObj& Set() const { return *Document()->Set(); }
    GUT_PaletteWnd& Panel() const { return *Frame().Palettes(); }
    // The palettes in the panel's box, and the names of the set's list: always the same.
    QStringList Palettes() const {
        QStringList shown;
        for (int i = 0; i < Panel().PaletteBox()->count(); ++i)
            shown << Panel().PaletteBox()->itemText(i);
        QStringList names;
        for (size_t i = 0; i < Set().PaletteList().GetPaletteCount(); ++i)
            names << QString::fromStdU16String(Set().PaletteList().GetPalette(i)->GetName());
        EXPECT_EQ(shown, names);
        return shown;
    }
    QString Swatch(int row, int role = Qt::DisplayRole) const {
        return Panel().SwatchModel()->index(row, 0).data(role).toString();
    }
    int SwatchCount() const { return Panel().SwatchModel()->rowCount(); }
    int SelectedRow() const { return Panel().Swatches()->currentIndex().row(); }
    bool Enabled(uint32_t id) const {
        QApplication::processEvents();
        return Frame().Action(id)->isEnabled();
    }
};

TEST_F(PaletteDockTest, PalettesAndColoursUndoToTheSameBytes) {
    EXPECT_FALSE(Frame().PaletteDock()->isHidden());
    const QStringList palettes = Palettes();
    ASSERT_FALSE(palettes.isEmpty());
    EXPECT_EQ(SwatchCount(), 120) << "the default palette";
    EXPECT_EQ(Swatch(1), "Color 2");
    EXPECT_TRUE(Swatch(1, Qt::ToolTipRole).contains("#FF0000")) << Swatch(1, Qt::ToolTipRole).toStdString();
    // Nothing selected: nothing to edit or delete.
    EXPECT_FALSE(Enabled(kCmdColourEdit));
    EXPECT_FALSE(Run(kCmdColourDelete));
    const SetState before = StateOf(Set());

    {
        ModalScript script;
        script.Then(ModalScript::Answer("New Palette", "Skin"));
        ASSERT_TRUE(Run(kCmdPaletteNew));
    }
    EXPECT_EQ(Palettes(), QStringList(palettes) << "Skin");
    EXPECT_EQ(Panel().PaletteBox()->currentText(), "Skin");
    EXPECT_EQ(SwatchCount(), 0);

    // A new colour is white and selected, ready to edit.
    ASSERT_TRUE(Run(kCmdColourNew));
    ASSERT_EQ(SwatchCount(), 1);
    EXPECT_EQ(Swatch(0), "Color 1");
    EXPECT_EQ(SelectedRow(), 0);
    EXPECT_TRUE(Swatch(0, Qt::ToolTipRole).contains("#FFFFFF"));
    {
        ModalScript script;
        script.Then([](QWidget* modal) {
            auto* dialog = qobject_cast<QColorDialog*>(modal);
            ASSERT_NE(dialog, nullptr) << modal->windowTitle().toStdString();
            EXPECT_EQ(dialog->windowTitle(), "Edit Color: Color 1");
            dialog->setCurrentColor(QColor(10, 20, 30));
            ModalScript::Accept(dialog);
        });
        ASSERT_TRUE(Run(kCmdColourEdit));
    }
    const auto* colour = dynamic_cast<const CM_Color*>(Panel().CurrentEntry());
    ASSERT_NE(colour, nullptr);
    EXPECT_EQ(colour->Stops().front().colour, (BM_Rgba{10, 20, 30, 255}));
    EXPECT_TRUE(Swatch(0, Qt::ToolTipRole).contains("#0A141E"));
    // The next colour copies the selected one, and goes after it.
    ASSERT_TRUE(Run(kCmdColourNew));
    EXPECT_EQ(Swatch(1), "Color 2");
    EXPECT_EQ(SelectedRow(), 1);
    EXPECT_TRUE(Swatch(1, Qt::ToolTipRole).contains("#0A141E"));

    // Renamed in place, through the list's editor; an empty name is refused.
    QAbstractItemModel& model = *Panel().SwatchModel();
    ASSERT_TRUE(model.setData(model.index(0, 0), "Lips", Qt::EditRole));
    EXPECT_EQ(Swatch(0), "Lips");
    messages.messages.clear();
    EXPECT_FALSE(model.setData(model.index(0, 0), " ", Qt::EditRole));
    EXPECT_EQ(messages.messages.size(), 1u);
    EXPECT_EQ(Swatch(0), "Lips");

    // Deleting selects the neighbour.
    Panel().SelectEntry(Panel().CurrentPalette()->GetEntry(0)->GetId());
    ASSERT_TRUE(Run(kCmdColourDelete));
    EXPECT_EQ(SwatchCount(), 1);
    EXPECT_EQ(Swatch(0), "Color 2");
    EXPECT_EQ(SelectedRow(), 0);
    const SetState changed = StateOf(Set());

    // Six steps back: the panel shows the palettes as they were, and the bytes are the same.
    for (int i = 0; i < 6; ++i)
        ASSERT_TRUE(Run(kCmdEditUndo)) << i;
    EXPECT_FALSE(Enabled(kCmdEditUndo));
    EXPECT_EQ(Palettes(), palettes);
    EXPECT_EQ(SwatchCount(), 120);
    EXPECT_TRUE(StateOf(Set()) == before);
    for (int i = 0; i < 6; ++i)
        ASSERT_TRUE(Run(kCmdEditRedo)) << i;
    EXPECT_TRUE(StateOf(Set()) == changed);
    EXPECT_EQ(Palettes(), QStringList(palettes) << "Skin");
}

TEST_F(PaletteDockTest, DuplicateRenameDeleteAndFlavors) {
    const QStringList palettes = Palettes();
    const SetState before = StateOf(Set());
    ASSERT_TRUE(Run(kCmdPaletteDuplicate));
    const QString copy = "Copy of " + palettes.front();
    EXPECT_EQ(Palettes().at(1), copy);
    EXPECT_EQ(Panel().PaletteBox()->currentText(), copy);
    EXPECT_EQ(SwatchCount(), 120);
    // The copy's colours are its own.
    EXPECT_NE(Panel().CurrentPalette()->GetEntry(0)->GetId(),
              Set().PaletteList().GetPalette(0)->GetEntry(0)->GetId());

    {
        ModalScript script;
        script.Then(ModalScript::Answer("Rename Palette", "Night"));
        ASSERT_TRUE(Run(kCmdPaletteRename));
    }
    EXPECT_EQ(Palettes().at(1), "Night");

    // A palette keeps one flavor at least; a flavor is renamed, never to a name it has.
    EXPECT_EQ(Panel().FlavourBox()->count(), 1);
    EXPECT_FALSE(Enabled(kCmdFlavourDelete));
    {
        ModalScript script;
        script.Then(ModalScript::Answer("Rename Flavor", "Moonlight"));
        ASSERT_TRUE(Run(kCmdFlavourRename));
    }
    EXPECT_EQ(Panel().FlavourBox()->currentText(), "Moonlight");
    EXPECT_EQ(Panel().CurrentPalette()->GetStyles().front().name, u"Moonlight");
    EXPECT_FALSE(Panel().RenameFlavour(u"Moonlight"));

    // Deleting shows the palette before it; undo shows the palette again.
    ASSERT_TRUE(Run(kCmdPaletteDelete));
    EXPECT_EQ(Palettes(), palettes);
    EXPECT_EQ(Panel().PaletteBox()->currentText(), palettes.back());
    ASSERT_TRUE(Run(kCmdEditUndo));
    EXPECT_EQ(Palettes().at(1), "Night");
    ASSERT_TRUE(Run(kCmdEditUndo));
    ASSERT_TRUE(Run(kCmdEditUndo));
    ASSERT_TRUE(Run(kCmdEditUndo));
    EXPECT_EQ(Palettes(), palettes);
    EXPECT_TRUE(StateOf(Set()) == before);
}

TEST_F(PaletteDockTest, MoveAndTint) {
    const SetState before = StateOf(Set());
    CM_Palette& palette = *Panel().CurrentPalette();
    const UT_UniqueId first = palette.GetEntry(0)->GetId();
    EXPECT_FALSE(Enabled(kCmdColourMoveBack)) << "nothing selected";
    Panel().SelectEntry(first);
    EXPECT_FALSE(Enabled(kCmdColourMoveBack)) << "first already";
    ASSERT_TRUE(Run(kCmdColourMoveForward));
    ASSERT_TRUE(Run(kCmdColourMoveForward));
    EXPECT_EQ(palette.GetEntry(2)->GetId(), first);
    EXPECT_EQ(Swatch(2), "Color 1");
    EXPECT_EQ(SelectedRow(), 2) << "the selection goes with the color";

    // Half way to white, into a new flavor that is then in force; the old one keeps its colors.
    auto tint = [](const QString& name) {
        return [=](QWidget* modal) {
            auto* window = dynamic_cast<GUT_TintWnd*>(modal);
            ASSERT_NE(window, nullptr) << modal->windowTitle().toStdString();
            window->KindField()->setCurrentIndex(GUT_TintWnd::kBlend);
            EXPECT_EQ(window->AmountField()->value(), 50);
            window->SetBlendColor(Qt::white);
            window->NewFlavorField()->setText(name);
            ModalScript::Accept(window);
        };
    };
    {
        ModalScript script;
        script.Then(tint("Day"));
        ASSERT_TRUE(Run(kCmdFlavourTint));
    }
    ASSERT_EQ(Panel().FlavourBox()->count(), 2);
    EXPECT_EQ(Panel().FlavourBox()->currentText(), "Day");
    // Color 2 stands first now: red, half way to white.
    EXPECT_EQ(Swatch(0), "Color 2");
    const auto* red = dynamic_cast<const CM_Color*>(palette.GetEntry(0));
    ASSERT_NE(red, nullptr);
    const BM_Rgba tinted = CM_Tint::Blend({255, 255, 255, 255}, 50).Apply({255, 0, 0, 255});
    EXPECT_EQ(red->Stops().front().colour, tinted);
    EXPECT_GT(tinted.g, 100);
    EXPECT_TRUE(Enabled(kCmdFlavourDelete));

    // The same name again is refused, and the window stays until Cancel.
    messages.messages.clear();
    {
        ModalScript script;
        script.Then(tint("Day")).Then([](QWidget* modal) { ModalScript::Reject(modal); });
        EXPECT_FALSE(Run(kCmdFlavourTint));
    }
    EXPECT_EQ(messages.messages.size(), 1u);
    EXPECT_EQ(Panel().FlavourBox()->count(), 2);

    // The first flavor again: its colors are as they were.
    Panel().SwitchFlavour(0);
    EXPECT_EQ(dynamic_cast<const CM_Color*>(palette.GetEntry(0))->Stops().front().colour,
              (BM_Rgba{255, 0, 0, 255}));
    for (int i = 0; i < 4; ++i)
        ASSERT_TRUE(Run(kCmdEditUndo)) << i;
    EXPECT_EQ(Panel().FlavourBox()->count(), 1);
    EXPECT_EQ(Swatch(0), "Color 1");
    EXPECT_TRUE(StateOf(Set()) == before);
}

} // namespace
