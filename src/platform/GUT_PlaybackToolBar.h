#pragma once

#include "render/CInteractivePlayBackToolBar.h"

#include <QToolBar>
#include <cstdint>
#include <functional>

class QAction;
class QLabel;
class QToolButton;

// The playback toolbar: the buttons of the playback control with its tips, the switch to
// the timeline's frame range, a menu of frame rates and the line of frames. The buttons
// are the main window's actions of the same commands, so the Play menu and the toolbar
// always agree; the playback control sets the buttons' state and the line on the model
// side, and the window shows them.
class GUT_PlaybackToolBar : public QToolBar, public CInteractivePlayBackToolBar {
public:
    explicit GUT_PlaybackToolBar(QWidget* parent = nullptr);

    // Puts the actions of the commands on the bar, with the model's tips and icons.
    void SetActions(const std::function<QAction*(uint32_t)>& actionOf);

    QLabel* FrameLine() const { return frameLine_; }
    QToolButton* RateButton() const { return rateButton_; }

    // The state of a button or the line changed.
    std::function<void()> onChanged;

protected:
    void Changed() override;

private:
    QLabel* frameLine_ = nullptr;
    QToolButton* rateButton_ = nullptr;
};
