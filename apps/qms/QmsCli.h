#pragma once

#include "core/UT_MessageHandler.h"
#include "core/UT_Progress.h"
#include "core/UT_String.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <optional>
#include <ostream>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

// A wrong use of the command line: exit code 2 with the usage.
class QmsUsageError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A failure of the work itself: exit code 1 with the system's message.
class QmsFailure : public std::runtime_error {
public:
    explicit QmsFailure(const UT_WString& message) : std::runtime_error(UT_ToUtf8(message)) {}
    explicit QmsFailure(const std::string& message) : std::runtime_error(message) {}
};

// The arguments of one sub-command: positionals, "--name value" options and "--flag"s.
// Which names take a value is declared by the command.
class QmsArgs {
public:
    QmsArgs(std::vector<std::string> words, const std::set<std::string>& valueOptions);

    size_t Count() const { return positional_.size(); }
    const std::string& At(size_t index, const char* what) const;
    std::optional<std::string> Optional(size_t index) const;
    const std::vector<std::string>& Positionals() const { return positional_; }
    std::optional<std::string> Option(const std::string& name) const;
    bool Flag(const std::string& name) const { return flags_.count(name) != 0; }
    // Refuses positionals beyond `maximum`, and options or flags not in the given lists.
    void Check(size_t minimum, size_t maximum, const std::set<std::string>& flags = {}) const;

    static int64_t ParseInt(const std::string& text, const char* what);
    static double ParseDouble(const std::string& text, const char* what);
    // A position from 1 to `last` in a list, as the index from 0.
    static size_t ParsePosition(const std::string& text, size_t last);

private:
    std::vector<std::string> positional_;
    std::map<std::string, std::string> options_;
    std::set<std::string> flags_;
    std::set<std::string> valueOptions_;
};

// Small streaming JSON writer for --json output.
class QmsJson {
public:
    explicit QmsJson(std::ostream& out) : out_(out) {}
    QmsJson& BeginObject();
    QmsJson& EndObject();
    QmsJson& BeginArray();
    QmsJson& EndArray();
    QmsJson& Key(std::string_view key);
    QmsJson& Value(std::string_view text);
    QmsJson& Value(const char* text) { return Value(std::string_view(text)); }
    QmsJson& Value(const UT_WString& text) { return Value(UT_ToUtf8(text)); }
    QmsJson& Value(int64_t number);
    QmsJson& Value(uint32_t number) { return Value(static_cast<int64_t>(number)); }
    QmsJson& Value(int number) { return Value(static_cast<int64_t>(number)); }
    QmsJson& Value(double number);
    QmsJson& Value(bool flag);
    QmsJson& Null();
    template <class T> QmsJson& Field(std::string_view key, const T& value) { return Key(key).Value(value); }
    static std::string Escape(std::string_view text);

private:
    void Separate();
    std::ostream& out_;
    std::vector<bool> first_{true};
    bool afterKey_ = false;
};

// Prints the model's messages on the error output. Questions get the batch answer:
// Yes where Yes is offered, else OK.
class QmsMessageHandler : public UT_MessageHandler {
public:
    explicit QmsMessageHandler(std::ostream& err) : err_(err) {}
    void Message(int severity, const UT_WString& text) override;
    int Question(int buttons, const UT_WString& text) override;
    void MessageOnce(int severity, const UT_WString& text, bool* silenced) override;
    void MessageOnceById(int severity, uint32_t messageId, bool* silenced) override;
    int QuestionOnceById(int buttons, uint32_t messageId, bool* silenced) override;

private:
    std::ostream& err_;
};

// A progress bar on a terminal's error output; silent elsewhere. Ctrl-C cancels.
class QmsTerminalProgress : public UT_Progress {
public:
    QmsTerminalProgress();
    ~QmsTerminalProgress() override;
    void SetRange(int64_t low, int64_t high, int64_t position) override;
    void Step() override { SetPosition(position_ + 1); }
    bool IsCancelled() override;
    void SetPosition(int64_t position) override;
    void ProcessEvents() override {}
    void SetText(const UT_WString& text) override;

private:
    void Draw();
    int64_t low_ = 0, high_ = 100, position_ = 0;
    int shown_ = -1;
    std::string text_;
    bool terminal_;
};

// What every sub-command gets.
struct QmsContext {
    std::ostream& out;
    std::ostream& err;
    bool json = false;
};
