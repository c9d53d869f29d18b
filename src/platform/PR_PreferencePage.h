#pragma once

#include "core/PR_Preferences.h"

#include <QWidget>
#include <vector>

class QFormLayout;

// One page of the preferences sheet: fields bound to preference keys, filled from the
// preferences, checked by their rules and written back. A page of the preferences shows
// the keys the preferences give for it, and after a change the notice they give.
class PR_PreferencePage : public QWidget {
public:
    PR_PreferencePage(PR_Preferences& preferences, PR_Preferences::Page page, const char* title);

    const QString& Title() const { return title_; }
    // Fills the fields from the preferences.
    virtual void Load();
    // The first field whose value the rules refuse, with the message; false when all pass.
    virtual bool Check(UT_WString& message, QWidget*& field) const;
    // Writes the fields into the preferences (not yet into the store).
    virtual void Store();
    // Whether a field differs from the preferences.
    virtual bool Changed() const;
    // The field of a key, or nullptr.
    QWidget* Field(PR_Preferences::Key key) const;

protected:
    enum class FieldKind { kNumber, kFlag, kColour, kText, kFolder, kChoice };

    // A page of other settings, which adds its own fields.
    PR_PreferencePage(PR_Preferences& preferences, const char* title);

    // Adds a row to the page's form for the key.
    QWidget* AddField(PR_Preferences::Key key, const char* label, FieldKind kind);
    // A drop-down list of named values.
    QWidget* AddChoice(PR_Preferences::Key key, const char* label, const std::vector<const char*>& names,
                       int64_t firstValue);
    PR_Preferences& Preferences() const { return preferences_; }

private:
    struct Binding {
        PR_Preferences::Key key;
        FieldKind kind;
        QWidget* widget;
        int64_t firstValue = 0;
    };

    std::string ValueText(const Binding& binding) const;
    void Show(const Binding& binding);

    PR_Preferences& preferences_;
    std::optional<PR_Preferences::Page> page_;
    QString title_;
    QFormLayout* form_ = nullptr;
    std::vector<Binding> bindings_;
};
