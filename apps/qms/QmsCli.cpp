#include "QmsCli.h"

#include "core/UT_Format.h"

#include <cerrno>
#include <charconv>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iomanip>
#include <iostream>
#include <unistd.h>

QmsArgs::QmsArgs(std::vector<std::string> words, const std::set<std::string>& valueOptions)
    : valueOptions_(valueOptions) {
    bool optionsEnded = false;
    for (size_t i = 0; i < words.size(); ++i) {
        const std::string& w = words[i];
        if (!optionsEnded && w == "--") {
            optionsEnded = true;
        } else if (!optionsEnded && w.size() > 2 && w.compare(0, 2, "--") == 0) {
            std::string name = w.substr(2);
            const size_t eq = name.find('=');
            if (eq != std::string::npos) {
                options_[name.substr(0, eq)] = name.substr(eq + 1);
            } else if (valueOptions_.count(name)) {
                if (i + 1 >= words.size())
                    throw QmsUsageError("--" + name + " needs a value");
                options_[name] = words[++i];
            } else {
                flags_.insert(name);
            }
        } else {
            positional_.push_back(w);
        }
    }
}

const std::string& QmsArgs::At(size_t index, const char* what) const {
    if (index >= positional_.size())
        throw QmsUsageError(std::string("missing ") + what);
    return positional_[index];
}

std::optional<std::string> QmsArgs::Optional(size_t index) const {
    if (index >= positional_.size())
        return std::nullopt;
    return positional_[index];
}

std::optional<std::string> QmsArgs::Option(const std::string& name) const {
    auto it = options_.find(name);
    if (it == options_.end())
        return std::nullopt;
    return it->second;
}

void QmsArgs::Check(size_t minimum, size_t maximum, const std::set<std::string>& flags) const {
    if (positional_.size() < minimum)
        throw QmsUsageError("too few arguments");
    if (positional_.size() > maximum)
        throw QmsUsageError("unexpected argument '" + positional_[maximum] + "'");
    for (const auto& [name, value] : options_) {
        if (!valueOptions_.count(name))
            throw QmsUsageError("unknown option --" + name);
    }
    for (const std::string& flag : flags_) {
        if (!flags.count(flag))
            throw QmsUsageError("unknown option --" + flag);
    }
}

int64_t QmsArgs::ParseInt(const std::string& text, const char* what) {
    errno = 0;
    char* end = nullptr;
    const long long value = std::strtoll(text.c_str(), &end, 10);
    if (text.empty() || *end != 0 || errno == ERANGE)
        throw QmsUsageError(std::string(what) + " must be a whole number, not '" + text + "'");
    return value;
}

size_t QmsArgs::ParsePosition(const std::string& text, size_t last) {
    const int64_t position = ParseInt(text, "POSITION");
    if (position < 1 || static_cast<uint64_t>(position) > last)
        throw QmsFailure("The position must lie between 1 and " + std::to_string(last) + ", not " + text +
                         ".");
    return static_cast<size_t>(position - 1);
}

double QmsArgs::ParseDouble(const std::string& text, const char* what) {
    errno = 0;
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != 0 || errno == ERANGE || !std::isfinite(value))
        throw QmsUsageError(std::string(what) + " must be a number, not '" + text + "'");
    return value;
}

std::string QmsJson::Escape(std::string_view text) {
    std::string out;
    out.reserve(text.size() + 2);
    for (char c : text) {
        switch (c) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            if (static_cast<unsigned char>(c) < 0x20) {
                char buffer[8];
                std::snprintf(buffer, sizeof buffer, "\\u%04x", c);
                out += buffer;
            } else {
                out += c;
            }
        }
    }
    return out;
}

void QmsJson::Separate() {
    if (afterKey_) {
        afterKey_ = false;
        return;
    }
    if (!first_.back())
        out_ << ',';
    first_.back() = false;
}

QmsJson& QmsJson::BeginObject() {
    Separate();
    out_ << '{';
    first_.push_back(true);
    return *this;
}

QmsJson& QmsJson::EndObject() {
    first_.pop_back();
    out_ << '}';
    if (first_.size() == 1)
        out_ << '\n';
    return *this;
}

