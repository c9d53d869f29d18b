#pragma once

#include "render/CMultimediaTimer.h"

#include <condition_variable>
#include <mutex>

// A clock that only moves when the test moves it; the timer's thread sleeps on it until
// the test has moved it past the deadline.
class FakeClock : public CMultimediaTimer::Clock {
public:
    TimePoint Now() const override {
        std::lock_guard<std::mutex> lock(mutex_);
        return now_;
    }
    bool SleepUntil(TimePoint deadline, std::stop_token stop) override {
        std::unique_lock<std::mutex> lock(mutex_);
        moved_.wait(lock, stop, [&] { return now_ >= deadline; });
        return !stop.stop_requested();
    }
    void Advance(std::chrono::milliseconds step) {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            now_ += step;
        }
        moved_.notify_all();
    }

private:
    mutable std::mutex mutex_;
    std::condition_variable_any moved_;
    TimePoint now_{};
};
