#include "render/CMultimediaTimer.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>

namespace {

std::atomic<uint32_t> g_nextTimerId{1};

class SystemClock : public CMultimediaTimer::Clock {
public:
    TimePoint Now() const override {
        return std::chrono::time_point_cast<Duration>(std::chrono::steady_clock::now());
    }
    bool SleepUntil(TimePoint deadline, std::stop_token stop) override {
        std::mutex mutex;
        std::condition_variable_any wake;
        std::unique_lock<std::mutex> lock(mutex);
        wake.wait_until(lock, stop, deadline, [] { return false; });
        return !stop.stop_requested();
    }
};

} // namespace

CMultimediaTimer::Clock& CMultimediaTimer::Clock::System() {
    static SystemClock clock;
    return clock;
}

CMultimediaTimer::CMultimediaTimer(uint32_t resolution, uint32_t eventType, Clock& clock)
    : resolution_(std::max(resolution, kMinimumPeriod)), eventType_(eventType), clock_(clock) {}

CMultimediaTimer::~CMultimediaTimer() {
    Stop();
}

bool CMultimediaTimer::Start(uint32_t period, uintptr_t clientData, void* userData, bool oneShot) {
    const uint32_t effective = std::max(period, resolution_);
    if (IsRunning() || eventType_ != kCallbackEvent || effective > maximumPeriod_)
        return false;
    clientData_ = clientData;
    userData_ = userData;
    oneShot_ = oneShot;
    period_ = effective;
    {
        std::lock_guard<std::mutex> lock(statisticsMutex_);
        statistics_ = Statistics();
    }
    timerId_ = g_nextTimerId.fetch_add(1);
    if (timerId_ == 0)
        timerId_ = g_nextTimerId.fetch_add(1);
    const Clock::TimePoint origin = clock_.Now();
    const Clock::Duration step = std::chrono::milliseconds(effective);
    thread_ = std::jthread(
        [this, origin, step, oneShot](std::stop_token stop) { Run(stop, origin, step, oneShot); });
    return true;
}

bool CMultimediaTimer::Stop() {
    if (!IsRunning())
        return true;
    thread_.request_stop();
    if (thread_.joinable())
        thread_.join();
    timerId_ = 0;
    return true;
}

bool CMultimediaTimer::SetPeriod(uint32_t period) {
    if (!IsRunning())
        return true;
    const uintptr_t clientData = clientData_;
    void* userData = userData_;
    const bool oneShot = oneShot_;
    Stop();
    return Start(period, clientData, userData, oneShot);
}

CMultimediaTimer::Statistics CMultimediaTimer::GetStatistics() const {
    std::lock_guard<std::mutex> lock(statisticsMutex_);
    return statistics_;
}

void CMultimediaTimer::Run(std::stop_token stop, Clock::TimePoint origin, Clock::Duration period,
                           bool oneShot) {
    int64_t index = 1;
    while (!stop.stop_requested()) {
        const Clock::TimePoint deadline = origin + period * index;
        if (!clock_.SleepUntil(deadline, stop))
            return;
        const Clock::TimePoint woke = clock_.Now();
        const Clock::Duration late = std::max(woke - deadline, Clock::Duration(0));
        // The next deadline on the grid that still lies ahead.
        const int64_t next = (woke - origin) / period + 1;
        {
            std::lock_guard<std::mutex> lock(statisticsMutex_);
            ++statistics_.ticks;
            statistics_.skipped += static_cast<uint64_t>(std::max<int64_t>(next - index - 1, 0));
            statistics_.totalLate += late;
            statistics_.worstLate = std::max(statistics_.worstLate, late);
        }
        OnTimer();
        if (oneShot)
            return;
        index = std::max(index + 1, next);
    }
}
