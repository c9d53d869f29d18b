#pragma once

#include "core/UT_Progress.h"

#include <memory>

class QDialog;
class QLabel;
class QProgressBar;
class QPushButton;
class QWidget;

// The progress of one long operation in a small window of its own, 390 by 130, with a
// bar, a line of text and a " Cancel " button. The window shows while the object lives.
// The title carries the percentage, "%S [%d%%]"; Escape, Enter or the button cancel, and
// the operation notices at its next IsCancelled.
class GUT_ProgressWnd : public UT_Progress {
public:
    static constexpr int kWidth = 390;
    static constexpr int kHeight = 130;

    explicit GUT_ProgressWnd(QWidget* parent, const UT_WString& title = u"Progress");
    ~GUT_ProgressWnd() override;
    GUT_ProgressWnd(const GUT_ProgressWnd&) = delete;
    GUT_ProgressWnd& operator=(const GUT_ProgressWnd&) = delete;

    void SetRange(int64_t low, int64_t high, int64_t position) override;
    void Step() override;
    bool IsCancelled() override { return cancelled_; }
    void SetPosition(int64_t position) override;
    // Lets the window paint and take the user's keys and clicks.
    void ProcessEvents() override;
    void SetText(const UT_WString& text) override;

    // The percentage shown, -1 before the first position.
    int ShownPercent() const { return percent_; }
    QDialog* Window() const;
    QPushButton* CancelButton() const { return cancel_; }

private:
    class Dialog;

    std::unique_ptr<Dialog> window_;
    QProgressBar* bar_ = nullptr;
    QLabel* text_ = nullptr;
    QPushButton* cancel_ = nullptr;
    UT_WString title_;
    int64_t low_ = 0;
    int64_t high_ = 100;
    int64_t position_ = 0;
    int percent_ = -1;
    bool cancelled_ = false;
};
