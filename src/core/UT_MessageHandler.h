#pragma once

#include "core/UT_String.h"

#include <cstdint>

// How the model speaks to the user without knowing any window. One process-wide
// current handler; with none installed every call gives the caller's default answer.
class UT_MessageHandler {
public:
    enum Severity : int { kError = 0, kWarning = 1, kInformation = 2 };
    // Buttons: 1 Yes/No, 2 Yes/No/Cancel, 3 Retry/Cancel, 4 Abort/Retry/Ignore, other OK/Cancel.
    enum Buttons : int {
        kOkCancel = 0,
        kYesNo = 1,
        kYesNoCancel = 2,
        kRetryCancel = 3,
        kAbortRetryIgnore = 4
    };
    enum Answer : int { kOk = 0, kCancel = 1, kYes = 2, kNo = 3, kAbort = 4, kRetry = 5, kIgnore = 6 };

    virtual ~UT_MessageHandler() = default;
    virtual void Message(int severity, const UT_WString& text) = 0;
    virtual int Question(int buttons, const UT_WString& text) = 0;
    // A message with a "don't show again" check box that sets *silenced.
    virtual void MessageOnce(int severity, const UT_WString& text, bool* silenced) = 0;
    virtual void MessageOnceById(int severity, uint32_t messageId, bool* silenced) = 0;
    virtual int QuestionOnceById(int buttons, uint32_t messageId, bool* silenced) = 0;

    // The current handler, or nullptr. Setting returns the previous one.
    static UT_MessageHandler* Current();
    static UT_MessageHandler* SetCurrent(UT_MessageHandler* handler);

    // Calls on the current handler, with the defaults when none is installed.
    static void Post(int severity, const UT_WString& text);
    static int Ask(int buttons, const UT_WString& text, int defaultAnswer);
};

// Installs a handler for its lifetime and restores the previous one.
class UT_MessageHandlerScope {
public:
    explicit UT_MessageHandlerScope(UT_MessageHandler* handler)
        : previous_(UT_MessageHandler::SetCurrent(handler)) {}
    ~UT_MessageHandlerScope() { UT_MessageHandler::SetCurrent(previous_); }
    UT_MessageHandlerScope(const UT_MessageHandlerScope&) = delete;
    UT_MessageHandlerScope& operator=(const UT_MessageHandlerScope&) = delete;

private:
    UT_MessageHandler* previous_;
};
