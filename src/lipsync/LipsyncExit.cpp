#include "lipsync/LipsyncExit.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace {

void WriteWarning(const std::string& message) {
    std::fprintf(stderr, "%s: WARNING %s\n", "LipSync", message.c_str());
}

void DefaultExit(int code, const std::string& message) {
    if (code < 0) {
        WriteWarning(message);
        return;
    }
    std::fprintf(stderr, "%s: ERROR %s", "LipSync", message.c_str());
    std::fprintf(stderr, "\nABORTED [%d]\n", code);
    std::exit(code);
}

LipsyncExitRoutine gRoutine = DefaultExit;

std::string FormatMessage(const char* format, va_list args) {
    va_list copy;
    va_copy(copy, args);
    int length = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (length <= 0)
        return std::string();
    std::string text(static_cast<size_t>(length) + 1, '\0');
    std::vsnprintf(text.data(), text.size(), format, args);
    text.resize(static_cast<size_t>(length));
    return text;
}

} // namespace

LipsyncExitRoutine LipsyncSetExitRoutine(LipsyncExitRoutine routine) {
    LipsyncExitRoutine previous = gRoutine;
    gRoutine = routine != nullptr ? routine : DefaultExit;
    return previous;
}

void LipsyncThrowingExit(int code, const std::string& message) {
    if (code < 0) {
        WriteWarning(message);
        return;
    }
    throw LipsyncFatalError(code, message);
}

void LipsyncFatal(int code, const char* format, ...) {
    va_list args;
    va_start(args, format);
    std::string message = FormatMessage(format, args);
    va_end(args);
    gRoutine(code, message);
    // A routine that returns from a fatal error leaves no state to go on with.
    std::abort();
}

void LipsyncWarning(int code, const char* format, ...) {
    va_list args;
    va_start(args, format);
    std::string message = FormatMessage(format, args);
    va_end(args);
    gRoutine(code < 0 ? code : -code, message);
}
