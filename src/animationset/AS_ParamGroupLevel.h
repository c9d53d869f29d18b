#pragma once

#include "animationset/AS_ClonableLevel.h"

// The shared half of a parameter group element; the common fields only.
class AS_CommonParamGroupLevel : public AS_CommonLevel {
public:
    using AS_CommonLevel::AS_CommonLevel;
};

// A parameter group element. It has no exposure of its own and is not cloned.
class AS_ParamGroupLevel : public AS_ClonableLevel {
public:
    AS_ParamGroupLevel() : AS_ClonableLevel(kLevelParamGroup, AS_kInvalidId, nullptr) {}
    AS_ParamGroupLevel(uint32_t id, std::shared_ptr<AS_CommonParamGroupLevel> common)
        : AS_ClonableLevel(kLevelParamGroup, id, std::move(common)) {}
    static std::unique_ptr<AS_ParamGroupLevel> Create(uint32_t id, const UT_WString& name) {
        return std::make_unique<AS_ParamGroupLevel>(id, std::make_shared<AS_CommonParamGroupLevel>(name, id));
    }

    uint32_t GetDuration() const override { return 0; }
    int32_t GetFirstFrame() const override { return 0; }
    int32_t GetLastFrame() const override { return 0; }

protected:
    bool AcceptsCommon(const AS_CommonLevel& common) const override {
        return dynamic_cast<const AS_CommonParamGroupLevel*>(&common) != nullptr;
    }
    void WriteOwn(DB_Archive&) override {}
    void ReadOwn(DB_Archive&) override {}
    // The clipboard form carries the common fields.
    void WriteDragBody(DB_Archive& archive) override { WriteCommonBody(archive); }
    void ReadDragBody(DB_Archive& archive) override { ReadCommonBody(archive); }
};
