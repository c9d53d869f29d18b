#pragma once

#include "platform/GUT_AcceleratorTable.h"
#include "platform/PR_PreferencePage.h"

class PR_HotKeyCtrl;
class QComboBox;
class QTreeWidget;

// The shortcuts of both modes. The page works on a copy of the table and gives it back
// on Store. A key that dialogs or typing need is refused with "Cant map to this key"; a
// key that another command has moves to the chosen one.
class PR_AcceleratorPrefUI : public PR_PreferencePage {
public:
    PR_AcceleratorPrefUI(PR_Preferences& preferences, GUT_AcceleratorTable& table);

    void Load() override;
    bool Check(UT_WString& message, QWidget*& field) const override;
    void Store() override;
    bool Changed() const override;

    // The actions of the page's buttons, on the selected command of the shown mode.
    void SetMode(GUT_AcceleratorTable::Mode mode);
    bool SelectCommand(uint32_t id);
    bool AssignKey(const std::string& key);
    void RemoveKey();
    // Asks "Reset all shortcuts to their default value?" first.
    void ResetAll();

    const GUT_AcceleratorTable& Table() const { return edited_; }
    QTreeWidget* List() const { return list_; }
    PR_HotKeyCtrl* KeyField() const { return keyField_; }

private:
    void Fill();
    uint32_t SelectedCommand() const;

    GUT_AcceleratorTable& table_;
    GUT_AcceleratorTable edited_;
    GUT_AcceleratorTable::Mode mode_ = GUT_AcceleratorTable::kDrawing;
    QComboBox* modeBox_ = nullptr;
    QTreeWidget* list_ = nullptr;
    PR_HotKeyCtrl* keyField_ = nullptr;
};
