#pragma once

#include "core/CPersistentObjBase.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <typeindex>

// Factory of one persistent class.
class CPersistentTypeBase {
public:
    virtual ~CPersistentTypeBase() = default;
    virtual std::unique_ptr<CPersistentObjBase> Create() const = 0;
};

template <class T> class CPersistentType : public CPersistentTypeBase {
public:
    std::unique_ptr<CPersistentObjBase> Create() const override { return std::make_unique<T>(); }
};

// The type registry: u16 type id to factory, run-time class to id. The ids are part of
// the file format. Each library registers its classes through an explicit function
// (CoreRegisterTypes and its siblings) before the first document opens.
class CPersistentTypeRegistry {
public:
    static CPersistentTypeRegistry& Instance();

    template <class T> void Register(uint16_t id, const char* shortName = nullptr) {
        Add(id, typeid(T), std::make_unique<CPersistentType<T>>(), shortName);
    }

    const CPersistentTypeBase* Find(uint16_t id) const;
    std::optional<uint16_t> IdOf(const std::type_info& type) const;
    std::optional<uint16_t> IdOf(const CPersistentObjBase& object) const { return IdOf(typeid(object)); }
    std::string ShortName(uint16_t id) const;

private:
    struct Entry {
        std::unique_ptr<CPersistentTypeBase> factory;
        std::string shortName;
    };
    void Add(uint16_t id, const std::type_info& type, std::unique_ptr<CPersistentTypeBase> factory,
             const char* shortName);

    std::map<uint16_t, Entry> byId_;
    std::map<std::type_index, uint16_t> byClass_;
};

// Registers the persistent classes of the core library (the memory file, the drag data
// store, the user colours).
void CoreRegisterTypes();
