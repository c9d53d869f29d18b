#pragma once

#include <cstdint>
#include <functional>

// A 64-bit identifier made from the time of day and a process-wide counter. It names
// palette entries and templates. The bit layout is part of the file format: fields
// may overlap, and nothing ever reads the time back out.
class UT_UniqueId {
public:
    struct Time {
        uint32_t month, day, hour, minute, second, millisecond;
    };

    constexpr UT_UniqueId() = default;
    constexpr explicit UT_UniqueId(uint64_t value) : value_(value) {}

    static UT_UniqueId Generate();
    // Composes an identifier from a time and a counter value.
    static UT_UniqueId Compose(const Time& time, uint32_t counter);

    // Test hooks: a fixed clock and a counter start. Pass nullptr to restore the system clock.
    static void SetClock(std::function<Time()> clock);
    static void ResetCounter(uint32_t value = 0);

    constexpr uint64_t Value() const { return value_; }
    constexpr auto operator<=>(const UT_UniqueId&) const = default;

private:
    uint64_t value_ = 0;
};
