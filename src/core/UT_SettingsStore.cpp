#include "core/UT_SettingsStore.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

char LowerAscii(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string_view TrimBlanks(std::string_view text) {
    const char* blanks = " \t\r";
    const size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    const size_t last = text.find_last_not_of(blanks);
    return text.substr(first, last - first + 1);
}

std::string Unescape(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\' || i + 1 == text.size()) {
            out += text[i];
            continue;
        }
        switch (const char next = text[++i]) {
        case 'n':
            out += '\n';
            break;
        case 'r':
            out += '\r';
            break;
        case 't':
            out += '\t';
            break;
        case 's':
            out += ' ';
            break;
        default:
            out += next;
            break;
        }
    }
    return out;
}

// Line ends and tabs are always escaped; spaces only at either end, where reading would
// trim them.
std::string Escape(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '\\')
            out += "\\\\";
        else if (c == '\n')
            out += "\\n";
        else if (c == '\r')
            out += "\\r";
        else if (c == '\t')
            out += "\\t";
        else if (c == ' ' && (i == 0 || i + 1 == text.size()))
            out += "\\s";
        else
            out += c;
    }
    return out;
}

} // namespace

bool UT_SettingsNameLess::operator()(std::string_view a, std::string_view b) const {
    const size_t n = std::min(a.size(), b.size());
    for (size_t i = 0; i < n; ++i) {
        const char x = LowerAscii(a[i]);
        const char y = LowerAscii(b[i]);
        if (x != y)
            return static_cast<unsigned char>(x) < static_cast<unsigned char>(y);
    }
    return a.size() < b.size();
}

std::optional<int64_t> UT_SettingsStore::ParseInt(std::string_view text) {
    text = TrimBlanks(text);
    bool negative = false;
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
        negative = text.front() == '-';
        text.remove_prefix(1);
    }
    unsigned base = 10;
    if (text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X')) {
        base = 16;
        text.remove_prefix(2);
    }
    if (text.empty())
        return std::nullopt;
    uint64_t magnitude = 0;
    for (char c : text) {
        unsigned digit;
        if (c >= '0' && c <= '9')
            digit = static_cast<unsigned>(c - '0');
        else if (base == 16 && LowerAscii(c) >= 'a' && LowerAscii(c) <= 'f')
            digit = static_cast<unsigned>(LowerAscii(c) - 'a' + 10);
        else
            return std::nullopt;
        if (magnitude > (UINT64_MAX - digit) / base)
            return std::nullopt;
        magnitude = magnitude * base + digit;
    }
    const uint64_t limit = negative ? uint64_t{1} << 63 : (uint64_t{1} << 63) - 1;
    if (magnitude > limit)
        return std::nullopt;
    if (negative)
        return magnitude == limit ? INT64_MIN : -static_cast<int64_t>(magnitude);
    return static_cast<int64_t>(magnitude);
}

std::optional<int64_t> UT_SettingsStore::GetInt(std::string_view section, std::string_view key) const {
    const std::optional<std::string> text = Get(section, key);
    return text ? ParseInt(*text) : std::nullopt;
}

void UT_SettingsStore::SetInt(std::string_view section, std::string_view key, int64_t value) {
    Set(section, key, std::to_string(value));
}

std::optional<std::string> UT_MemorySettingsStore::Get(std::string_view section, std::string_view key) const {
    auto s = sections_.find(section);
    if (s == sections_.end())
        return std::nullopt;
    auto k = s->second.find(key);
    if (k == s->second.end())
        return std::nullopt;
    return k->second;
}

void UT_MemorySettingsStore::Set(std::string_view section, std::string_view key, std::string_view value) {
    auto s = sections_.find(section);
    if (s == sections_.end())
        s = sections_.emplace(std::string(section), Section()).first;
    auto k = s->second.find(key);
    if (k == s->second.end())
        s->second.emplace(std::string(key), std::string(value));
    else
        k->second = value;
}

void UT_MemorySettingsStore::Remove(std::string_view section, std::string_view key) {
    auto s = sections_.find(section);
    if (s == sections_.end())
        return;
    auto k = s->second.find(key);
    if (k != s->second.end())
        s->second.erase(k);
    if (s->second.empty())
        sections_.erase(s);
}

void UT_MemorySettingsStore::RemoveSection(std::string_view section) {
    auto s = sections_.find(section);
    if (s != sections_.end())
        sections_.erase(s);
}

std::vector<std::string> UT_MemorySettingsStore::Keys(std::string_view section) const {
    std::vector<std::string> keys;
    auto s = sections_.find(section);
    if (s != sections_.end())
        for (const auto& [key, value] : s->second)
            keys.push_back(key);
    return keys;
}

UT_IniSettingsStore::UT_IniSettingsStore(std::string path) : path_(std::move(path)) {
    Reload();
}

void UT_IniSettingsStore::Reload() {
    std::ifstream in(path_, std::ios::binary);
    if (!in) {
        sections_.clear();
        return;
    }
    std::ostringstream text;
    text << in.rdbuf();
    sections_ = Parse(text.str());
}

UT_MemorySettingsStore::Sections UT_IniSettingsStore::Parse(std::string_view text) {
    Sections sections;
    std::string current;
    while (!text.empty()) {
        const size_t end = text.find('\n');
        std::string_view line = TrimBlanks(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (line.empty() || line.front() == ';' || line.front() == '#')
            continue;
        if (line.front() == '[') {
            if (line.back() == ']' && line.size() >= 2)
                current = std::string(TrimBlanks(line.substr(1, line.size() - 2)));
            continue;
        }
        const size_t equals = line.find('=');
        if (equals == std::string_view::npos)
            continue;
        const std::string_view key = TrimBlanks(line.substr(0, equals));
        if (key.empty())
            continue;
        Section& section = sections[current];
        section.insert_or_assign(std::string(key), Unescape(TrimBlanks(line.substr(equals + 1))));
    }
    return sections;
}

std::string UT_IniSettingsStore::Format(const Sections& sections) {
    std::string out;
    auto writeSection = [&out](const Section& section) {
        for (const auto& [key, value] : section)
            out += key + "=" + Escape(value) + "\n";
    };
    auto top = sections.find(std::string_view());
    if (top != sections.end())
        writeSection(top->second);
    for (const auto& [name, section] : sections) {
        if (name.empty())
            continue;
        if (!out.empty())
            out += "\n";
        out += "[" + name + "]\n";
        writeSection(section);
    }
    return out;
}

bool UT_IniSettingsStore::Flush() {
    namespace fs = std::filesystem;
    std::error_code error;
    const fs::path target(path_);
    if (target.has_parent_path())
        fs::create_directories(target.parent_path(), error);
    const std::string temporary = path_ + ".tmp";
    {
        std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
        if (!out)
            return false;
        out << Format(sections_);
        out.flush();
        if (!out) {
            out.close();
            fs::remove(temporary, error);
            return false;
        }
    }
    fs::rename(temporary, target, error);
    if (error) {
        fs::remove(temporary, error);
        return false;
    }
    return true;
}

std::string UT_IniSettingsStore::DefaultPath() {
    std::string folder;
    const char* xdg = std::getenv("XDG_CONFIG_HOME");
    const char* home = std::getenv("HOME");
    if (xdg && xdg[0] == '/')
        folder = xdg;
    else if (home && home[0])
        folder = std::string(home) + "/.config";
    else
        folder = ".config";
    return folder + "/Quilmoor Technologies Inc/Quilmoor Studio 2.0.ini";
}
