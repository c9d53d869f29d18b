#include "render/CInteractivePlaybackControl.h"

#include "animationset/CAnimationSetObj.h"
#include "animationset/SPO_SettingsMgr.h"
#include "core/UT_SettingsStore.h"
#include "render/CInteractivePlayBackToolBar.h"

#include <algorithm>
#include <optional>

namespace {

// The rate of the current set, when there is one.
std::optional<int64_t> SetRate() {
    if (const CAnimationSetObj* set = CAnimationSetObj::Current())
        return static_cast<int64_t>(set->FrameRate());
    return std::nullopt;
}

} // namespace

CInteractivePlaybackControl::CInteractivePlaybackControl(
    CInteractivePlaybackFrame& mainFrame, UI_MessageLoop& loop, CInteractivePlayBackToolBar* toolbar,
    SPO_SettingsMgr* range, bool rangeMode, UT_SettingsStore& settings, CMultimediaTimer::Clock& clock)
    : mainFrame_(mainFrame), messageLoop_(loop), timer_(clock), toolbar_(toolbar), range_(range),
      rangeMode_(rangeMode), settings_(settings) {
    const int64_t fallback = SetRate().value_or(kDefaultFrameRate);
    frameRate_ = ValidRate(settings_.GetInt(kSettingsSection, kFrameRateKey).value_or(fallback));
    useSetRate_ = settings_.GetInt(kSettingsSection, kUseSetRateKey).value_or(12) != 0;
    CurrentCell().Attach(this);
    UpdateButtons();
    UpdateText();
}

CInteractivePlaybackControl::~CInteractivePlaybackControl() {
    timer_.Stop();
    settings_.SetInt(kSettingsSection, kFrameRateKey, frameRate_);
    settings_.SetInt(kSettingsSection, kUseSetRateKey, useSetRate_ ? 1 : 0);
    settings_.Flush();
    CurrentCell().Detach(this);
}

int32_t CInteractivePlaybackControl::ValidRate(int64_t rate) {
    return static_cast<int32_t>(std::clamp<int64_t>(rate, 1, kMaximumFrameRate));
}

bool CInteractivePlaybackControl::OnCommand(uint32_t commandId) {
    switch (commandId) {
    case kPlay:
        Play();
        return true;
    case kStop:
        Stop();
        return true;
    case kNextFrame:
        NextFrame();
        return true;
    case kPrevFrame:
        PrevFrame();
        return true;
    case kFirstFrame:
        FirstFrame();
        return true;
    case kLastFrame:
        LastFrame();
        return true;
    case kToggleLoop:
        ToggleLoop();
        return true;
    case kRate1:
        SetFrameRate(1);
        return true;
    case kRate2:
        SetFrameRate(2);
        return true;
    case kRate12:
        SetFrameRate(12);
        return true;
    case kRate24:
        SetFrameRate(24);
        return true;
    case kRate30:
        SetFrameRate(30);
        return true;
    case kUseSetRate:
        UseSetRate();
        return true;
    case kTimerTick:
        Tick();
        return true;
    default:
        return false;
    }
}

bool CInteractivePlaybackControl::RangeBounds(int32_t& first, int32_t& last) const {
    if (!range_)
        return false;
    first = range_->GetFirstFrame();
    last = range_->GetLastFrame();
    return true;
}

bool CInteractivePlaybackControl::PlayedFrames(int32_t& first, int32_t& last) const {
    if (rangeMode_)
        return RangeBounds(first, last);
    const AS_CellIterator& cell = CurrentCell();
    if (cell.IsSelectionEmpty())
        return false;
    first = cell.GetFirstSelectedFrame();
    last = cell.GetLastSelectedFrame();
    return true;
}

bool CInteractivePlaybackControl::CanPlay() const {
    if (!rangeMode_ && CurrentCell().IsSingleCell())
        return CurrentCell().GetSceneLastFrame() > 0;
    int32_t first = 0, last = 0;
    return PlayedFrames(first, last) && first < last;
}

void CInteractivePlaybackControl::Play() {
    if (playing_)
        return;
    if (useSetRate_)
        if (const std::optional<int64_t> rate = SetRate())
            frameRate_ = ValidRate(*rate);
    playing_ = true;
    UpdateButtons();
    mainFrame_.PlaybackStarted();
    AS_CellIteratorObservable& cell = CurrentCell();
    if (!rangeMode_) {
        saved_ = cell;
        if (cell.IsSingleCell())
            cell.SelectAll(true);
        cell.LastSelectedLevel();
        cell.SetFrame(saved_.Frame());
        cell.NotifyMove(this, AS_CellIteratorObserverData::kPlaybackFrame);
    }
    int32_t first = 0, last = 0;
    const int32_t frame = cell.Frame();
    if (RangeBounds(first, last))
        rangeFrame_ = frame >= first && frame < last ? frame : first;
    else
        rangeFrame_ = frame;
    // A timer that cannot start leaves playback on, without ticks.
    timer_.Start(Period(), reinterpret_cast<uintptr_t>(&messageLoop_), nullptr, false);
    UpdateText();
}

void CInteractivePlaybackControl::Tick() {
    if (!playing_ || state_ != kReady)
        return;
    state_ = kShowing;
    AS_CellIteratorObservable& cell = CurrentCell();
    if (rangeMode_)
        cell.SetFrame(rangeFrame_);
    cell.NotifyMove(this, AS_CellIteratorObserverData::kPlaybackFrame);
    state_ = kWantsNext;
    UpdateText();
}

