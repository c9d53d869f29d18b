#include "animationset/AS_EffectLevel.h"

#include "core/DB_Archive.h"
#include "core/DB_Exception.h"

#include <algorithm>

void AS_CommonEffect::Read(DB_Archive& archive) {
    AS_CommonLevel::Read(archive);
    duration_ = archive.ReadU32();
    effect_ = archive.ReadNew();
}

void AS_CommonEffect::Write(DB_Archive& archive) {
    AS_CommonLevel::Write(archive);
    archive.WriteU32(duration_);
    if (!effect_ || !archive.WriteTyped(*effect_))
        throw DB_Exception(u"The effect of the element " + name_ + u" cannot be written");
}

std::unique_ptr<AS_EffectLevel> AS_EffectLevel::Create(uint32_t id, const UT_WString& name,
                                                       std::unique_ptr<CPersistentObjBase> effect) {
    return std::make_unique<AS_EffectLevel>(id,
                                            std::make_shared<AS_CommonEffect>(name, id, std::move(effect)));
}

bool AS_EffectLevel::AcceptsCommon(const AS_CommonLevel& common) const {
    return dynamic_cast<const AS_CommonEffect*>(&common) != nullptr;
}

void AS_EffectLevel::WriteOwn(DB_Archive& archive) {
    archive.WriteU32(firstFrame_);
    archive.WriteU32(length_);
}

void AS_EffectLevel::ReadOwn(DB_Archive& archive) {
    firstFrame_ = archive.ReadU32();
    length_ = archive.ReadU32();
}

uint32_t AS_EffectLevel::GetDuration() const {
    const uint32_t common = CommonEffect() ? CommonEffect()->Duration() : 0;
    return length_ == 0 ? common : std::min(length_, common);
}

int32_t AS_EffectLevel::GetLastFrame() const {
    const uint32_t duration = GetDuration();
    return duration == 0 ? 0 : static_cast<int32_t>(firstFrame_ + duration - 1);
}

void AS_EffectLevel::SetLength(uint32_t length) {
    const uint32_t common = CommonEffect() ? CommonEffect()->Duration() : 0;
    length_ = length == common ? 0 : length;
}

std::unique_ptr<AS_DopeSheetLevelObj> AS_EffectLevel::Clone(uint32_t newId, bool copyCells) const {
    auto clone =
        std::make_unique<AS_EffectLevel>(newId, std::static_pointer_cast<AS_CommonEffect>(SharedCommon()));
    CopyBaseTo(*clone);
    if (copyCells) {
        clone->firstFrame_ = firstFrame_;
        clone->length_ = length_;
    }
    return clone;
}
