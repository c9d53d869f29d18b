#pragma once

#include "core/UT_String.h"

#include <cstdint>

// Progress of a long operation. Work polls IsCancelled at its own pace.
class UT_Progress {
public:
    virtual ~UT_Progress() = default;
    virtual void SetRange(int64_t low, int64_t high, int64_t position) = 0;
    virtual void Step() = 0;
    virtual bool IsCancelled() = 0;
    virtual void SetPosition(int64_t position) = 0;
    virtual void ProcessEvents() = 0;
    virtual void SetText(const UT_WString& text) = 0;

    // Percentage shown for a position: 100 * (position - low) / (high - low), capped at 100.
    static int Percent(int64_t low, int64_t high, int64_t position);
};

// A progress that shows nothing and is never cancelled.
class UT_NullProgress : public UT_Progress {
public:
    void SetRange(int64_t, int64_t, int64_t) override {}
    void Step() override {}
    bool IsCancelled() override { return false; }
    void SetPosition(int64_t) override {}
    void ProcessEvents() override {}
    void SetText(const UT_WString&) override {}
};