QmsJson& QmsJson::BeginArray() {
    Separate();
    out_ << '[';
    first_.push_back(true);
    return *this;
}

QmsJson& QmsJson::EndArray() {
    first_.pop_back();
    out_ << ']';
    if (first_.size() == 1)
        out_ << '\n';
    return *this;
}

QmsJson& QmsJson::Key(std::string_view key) {
    Separate();
    out_ << '"' << Escape(key) << "\":";
    afterKey_ = true;
    return *this;
}

QmsJson& QmsJson::Value(std::string_view text) {
    Separate();
    out_ << '"' << Escape(text) << '"';
    return *this;
}

QmsJson& QmsJson::Value(int64_t number) {
    Separate();
    out_ << number;
    return *this;
}

QmsJson& QmsJson::Value(double number) {
    Separate();
    if (!std::isfinite(number)) {
        out_ << "null";
    } else {
        // The shortest text that reads back as the same double: 0.07, not 0.070000000000000007.
        char text[32];
        const auto end = std::to_chars(text, text + sizeof text, number).ptr;
        out_.write(text, end - text);
    }
    return *this;
}

QmsJson& QmsJson::Value(bool flag) {
    Separate();
    out_ << (flag ? "true" : "false");
    return *this;
}

QmsJson& QmsJson::Null() {
    Separate();
    out_ << "null";
    return *this;
}

void QmsMessageHandler::Message(int severity, const UT_WString& text) {
    static const char* const kPrefix[] = {"error: ", "warning: ", ""};
    err_ << kPrefix[severity >= 0 && severity <= 2 ? severity : 0] << UT_ToUtf8(text) << "\n";
}

int QmsMessageHandler::Question(int buttons, const UT_WString& text) {
    const bool offersYes = buttons == kYesNo || buttons == kYesNoCancel;
    err_ << UT_ToUtf8(text) << (offersYes ? " [yes]" : " [ok]") << "\n";
    return offersYes ? kYes : kOk;
}

void QmsMessageHandler::MessageOnce(int severity, const UT_WString& text, bool*) {
    Message(severity, text);
}

void QmsMessageHandler::MessageOnceById(int severity, uint32_t messageId, bool*) {
    Message(severity, UT_Fmt(u"message %d", UT_Num(messageId)));
}

int QmsMessageHandler::QuestionOnceById(int buttons, uint32_t messageId, bool*) {
    return Question(buttons, UT_Fmt(u"question %d", UT_Num(messageId)));
}

namespace {

volatile std::sig_atomic_t g_interrupted = 0;

void OnInterrupt(int) {
    g_interrupted = 1;
}

} // namespace

QmsTerminalProgress::QmsTerminalProgress() : terminal_(::isatty(STDERR_FILENO) != 0) {
    g_interrupted = 0;
    std::signal(SIGINT, OnInterrupt);
}

QmsTerminalProgress::~QmsTerminalProgress() {
    std::signal(SIGINT, SIG_DFL);
    if (terminal_ && shown_ >= 0)
        std::cerr << "\r\033[K" << std::flush;
}

void QmsTerminalProgress::SetRange(int64_t low, int64_t high, int64_t position) {
    low_ = low;
    high_ = high;
    SetPosition(position);
}

bool QmsTerminalProgress::IsCancelled() {
    return g_interrupted != 0;
}

void QmsTerminalProgress::SetPosition(int64_t position) {
    position_ = position;
    const int percent = Percent(low_, high_, position_);
    if (percent != shown_) {
        shown_ = percent;
        Draw();
    }
}

void QmsTerminalProgress::SetText(const UT_WString& text) {
    text_ = UT_ToUtf8(text);
    Draw();
}

void QmsTerminalProgress::Draw() {
    if (!terminal_ || shown_ < 0)
        return;
    constexpr int kWidth = 30;
    const int filled = shown_ * kWidth / 100;
    std::cerr << "\r\033[K[" << std::string(filled, '#') << std::string(kWidth - filled, '.') << "] "
              << std::setw(3) << shown_ << "% " << text_ << std::flush;
}
