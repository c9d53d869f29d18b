#pragma once

#include "animationset/AS_ClonableLevel.h"

#include <memory>

// The shared half of an effect element: its duration and the effect object.
class AS_CommonEffect : public AS_CommonLevel {
public:
    AS_CommonEffect() = default;
    AS_CommonEffect(UT_WString name, uint32_t commonId, std::unique_ptr<CPersistentObjBase> effect,
                    uint32_t duration = 20)
        : AS_CommonLevel(std::move(name), commonId), duration_(duration), effect_(std::move(effect)) {}

    void Read(DB_Archive& archive) override;
    // Throws when the effect object cannot be written as a typed object.
    void Write(DB_Archive& archive) override;

    uint32_t Duration() const { return duration_; }
    void SetDuration(uint32_t duration) { duration_ = duration; }
    CPersistentObjBase* Effect() const { return effect_.get(); }

private:
    uint32_t duration_ = 20;
    std::unique_ptr<CPersistentObjBase> effect_;
};

// An effect element: applies its effect from a first frame for a length of frames.
class AS_EffectLevel : public AS_ClonableLevel {
public:
    AS_EffectLevel() : AS_ClonableLevel(kLevelEffect, AS_kInvalidId, nullptr) {}
    AS_EffectLevel(uint32_t id, std::shared_ptr<AS_CommonEffect> common)
        : AS_ClonableLevel(kLevelEffect, id, std::move(common)) {}
    static std::unique_ptr<AS_EffectLevel> Create(uint32_t id, const UT_WString& name,
                                                  std::unique_ptr<CPersistentObjBase> effect);

    // The stored length, or the common duration when none is stored; never above it.
    uint32_t GetDuration() const override;
    int32_t GetFirstFrame() const override { return static_cast<int32_t>(firstFrame_); }
    int32_t GetLastFrame() const override;
    std::unique_ptr<AS_DopeSheetLevelObj> Clone(uint32_t newId, bool copyCells) const override;

    AS_CommonEffect* CommonEffect() const { return static_cast<AS_CommonEffect*>(Common()); }
    void SetFirstFrame(uint32_t frame) { firstFrame_ = frame; }
    // A length equal to the common duration is stored as 0.
    void SetLength(uint32_t length);
    uint32_t StoredLength() const { return length_; }

protected:
    bool AcceptsCommon(const AS_CommonLevel& common) const override;
    void WriteOwn(DB_Archive& archive) override;
    void ReadOwn(DB_Archive& archive) override;
    // The clipboard form carries the common half and the first frame and length.
    void WriteDragBody(DB_Archive& archive) override {
        WriteCommonBody(archive);
        WriteOwn(archive);
    }
    void ReadDragBody(DB_Archive& archive) override {
        ReadCommonBody(archive);
        ReadOwn(archive);
    }

private:
    uint32_t firstFrame_ = 0;
    uint32_t length_ = 0;
};