bool CInteractivePlaybackControl::Step() {
    if (!playing_ || state_ != kWantsNext || stepping_)
        return playing_;
    // The idle work run after a wrap may come back here; the step is done once.
    stepping_ = true;
    struct Reset {
        bool& flag;
        ~Reset() { flag = false; }
    } reset{stepping_};

    int32_t first = 0, last = 0;
    const bool hasRange = RangeBounds(first, last);
    if (!rangeMode_) {
        AS_CellIteratorObservable& cell = CurrentCell();
        if (cell.Frame() + 1 > cell.GetSceneLastFrame() || !cell.NextFrameInRange()) {
            if (!loop_) {
                Stop();
                return false;
            }
            cell.GoToRangeStart();
            mainFrame_.RunIdleWork(-1);
        }
        rangeFrame_ = cell.Frame();
        if (hasRange && first <= last)
            rangeFrame_ = std::clamp(rangeFrame_, first, last);
    } else {
        const int32_t next = rangeFrame_ + 1;
        if (!hasRange || (next > last && !loop_) || first >= last) {
            Stop();
            return false;
        }
        rangeFrame_ = next > last ? first : next;
    }
    state_ = kReady;
    return playing_;
}

void CInteractivePlaybackControl::Stop() {
    if (!playing_)
        return;
    playing_ = false;
    timer_.Stop();
    state_ = kReady;
    UpdateButtons();
    AS_CellIteratorObservable& cell = CurrentCell();
    // The selection and position of the start come back, in the scene they belong to.
    if (!rangeMode_ && cell.Scene() == saved_.Scene() && cell.Order() == saved_.Order())
        static_cast<AS_CellIterator&>(cell) = saved_;
    cell.NotifyMove(this, AS_CellIteratorObserverData::kPlaybackEnded);
    mainFrame_.PlaybackEnded();
    UpdateText();
}

void CInteractivePlaybackControl::Interrupt() {
    playing_ = false;
    timer_.Stop();
    state_ = kReady;
    UpdateButtons();
    mainFrame_.PlaybackEnded();
}

void CInteractivePlaybackControl::NextFrame() {
    AS_CellIteratorObservable& cell = CurrentCell();
    int32_t first = 0, last = 0;
    if (rangeMode_) {
        if (RangeBounds(first, last) && first <= last)
            cell.SetFrame(std::clamp(cell.Frame() + 1, first, last));
    } else if (!cell.NextFrameInRange() && loop_) {
        cell.GoToRangeStart();
    }
    cell.NotifyMove(this, AS_CellIteratorObserverData::kUserStep);
    UpdateText();
}

void CInteractivePlaybackControl::PrevFrame() {
    AS_CellIteratorObservable& cell = CurrentCell();
    int32_t first = 0, last = 0;
    if (rangeMode_) {
        if (RangeBounds(first, last) && first <= last)
            cell.SetFrame(std::clamp(cell.Frame() - 1, first, last));
    } else if (!cell.PrevFrameInRange() && loop_) {
        cell.GoToRangeEnd();
    }
    cell.NotifyMove(this, AS_CellIteratorObserverData::kUserStep);
    UpdateText();
}

void CInteractivePlaybackControl::FirstFrame() {
    AS_CellIteratorObservable& cell = CurrentCell();
    int32_t first = 0, last = 0;
    if (!rangeMode_)
        cell.GoToRangeStart();
    else if (RangeBounds(first, last) && first >= 0)
        cell.SetFrame(first);
    cell.NotifyMove(this, AS_CellIteratorObserverData::kUserStep);
    UpdateText();
}

void CInteractivePlaybackControl::LastFrame() {
    AS_CellIteratorObservable& cell = CurrentCell();
    int32_t first = 0, last = 0;
    if (!rangeMode_)
        cell.GoToRangeEnd();
    else if (RangeBounds(first, last) && last >= 0)
        cell.SetFrame(last);
    cell.NotifyMove(this, AS_CellIteratorObserverData::kUserStep);
    UpdateText();
}

void CInteractivePlaybackControl::ToggleLoop() {
    SetLoop(!loop_);
}

void CInteractivePlaybackControl::SetLoop(bool loop) {
    loop_ = loop;
    UpdateLoopButton();
}

void CInteractivePlaybackControl::SetFrameRate(int32_t rate) {
    useSetRate_ = false;
    frameRate_ = ValidRate(rate);
    timer_.SetPeriod(Period());
}

void CInteractivePlaybackControl::UseSetRate() {
    useSetRate_ = true;
    if (const std::optional<int64_t> rate = SetRate())
        frameRate_ = ValidRate(*rate);
    timer_.SetPeriod(Period());
}

void CInteractivePlaybackControl::CellIteratorChanged(const void* sender,
                                                      const AS_CellIteratorObserverData&) {
    if (sender != this && playing_ && !rangeMode_)
        Interrupt();
    UpdatePlayButton();
    UpdateText();
}

void CInteractivePlaybackControl::UpdatePlayButton() {
    if (toolbar_)
        toolbar_->EnableButton(kPlay, !playing_ && CanPlay());
}

void CInteractivePlaybackControl::UpdateStopButton() {
    if (toolbar_)
        toolbar_->EnableButton(kStop, playing_);
}

void CInteractivePlaybackControl::UpdateLoopButton() {
    if (toolbar_)
        toolbar_->PressButton(kToggleLoop, loop_);
}

void CInteractivePlaybackControl::UpdateButtons() {
    UpdatePlayButton();
    UpdateStopButton();
    UpdateLoopButton();
}

void CInteractivePlaybackControl::UpdateText() {
    if (!toolbar_)
        return;
    const AS_CellIterator& cell = CurrentCell();
    int32_t first = 0, last = 0;
    if (!PlayedFrames(first, last))
        first = last = cell.Frame();
    toolbar_->SetFrames(cell.Frame(), cell.GetSceneLastFrame(), first, last);
}
