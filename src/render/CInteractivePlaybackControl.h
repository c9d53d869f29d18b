#pragma once

#include "animationset/AS_CellIterator.h"
#include "animationset/AS_CellIteratorObservable.h"
#include "render/CInteractivePlaybackTimer.h"
#include "render/UI_MessageLoop.h"

#include <cstdint>

class CInteractivePlayBackToolBar;
class SPO_SettingsMgr;
class UT_SettingsStore;

// What playback needs of the main window.
class CInteractivePlaybackFrame {
public:
    virtual ~CInteractivePlaybackFrame() = default;
    // The window marks itself playing, tells its drawing panels, and sets the playing flag
    // of the timeline and the canvas controls; PlaybackEnded undoes that.
    virtual void PlaybackStarted() = 0;
    virtual void PlaybackEnded() = 0;
    // The application's idle work, run once out of turn with `count` (-1 after playback
    // wrapped around to its start).
    virtual void RunIdleWork(long count) = 0;
};

// Runs a scene at its frame rate in the program's own views: the application's current
// cell moves one frame per tick of a timer, and every view follows it through the ordinary
// notification of the current cell. The timer only posts the tick to the interface thread;
// the idle processing there prepares the next position (Step) and the tick shows it, so a
// redraw slower than a period makes playback slower, never skips a frame. The control
// plays the selection of the current cell, or in range mode the frame range of the
// timeline. Moves of the current cell that the control makes are silent, and its tick
// notification (code 2) is its only one during playback: any other notification of the
// current cell while playing the selection means the user moved it, and ends playback.
class CInteractivePlaybackControl : public UI_CommandTarget, public AS_CellIteratorObserverInterface {
public:
    enum Command : uint32_t {
        kPlay = 33017,
        kStop = 33018,
        kNextFrame = 33019,
        kFirstFrame = 33020,
        kLastFrame = 33022,
        kPrevFrame = 33024,
        kToggleLoop = 33025,
        kRate1 = 33180,
        kRate2 = 33181,
        kRate12 = 33182,
        kRate24 = 33183,
        kRate30 = 33184,
        kUseSetRate = 33250,
        kTimerTick = CInteractivePlaybackTimer::kTickCommand,
    };

    enum State : uint32_t {
        // The tick is telling the observers, which draw the frame.
        kShowing = 0,
        // The frame was shown; the idle step prepares the next position.
        kWantsNext = 1,
        // The next position is ready for the next tick.
        kReady = 2,
    };

    static constexpr const char* kSettingsSection = "InteractivePlayback";
    static constexpr const char* kFrameRateKey = "frameRate";
    static constexpr const char* kUseSetRateKey = "useASFPS";
    // The rate without a set, and the highest the millisecond timer can serve.
    static constexpr int32_t kDefaultFrameRate = 24;
    static constexpr int32_t kMaximumFrameRate = 1000;

    // Reads the rate settings from `settings`, which must outlive the control, and attaches
    // to the current cell. `range` (the timeline's frame range) is needed in range mode.
    CInteractivePlaybackControl(CInteractivePlaybackFrame& mainFrame, UI_MessageLoop& loop,
                                CInteractivePlayBackToolBar* toolbar, SPO_SettingsMgr* range, bool rangeMode,
                                UT_SettingsStore& settings,
                                CMultimediaTimer::Clock& clock = CMultimediaTimer::Clock::System());
    // Writes the rate settings back, detaches and stops the timer.
    ~CInteractivePlaybackControl() override;
    CInteractivePlaybackControl(const CInteractivePlaybackControl&) = delete;
    CInteractivePlaybackControl& operator=(const CInteractivePlaybackControl&) = delete;

    // The commands of the table above; false for any other.
    bool OnCommand(uint32_t commandId) override;

    void Play();
    void Stop();
    void NextFrame();
    void PrevFrame();
    void FirstFrame();
    void LastFrame();
    void ToggleLoop();
    // A rate command: the set's rate no longer serves; a running timer takes the new period.
    void SetFrameRate(int32_t rate);
    // The set's rate serves again.
    void UseSetRate();
    // The timer's tick: shows the prepared position. Ignored unless playing with a position
    // ready, so ticks that queued up behind a slow frame cost time, not frames.
    void Tick();
    // The idle step: prepares the next position after a tick; stops at the end unless
    // looping. True while playing.
    bool Step();

    // The toolbar's buttons: Play while a range of more than one frame can play, Stop while
    // playing, Loop pressed while on.
    void UpdatePlayButton();
    void UpdateStopButton();
    void UpdateLoopButton();

    void CellIteratorChanged(const void* sender, const AS_CellIteratorObserverData& data) override;

    bool IsPlaying() const { return playing_; }
    State GetState() const { return state_; }
    bool IsLooping() const { return loop_; }
    void SetLoop(bool loop);
    int32_t RangeFrame() const { return rangeFrame_; }
    int32_t FrameRate() const { return frameRate_; }
    bool UsesSetRate() const { return useSetRate_; }
    bool IsRangeMode() const { return rangeMode_; }
    const AS_CellIterator& SavedIterator() const { return saved_; }
    const CInteractivePlaybackTimer& Timer() const { return timer_; }
    // True when Play would play more than one frame now.
    bool CanPlay() const;
    // The first and last frame that playback covers now.
    bool PlayedFrames(int32_t& first, int32_t& last) const;

private:
    static AS_CellIteratorObservable& CurrentCell() { return AS_CellIteratorObservable::Instance(); }
    // The timeline's range; false without one.
    bool RangeBounds(int32_t& first, int32_t& last) const;
    // Ends playback without putting the selection back: the user moved the cell.
    void Interrupt();
    void UpdateButtons();
    void UpdateText();
    static int32_t ValidRate(int64_t rate);
    uint32_t Period() const { return static_cast<uint32_t>(1000 / frameRate_); }

    CInteractivePlaybackFrame& mainFrame_;
    UI_MessageLoop& messageLoop_;
    bool loop_ = false;
    bool playing_ = false;
    CInteractivePlaybackTimer timer_;
    CInteractivePlayBackToolBar* toolbar_;
    State state_ = kReady;
    int32_t rangeFrame_ = 0;
    SPO_SettingsMgr* range_;
    bool rangeMode_;
    bool useSetRate_ = true;
    int32_t frameRate_ = kDefaultFrameRate;
    AS_CellIterator saved_;
    UT_SettingsStore& settings_;
    bool stepping_ = false;
};
