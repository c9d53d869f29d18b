#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

class UT_SettingsStore;

// The shortcuts of the commands, one table per mode: the main window puts the table of
// its mode in force whenever the mode changes. Keys are in portable text ("Ctrl+Shift+S").
// Changes from the defaults are stored in the settings, one section per mode; entries
// for commands this program does not know are kept as they were read.
class GUT_AcceleratorTable {
public:
    enum Mode { kDrawing = 0, kSceneplanning = 1 };
    static constexpr std::array<const char*, 2> kSections{"DrawingShortcuts", "SceneplanningShortcuts"};

    GUT_AcceleratorTable();

    void Load(const UT_SettingsStore& store);
    // Writes the differences from the defaults; false if the store could not be written.
    bool Save(UT_SettingsStore& store) const;

    // The key of a command, or "" when it has none.
    std::string Key(Mode mode, uint32_t id) const;
    // The command the key runs in this mode, or 0.
    uint32_t CommandOfKey(Mode mode, const std::string& key) const;
    // Gives the key to the command ("" takes its key away). Another command of the mode
    // that had the key loses it; its id is returned, else 0.
    uint32_t Assign(Mode mode, uint32_t id, const std::string& key);
    void ResetAll();
    // Identifiers read from the settings that no command of this program has.
    std::vector<uint32_t> UnknownCommands(Mode mode) const;
    std::string UnknownKey(Mode mode, uint32_t id) const;
    void ForgetUnknown(Mode mode, uint32_t id) { unknown_[mode].erase(id); }

    // The portable text of a key in any spelling Qt reads ("ctrl+s" gives "Ctrl+S");
    // "" for text that names no key.
    static std::string Normalise(const std::string& key);
    // Keys that dialogs and text fields need for themselves, and keys made of modifiers
    // only: no command may take them.
    static bool IsReserved(const std::string& key);

private:
    std::array<std::map<uint32_t, std::string>, 2> keys_;
    std::array<std::map<uint32_t, std::string>, 2> unknown_;
};
