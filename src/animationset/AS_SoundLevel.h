#pragma once

#include "animationset/AS_ClonableLevel.h"

// The shared half of a sound element. The sound itself is not held yet: the body is the
// common fields only.
class AS_CommonSoundLevel : public AS_CommonLevel {
public:
    using AS_CommonLevel::AS_CommonLevel;
};

// A sound element, as far as the element model goes: identity, note and common half.
class AS_SoundLevel : public AS_ClonableLevel {
public:
    AS_SoundLevel() : AS_ClonableLevel(kLevelSound, AS_kInvalidId, nullptr) {}
    AS_SoundLevel(uint32_t id, std::shared_ptr<AS_CommonSoundLevel> common)
        : AS_ClonableLevel(kLevelSound, id, std::move(common)) {}
    static std::unique_ptr<AS_SoundLevel> Create(uint32_t id, const UT_WString& name) {
        return std::make_unique<AS_SoundLevel>(id, std::make_shared<AS_CommonSoundLevel>(name, id));
    }

    uint32_t GetDuration() const override { return 0; }
    int32_t GetFirstFrame() const override { return 0; }
    int32_t GetLastFrame() const override { return 0; }
    std::unique_ptr<AS_DopeSheetLevelObj> Clone(uint32_t newId, bool) const override {
        auto clone = std::make_unique<AS_SoundLevel>(
            newId, std::static_pointer_cast<AS_CommonSoundLevel>(SharedCommon()));
        CopyBaseTo(*clone);
        return clone;
    }

protected:
    bool AcceptsCommon(const AS_CommonLevel& common) const override {
        return dynamic_cast<const AS_CommonSoundLevel*>(&common) != nullptr;
    }
    void WriteOwn(DB_Archive&) override {}
    void ReadOwn(DB_Archive&) override {}
};
