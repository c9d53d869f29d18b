#pragma once

#include <QDialog>

class CNewAnimationDlg;
class QLineEdit;

// The window of the "New Animation Set" and "Save As" dialog: a name and a location.
// OK checks them by the dialog's rules; a refusal shows its message and keeps the window
// open with the name selected.
class GUT_NewAnimationWnd : public QDialog {
public:
    GUT_NewAnimationWnd(QWidget* parent, CNewAnimationDlg& rules);

    void accept() override;

    QLineEdit* NameField() const { return name_; }
    QLineEdit* LocationField() const { return location_; }

private:
    CNewAnimationDlg& rules_;
    QLineEdit* name_ = nullptr;
    QLineEdit* location_ = nullptr;
};
