#include "core/UT_UniqueId.h"

#include <chrono>
#include <ctime>

namespace {

std::function<UT_UniqueId::Time()> g_clock;
uint32_t g_counter = 0;

UT_UniqueId::Time SystemTime() {
    using namespace std::chrono;
    const auto now = system_clock::now();
    const std::time_t seconds = system_clock::to_time_t(now);
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    const auto ms = duration_cast<milliseconds>(now.time_since_epoch()).count() % 1000;
    return {static_cast<uint32_t>(utc.tm_mon + 1), static_cast<uint32_t>(utc.tm_mday),
            static_cast<uint32_t>(utc.tm_hour),    static_cast<uint32_t>(utc.tm_min),
            static_cast<uint32_t>(utc.tm_sec),     static_cast<uint32_t>(ms)};
}

} // namespace

UT_UniqueId UT_UniqueId::Compose(const Time& t, uint32_t counter) {
    uint64_t v = t.month;
    v = (v << 5) | t.day;
    v = (v << 4) | t.hour;
    v = (v << 6) | t.minute;
    v = (v << 6) | t.second;
    v = (v << 10) | t.millisecond;
    v = (v << 20) | (counter & 0xFFFFF);
    return UT_UniqueId(v);
}

UT_UniqueId UT_UniqueId::Generate() {
    return Compose(g_clock ? g_clock() : SystemTime(), g_counter++);
}

void UT_UniqueId::SetClock(std::function<Time()> clock) {
    g_clock = std::move(clock);
}

void UT_UniqueId::ResetCounter(uint32_t value) {
    g_counter = value;
}
