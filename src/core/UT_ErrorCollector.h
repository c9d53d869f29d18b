#pragma once

#include "core/UT_CountedHandle.h"
#include "core/UT_String.h"

#include <vector>

// Collects the messages of one operation and shows them together when the last user
// lets go: the heading, a blank line, then each message on a line, at most eleven,
// followed by "More errors...". A collector without a heading reports nothing.
class UT_ErrorCollector {
public:
    using Handle = UT_CountedHandle<UT_ErrorCollector>;

    // A handle on the live collector, creating it if no handle is alive.
    static Handle Get();
    // The live collector, or nullptr when no handle is alive.
    static UT_ErrorCollector* Live();

    ~UT_ErrorCollector();

    // The first heading given wins.
    void SetHeading(const UT_WString& heading);
    void Add(const UT_WString& message);
    bool IsEmpty() const { return messages_.empty(); }
    const std::vector<UT_WString>& Messages() const { return messages_; }
    // The text that goes to the user.
    UT_WString Report() const;

private:
    UT_WString heading_;
    bool hasHeading_ = false;
    std::vector<UT_WString> messages_;
};
