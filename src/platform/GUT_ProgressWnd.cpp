#include "platform/GUT_ProgressWnd.h"

#include "core/UT_Format.h"
#include "platform/detail/GUT_Qt.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

// Escape (reject) and closing the window cancel instead of closing it: the operation
// decides when the window goes.
class GUT_ProgressWnd::Dialog : public QDialog {
public:
    Dialog(QWidget* parent, bool& cancelled) : QDialog(parent), cancelled_(cancelled) {}

    void reject() override { cancelled_ = true; }

protected:
    void closeEvent(QCloseEvent* event) override {
        cancelled_ = true;
        event->ignore();
    }

private:
    bool& cancelled_;
};

GUT_ProgressWnd::GUT_ProgressWnd(QWidget* parent, const UT_WString& title)
    : window_(std::make_unique<Dialog>(parent, cancelled_)), title_(title) {
    window_->setWindowTitle(gut::ToQt(title_));
    window_->setFixedSize(kWidth, kHeight);
    window_->setModal(true);

    bar_ = new QProgressBar(window_.get());
    bar_->setRange(0, 100);
    bar_->setValue(0);
    text_ = new QLabel(window_.get());
    cancel_ = new QPushButton(gut::Tr(" Cancel "), window_.get());
    // Enter presses the default button.
    cancel_->setDefault(true);
    QObject::connect(cancel_, &QPushButton::clicked, [this] { cancelled_ = true; });

    auto* buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cancel_);
    auto* layout = new QVBoxLayout(window_.get());
    layout->addWidget(bar_);
    layout->addWidget(text_);
    layout->addLayout(buttons);

    window_->show();
    QApplication::processEvents();
}

GUT_ProgressWnd::~GUT_ProgressWnd() {
    window_->hide();
}

QDialog* GUT_ProgressWnd::Window() const {
    return window_.get();
}

void GUT_ProgressWnd::SetRange(int64_t low, int64_t high, int64_t position) {
    low_ = low;
    high_ = high;
    SetPosition(position);
}

void GUT_ProgressWnd::Step() {
    SetPosition(position_ + 1);
}

void GUT_ProgressWnd::SetPosition(int64_t position) {
    position_ = position;
    const int percent = Percent(low_, high_, position);
    if (percent == percent_)
        return;
    percent_ = percent;
    bar_->setValue(percent);
    window_->setWindowTitle(gut::ToQt(UT_Fmt(u"%S [%d%%]", title_, UT_Num(percent))));
}

void GUT_ProgressWnd::ProcessEvents() {
    QApplication::processEvents();
}

void GUT_ProgressWnd::SetText(const UT_WString& text) {
    text_->setText(gut::ToQt(text));
}
