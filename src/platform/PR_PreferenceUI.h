#pragma once

#include <QDialog>
#include <vector>

class GUT_AcceleratorTable;
class PR_PreferencePage;
class PR_Preferences;
class QTabWidget;

// The preferences sheet: one tab per page. OK checks every page, shows the first
// refusal on its page, and otherwise writes all pages to the preferences and saves them
// with the shortcuts.
class PR_PreferenceUI : public QDialog {
public:
    PR_PreferenceUI(QWidget* parent, PR_Preferences& preferences, GUT_AcceleratorTable& accelerators);

    void accept() override;

    const std::vector<PR_PreferencePage*>& Pages() const { return pages_; }
    QTabWidget* Tabs() const { return tabs_; }

private:
    PR_Preferences& preferences_;
    GUT_AcceleratorTable& accelerators_;
    QTabWidget* tabs_ = nullptr;
    std::vector<PR_PreferencePage*> pages_;
};
