#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <stop_token>
#include <thread>

// A periodic timer on a thread of its own, which calls OnTimer at every deadline. The
// deadlines lie on a fixed grid from the start, so the timer does not drift however late
// a wake-up comes; a wake-up later than a whole period skips the deadlines it missed rather
// than firing them in a burst. OnTimer runs on the timer's thread and must do no more than
// hand work to another thread. A class that overrides OnTimer must call Stop in its own
// destructor, before its part of the object is gone.
class CMultimediaTimer {
public:
    // Where the timer reads the time and waits for it: the system's steady clock, or a
    // clock that a test moves by hand.
    class Clock {
    public:
        using Duration = std::chrono::nanoseconds;
        using TimePoint = std::chrono::time_point<std::chrono::steady_clock, Duration>;

        virtual ~Clock() = default;
        virtual TimePoint Now() const = 0;
        // Blocks until Now() reaches `deadline`; false when `stop` was requested first.
        virtual bool SleepUntil(TimePoint deadline, std::stop_token stop) = 0;
        // The steady clock of the system.
        static Clock& System();
    };

    // How punctual the ticks of the current or last run were.
    struct Statistics {
        uint64_t ticks = 0;
        // Deadlines passed over because a wake-up came more than a period late.
        uint64_t skipped = 0;
        // From each deadline to the wake-up that served it.
        Clock::Duration totalLate{0};
        Clock::Duration worstLate{0};
        Clock::Duration MeanLate() const {
            return ticks ? totalLate / static_cast<int64_t>(ticks) : Clock::Duration(0);
        }
    };

    // The device's shortest and longest period, in milliseconds.
    static constexpr uint32_t kMinimumPeriod = 1;
    static constexpr uint32_t kMaximumPeriod = 1000000;
    // The only event type of this platform: the timer calls its own OnTimer.
    static constexpr uint32_t kCallbackEvent = 0;

    // `resolution` in milliseconds, raised to the device minimum.
    CMultimediaTimer(uint32_t resolution, uint32_t eventType, Clock& clock = Clock::System());
    virtual ~CMultimediaTimer();
    CMultimediaTimer(const CMultimediaTimer&) = delete;
    CMultimediaTimer& operator=(const CMultimediaTimer&) = delete;

    // Called at every deadline, on the timer's thread.
    virtual void OnTimer() {}

    // Starts ticking every `period` milliseconds (at least the resolution), or once with
    // `oneShot`. False when a timer runs already, the period exceeds the device maximum, or
    // the event type is not the timer's own callback.
    bool Start(uint32_t period, uintptr_t clientData = 0, void* userData = nullptr, bool oneShot = false);
    // True also when no timer was running. Waits for the timer's thread to end.
    bool Stop();
    // A running timer goes on with the new period and the same settings; true when none runs.
    bool SetPeriod(uint32_t period);

    bool IsRunning() const { return timerId_ != 0; }
    uint32_t TimerId() const { return timerId_; }
    uint32_t Period() const { return period_; }
    uint32_t Resolution() const { return resolution_; }
    uint32_t EventType() const { return eventType_; }
    uint32_t MinimumPeriod() const { return minimumPeriod_; }
    uint32_t MaximumPeriod() const { return maximumPeriod_; }
    bool IsOneShot() const { return oneShot_; }
    Statistics GetStatistics() const;

protected:
    uintptr_t ClientData() const { return clientData_; }
    void* UserData() const { return userData_; }

private:
    void Run(std::stop_token stop, Clock::TimePoint origin, Clock::Duration period, bool oneShot);

    uint32_t resolution_;
    uint32_t eventType_;
    uintptr_t clientData_ = 0;
    uint32_t maximumPeriod_ = kMaximumPeriod;
    uint32_t minimumPeriod_ = kMinimumPeriod;
    void* userData_ = nullptr;
    bool oneShot_ = false;
    uint32_t timerId_ = 0;
    uint32_t period_ = 0;
    Clock& clock_;
    mutable std::mutex statisticsMutex_;
    Statistics statistics_;
    std::jthread thread_;
};
