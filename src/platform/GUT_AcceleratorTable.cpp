#include "platform/GUT_AcceleratorTable.h"

#include "core/UT_SettingsStore.h"
#include "platform/GUT_Commands.h"

#include <QKeySequence>

namespace {

std::string DefaultKey(GUT_AcceleratorTable::Mode mode, const GUT_CommandInfo& command) {
    return mode == GUT_AcceleratorTable::kDrawing ? command.drawingKey : command.sceneplanningKey;
}

} // namespace

GUT_AcceleratorTable::GUT_AcceleratorTable() {
    ResetAll();
}

void GUT_AcceleratorTable::ResetAll() {
    for (const Mode mode : {kDrawing, kSceneplanning}) {
        keys_[mode].clear();
        unknown_[mode].clear();
        for (const GUT_CommandInfo& command : GUT_AllCommands())
            keys_[mode][command.id] = DefaultKey(mode, command);
    }
}

std::string GUT_AcceleratorTable::Normalise(const std::string& key) {
    const QKeySequence sequence =
        QKeySequence::fromString(QString::fromStdString(key), QKeySequence::PortableText);
    if (sequence.isEmpty() || sequence[0].key() == Qt::Key_unknown)
        return {};
    return sequence.toString(QKeySequence::PortableText).toStdString();
}

bool GUT_AcceleratorTable::IsReserved(const std::string& key) {
    const QKeySequence sequence =
        QKeySequence::fromString(QString::fromStdString(key), QKeySequence::PortableText);
    if (sequence.count() != 1)
        return true;
    const QKeyCombination combination = sequence[0];
    switch (combination.key()) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Alt:
    case Qt::Key_Meta:
    case Qt::Key_AltGr:
    case Qt::Key_unknown:
        return true;
    case Qt::Key_Escape:
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Space:
    case Qt::Key_Backspace:
        // Dialogs, focus and text entry rely on these without modifiers.
        return combination.keyboardModifiers() == Qt::NoModifier ||
               combination.keyboardModifiers() == Qt::ShiftModifier;
    default:
        break;
    }
    // A plain character would be lost to every text field.
    const Qt::KeyboardModifiers modifiers = combination.keyboardModifiers() & ~Qt::KeypadModifier;
    const bool printable = combination.key() >= Qt::Key_Space && combination.key() <= Qt::Key_ydiaeresis;
    return printable && (modifiers == Qt::NoModifier || modifiers == Qt::ShiftModifier);
}

void GUT_AcceleratorTable::Load(const UT_SettingsStore& store) {
    ResetAll();
    for (const Mode mode : {kDrawing, kSceneplanning}) {
        for (const std::string& name : store.Keys(kSections[mode])) {
            const std::optional<int64_t> id = UT_SettingsStore::ParseInt(name);
            if (!id || *id <= 0 || *id > UINT32_MAX)
                continue;
            const std::string value = store.Get(kSections[mode], name).value_or("");
            const uint32_t command = static_cast<uint32_t>(*id);
            if (!GUT_FindCommand(command)) {
                unknown_[mode][command] = value;
                continue;
            }
            const std::string key = Normalise(value);
            if (value.empty() || (!key.empty() && !IsReserved(key)))
                Assign(mode, command, key);
        }
    }
}

bool GUT_AcceleratorTable::Save(UT_SettingsStore& store) const {
    for (const Mode mode : {kDrawing, kSceneplanning}) {
        store.RemoveSection(kSections[mode]);
        for (const GUT_CommandInfo& command : GUT_AllCommands()) {
            const std::string key = Key(mode, command.id);
            if (key != DefaultKey(mode, command))
                store.Set(kSections[mode], std::to_string(command.id), key);
        }
        for (const auto& [id, key] : unknown_[mode])
            store.Set(kSections[mode], std::to_string(id), key);
    }
    return store.Flush();
}

std::string GUT_AcceleratorTable::Key(Mode mode, uint32_t id) const {
    const auto it = keys_[mode].find(id);
    return it == keys_[mode].end() ? std::string() : it->second;
}

uint32_t GUT_AcceleratorTable::CommandOfKey(Mode mode, const std::string& key) const {
    if (key.empty())
        return 0;
    for (const auto& [id, text] : keys_[mode])
        if (text == key)
            return id;
    return 0;
}

uint32_t GUT_AcceleratorTable::Assign(Mode mode, uint32_t id, const std::string& key) {
    const uint32_t previous = CommandOfKey(mode, key);
    if (previous == id)
        return 0;
    if (previous != 0)
        keys_[mode][previous].clear();
    keys_[mode][id] = key;
    return previous;
}

std::vector<uint32_t> GUT_AcceleratorTable::UnknownCommands(Mode mode) const {
    std::vector<uint32_t> ids;
    for (const auto& [id, key] : unknown_[mode])
        ids.push_back(id);
    return ids;
}

std::string GUT_AcceleratorTable::UnknownKey(Mode mode, uint32_t id) const {
    const auto it = unknown_[mode].find(id);
    return it == unknown_[mode].end() ? std::string() : it->second;
}
