#pragma once

#include <QKeySequenceEdit>
#include <string>

// Takes one key with its modifiers for a shortcut.
class PR_HotKeyCtrl : public QKeySequenceEdit {
public:
    explicit PR_HotKeyCtrl(QWidget* parent = nullptr);

    // The key in portable text, or "" when none was pressed.
    std::string Key() const;
    void SetKey(const std::string& key);
};
