#pragma once

#include <stdexcept>
#include <string>

// The one way out of the analysis. Every error has a number: a positive number is fatal
// and the routine must not return; a negative number is a warning and the analysis goes on.
// The default routine writes "LipSync: ERROR " or "LipSync: WARNING " and the message to
// the error output; for a fatal error it ends the process with "\nABORTED [code]\n".
using LipsyncExitRoutine = void (*)(int code, const std::string& message);

// Installs a routine (nullptr restores the default) and returns the previous one.
LipsyncExitRoutine LipsyncSetExitRoutine(LipsyncExitRoutine routine);

// A fatal error turned into an exception, by the routine LipsyncThrowingExit below.
class LipsyncFatalError : public std::runtime_error {
public:
    LipsyncFatalError(int code, const std::string& message) : std::runtime_error(message), code_(code) {}
    int code() const noexcept { return code_; }

private:
    int code_;
};

// A routine for callers that recover: fatal errors throw LipsyncFatalError, warnings
// go to the error output as the default routine writes them.
void LipsyncThrowingExit(int code, const std::string& message);

// Reports through the current routine. LipsyncFatal never returns.
[[noreturn]] void LipsyncFatal(int code, const char* format, ...) __attribute__((format(printf, 2, 3)));
void LipsyncWarning(int code, const char* format, ...) __attribute__((format(printf, 2, 3)));
