#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Per-user settings as sections of key and value, both UTF-8 text. Section and key names
// compare without regard to ASCII case. The section "" holds keys outside any section.
class UT_SettingsStore {
public:
    virtual ~UT_SettingsStore() = default;

    virtual std::optional<std::string> Get(std::string_view section, std::string_view key) const = 0;
    virtual void Set(std::string_view section, std::string_view key, std::string_view value) = 0;
    virtual void Remove(std::string_view section, std::string_view key) = 0;
    virtual void RemoveSection(std::string_view section) = 0;
    virtual std::vector<std::string> Keys(std::string_view section) const = 0;
    // Makes the values durable. False if that failed; the values stay in memory.
    virtual bool Flush() = 0;

    // An integer in decimal, or in hexadecimal after "0x"; nullopt for anything else,
    // including values outside the 64-bit signed range.
    std::optional<int64_t> GetInt(std::string_view section, std::string_view key) const;
    void SetInt(std::string_view section, std::string_view key, int64_t value);

    static std::optional<int64_t> ParseInt(std::string_view text);
};

// Case-insensitive ordering of section and key names.
struct UT_SettingsNameLess {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const;
};

// Settings held in memory only; used by tests and as the base of the file store.
class UT_MemorySettingsStore : public UT_SettingsStore {
public:
    using Section = std::map<std::string, std::string, UT_SettingsNameLess>;
    using Sections = std::map<std::string, Section, UT_SettingsNameLess>;

    std::optional<std::string> Get(std::string_view section, std::string_view key) const override;
    void Set(std::string_view section, std::string_view key, std::string_view value) override;
    void Remove(std::string_view section, std::string_view key) override;
    void RemoveSection(std::string_view section) override;
    std::vector<std::string> Keys(std::string_view section) const override;
    bool Flush() override { return true; }

    const Sections& All() const { return sections_; }

protected:
    Sections sections_;
};

// Settings in an INI file: "[Section]" lines, then "key=value" lines. Lines that start
// with ';' or '#' are comments; lines that fit neither form are ignored, and blanks
// around names and values are trimmed. In values "\\" is a backslash, "\n", "\r" and
// "\t" are a line feed, a carriage return and a tab, and "\s" is a space kept at either
// end. Keys before the first section belong to the section "". Flush rewrites the whole
// file through a temporary file and a rename.
class UT_IniSettingsStore : public UT_MemorySettingsStore {
public:
    // Reads the file if it exists; a missing or unreadable file gives an empty store.
    explicit UT_IniSettingsStore(std::string path);

    bool Flush() override;
    // Reads the file again, dropping values that were not flushed.
    void Reload();
    const std::string& Path() const { return path_; }

    // The parsing and writing of the text, exposed for tests.
    static Sections Parse(std::string_view text);
    static std::string Format(const Sections& sections);

    // "$XDG_CONFIG_HOME/Quilmoor Technologies Inc/Quilmoor Studio 2.0.ini", with
    // "$HOME/.config" when XDG_CONFIG_HOME is unset or empty, or relative to the current
    // folder when neither is set.
    static std::string DefaultPath();

private:
    std::string path_;
};
