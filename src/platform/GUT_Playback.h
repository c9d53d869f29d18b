#pragma once

#include "animationset/AS_DopeSheetObservable.h"
#include "platform/GUT_CommandTarget.h"
#include "platform/GUT_MessageLoop.h"
#include "render/CInteractivePlaybackControl.h"

#include <functional>
#include <memory>

class CAnimationSetObj;
class CInteractivePlayBackToolBar;
class UT_SettingsStore;

// Playback in the main window: the playback control of the open set over the Qt message
// loop, which the control's timer posts its ticks to and whose idle time runs the
// control's step. It takes the commands of the Play menu and the toolbar, and the ticks
// posted to the loop. The control plays the selection of the current cell or, in range
// mode, the frame range of the set's scene-planning settings; switching the mode makes a
// new control, since a control keeps its mode for life.
class GUT_Playback : public CInteractivePlaybackFrame,
                     public UI_CommandTarget,
                     public GUT_CommandTarget,
                     public AS_DopeSheetObserverInterface {
public:
    // `settings` holds the rates and outlives this object, as does `clock`, which paces
    // the timer.
    GUT_Playback(CInteractivePlayBackToolBar& toolbar, UT_SettingsStore& settings,
                 CMultimediaTimer::Clock& clock = CMultimediaTimer::Clock::System());
    ~GUT_Playback() override;
    GUT_Playback(const GUT_Playback&) = delete;
    GUT_Playback& operator=(const GUT_Playback&) = delete;

    // A control for the open set; null stops playback and drops the control.
    void SetSet(CAnimationSetObj* set);
    void SetRangeMode(bool on);
    // Another clock for the timer: playback stops and a new control takes it.
    void SetClock(CMultimediaTimer::Clock& clock);
    bool IsRangeMode() const { return rangeMode_; }
    bool IsPlaying() const { return control_ && control_->IsPlaying(); }
    CInteractivePlaybackControl* Control() const { return control_.get(); }
    GUT_MessageLoop& Loop() { return loop_; }

    // Playback started (true) or ended (false): the views take their playing flag.
    std::function<void(bool playing)> onPlaying;
    // The application's idle work, run out of turn when playback wrapped around.
    std::function<void()> onIdleWork;

    // The commands of the menus and the toolbar, and those posted to the loop.
    bool OnCommand(uint32_t id) override;
    bool OnIdle(long count) override;
    bool UpdateCommand(uint32_t id, State& state) override;

    void PlaybackStarted() override;
    void PlaybackEnded() override;
    void RunIdleWork(long count) override;

    // Changes of the set move what playback covers: the buttons and the line follow.
    void DopeSheetChanged(const void* sender, const AS_DopeSheetUpdateData& data) override;
    void DopeSheetObservableGone(const void* observable) override;

private:
    void MakeControl();
    // A new control in place of the current one, which stops; Loop stays as it was.
    void RemakeControl();
    // Ends playback, unless `stop` is false, and drops the control.
    void DropControl(bool stop = true);
    // The buttons and the line after a change that the control did not see.
    void Refresh();

    CInteractivePlayBackToolBar& toolbar_;
    UT_SettingsStore& settings_;
    CMultimediaTimer::Clock* clock_;
    // Before the control: ticks may still be posted while the control stops its timer.
    GUT_MessageLoop loop_;
    std::unique_ptr<CInteractivePlaybackControl> control_;
    CAnimationSetObj* set_ = nullptr;
    bool rangeMode_ = false;
};
