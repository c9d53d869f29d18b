#include "core/CPersistentType.h"

#include "core/DB_MemFile.h"
#include "core/DD_DragDataStore.h"
#include "core/PR_UserColorSettings.h"

#include <stdexcept>

CPersistentTypeRegistry& CPersistentTypeRegistry::Instance() {
    static CPersistentTypeRegistry registry;
    return registry;
}

void CPersistentTypeRegistry::Add(uint16_t id, const std::type_info& type,
                                  std::unique_ptr<CPersistentTypeBase> factory, const char* shortName) {
    const std::type_index key(type);
    auto byClass = byClass_.find(key);
    auto byId = byId_.find(id);
    if (byId != byId_.end() || byClass != byClass_.end()) {
        // Registering the same pair again is harmless; anything else would corrupt files.
        if (byId != byId_.end() && byClass != byClass_.end() && byClass->second == id)
            return;
        throw std::logic_error("persistent type id or class registered twice: " + std::to_string(id));
    }
    byId_.emplace(id, Entry{std::move(factory), shortName ? shortName : type.name()});
    byClass_.emplace(key, id);
}

const CPersistentTypeBase* CPersistentTypeRegistry::Find(uint16_t id) const {
    auto it = byId_.find(id);
    return it == byId_.end() ? nullptr : it->second.factory.get();
}

std::optional<uint16_t> CPersistentTypeRegistry::IdOf(const std::type_info& type) const {
    auto it = byClass_.find(std::type_index(type));
    if (it == byClass_.end())
        return std::nullopt;
    return it->second;
}

std::string CPersistentTypeRegistry::ShortName(uint16_t id) const {
    auto it = byId_.find(id);
    return it == byId_.end() ? std::string() : it->second.shortName;
}

void CoreRegisterTypes() {
    CPersistentTypeRegistry& registry = CPersistentTypeRegistry::Instance();
    registry.Register<DD_DragDataStore>(50, "DragDataStore");
    registry.Register<DB_MemFile>(600, "DB_MemFile");
    registry.Register<PR_UserColorSettings>(400, "TL_UISettings");
}
