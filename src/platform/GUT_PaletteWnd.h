#pragma once

#include "colour/CM_PaletteList.h"
#include "colour/CM_Tint.h"
#include "platform/GUT_CommandTarget.h"

#include <QWidget>
#include <cstdint>
#include <functional>

class CAnimationSetObj;
class QAbstractItemModel;
class QAction;
class QColor;
class QComboBox;
class QListView;
class UT_Command;

// The palettes of the open set: one palette at a time with its flavours and its colours
// as swatches. Palettes are added, duplicated, renamed and deleted; colours added,
// renamed (in place), edited with the colour dialog and deleted; another flavour is put
// in force. Each change is a palette command on the set's history, and the panel follows
// the palette list's notifications, so undo and redo show in it like any change.
class GUT_PaletteWnd : public QWidget, public CM_PaletteListObserverInterface, public GUT_CommandTarget {
public:
    explicit GUT_PaletteWnd(QWidget* parent = nullptr);
    ~GUT_PaletteWnd() override;

    void SetSet(CAnimationSetObj* set);
    // The buttons of the panel run the window's actions of these commands.
    void SetActions(const std::function<QAction*(uint32_t)>& actionOf);

    // What the panel shows: a palette of the list and one of its colours, or none.
    CM_Palette* CurrentPalette() const;
    CM_BaseColorObj* CurrentEntry() const;
    void ShowPalette(UT_UniqueId id);
    void SelectEntry(UT_UniqueId id);

    QComboBox* PaletteBox() const { return palettes_; }
    QComboBox* FlavourBox() const { return flavours_; }
    QListView* Swatches() const { return swatches_; }
    QAbstractItemModel* SwatchModel() const;

    // The operations, false when nothing changed. A new palette or colour goes after the
    // one shown or selected, and is shown or selected then.
    bool AddPalette(const UT_WString& name);
    bool DuplicatePalette();
    bool RenamePalette(const UT_WString& name);
    bool DeletePalette();
    bool AddColour();
    bool EditColour(const QColor& colour);
    bool RenameColour(UT_UniqueId id, const UT_WString& name);
    bool DeleteColour();
    // Moves the selected colour `by` places, within the palette.
    bool MoveColour(int by);
    bool SwitchFlavour(uint32_t style);
    // Names that the palette has already are refused with a message.
    bool RenameFlavour(const UT_WString& name);
    // A palette keeps one flavour at least.
    bool DeleteFlavour();
    // Tints the flavour in force, into itself or, with a name, into a new flavour that is
    // then in force. Names that the palette has already are refused with a message.
    bool TintFlavour(const CM_Tint& tint, const UT_WString& newFlavour);

    // The palettes changed, by a command or its undo.
    std::function<void()> onChanged;

    void OnPaletteListChanged(const void* sender, const CM_PaletteListData& data) override;
    bool UpdateCommand(uint32_t id, State& state) override;
    bool OnCommand(uint32_t id) override;

private:
    class SwatchModelImpl;

    CM_PaletteList* List() const;
    // The message for a flavour name that the palette shown has already, else empty.
    UT_WString CheckFlavourName(const UT_WString& name) const;
    bool Run(UT_Command& command, const char16_t* name);
    void Reload();
    // Asks for a name; false on Cancel or an empty name.
    bool AskName(const char* title, const UT_WString& start, UT_WString& name);

    CAnimationSetObj* set_ = nullptr;
    UT_UniqueId shown_;
    UT_UniqueId selected_;
    bool reloading_ = false;
    QComboBox* palettes_ = nullptr;
    QComboBox* flavours_ = nullptr;
    QListView* swatches_ = nullptr;
    SwatchModelImpl* model_ = nullptr;
};
