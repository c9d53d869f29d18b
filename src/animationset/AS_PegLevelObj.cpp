#include "animationset/AS_PegLevelObj.h"

#include "core/DB_Archive.h"
#include "motion/C3DInterpolation.h"
#include "motion/CCatmullCurve.h"
#include "motion/CSpline.h"
#include "motion/CVelocityBased.h"

#include <algorithm>
#include <cmath>

AS_CommonPegLevel::AS_CommonPegLevel(UT_WString name, uint32_t commonId, uint32_t duration)
    : AS_CommonLevel(std::move(name), commonId), duration_(std::max<uint32_t>(duration, 2)) {
    const auto last = static_cast<int16_t>(std::min<uint32_t>(duration_ - 1, INT16_MAX));
    rotation_ = std::make_unique<CSpline>(0, 0.0, last, 0.0);
    verticalScale_ = std::make_unique<CSpline>(0, 1.0, last, 1.0);
    horizontalScale_ = std::make_unique<CSpline>(0, 1.0, last, 1.0);
    velocity_ = std::make_unique<CSpline>(0, 0.0, last, 100.0);
    const C3DPoint origin;
    path_ = std::make_unique<CCatmullCurve>(0, origin, last, origin, &velocity_, 0);
    pivotPath_ = std::make_unique<C3DInterpolation>(0, origin, last, origin, 0);
}

void AS_CommonPegLevel::ConnectCurves() {
    if (auto* path = dynamic_cast<CCatmullCurve*>(path_.get()))
        path->velocityPlace = &velocity_;
    for (CFunctionPlace* scale : {&verticalScale_, &horizontalScale_})
        if (auto* based = dynamic_cast<CVelocityBased*>(scale->get()))
            based->reference = &velocity_;
}

void AS_CommonPegLevel::Read(DB_Archive& archive) {
    AS_CommonLevel::Read(archive);
    duration_ = archive.ReadU32();
    rotation_ = archive.ReadNewAs<CFunctionBase>();
    verticalScale_ = archive.ReadNewAs<CFunctionBase>();
    horizontalScale_ = archive.ReadNewAs<CFunctionBase>();
    velocity_ = archive.ReadNewAs<CFunctionBase>();
    path_ = archive.ReadNewAs<C3DFunction>();
    pivotPath_ = archive.ReadNewAs<C3DFunction>();
    flag = archive.ReadBool();
    baseScale.Read(archive);
    baseRotation = archive.ReadF64();
    keepProportions = archive.ReadBool();
    if (archive.Version() < 32)
        archive.ReadId();
    pivotOnScaling = archive.ReadBool();
    ConnectCurves();
    path_->Discretize(0);
}

void AS_CommonPegLevel::Write(DB_Archive& archive) {
    AS_CommonLevel::Write(archive);
    archive.WriteU32(duration_);
    for (CFunctionPlace* curve : {&rotation_, &verticalScale_, &horizontalScale_, &velocity_})
        archive.WriteTyped(**curve);
    archive.WriteTyped(*path_);
    archive.WriteTyped(*pivotPath_);
    archive.WriteBool(flag);
    baseScale.Write(archive);
    archive.WriteF64(baseRotation);
    archive.WriteBool(keepProportions);
    archive.WriteBool(pivotOnScaling);
}

std::shared_ptr<AS_CommonPegLevel> AS_CommonPegLevel::DeepCopy(const UT_WString& name,
                                                               uint32_t commonId) const {
    auto copy = std::make_shared<AS_CommonPegLevel>(name, commonId, duration_);
    copy->rotation_ = rotation_->Clone(true);
    copy->verticalScale_ = verticalScale_->Clone(true);
    copy->horizontalScale_ = horizontalScale_->Clone(true);
    copy->velocity_ = velocity_->Clone(true);
    copy->path_ = path_->Clone(true);
    copy->pivotPath_ = pivotPath_->Clone(true);
    copy->flag = flag;
    copy->baseScale = baseScale;
    copy->baseRotation = baseRotation;
    copy->keepProportions = keepProportions;
    copy->pivotOnScaling = pivotOnScaling;
    copy->ConnectCurves();
    return copy;
}

std::unique_ptr<AS_PegLevelObj> AS_PegLevelObj::Create(uint32_t id, const UT_WString& name,
                                                       uint32_t duration) {
    return std::make_unique<AS_PegLevelObj>(id, std::make_shared<AS_CommonPegLevel>(name, id, duration));
}

bool AS_PegLevelObj::AcceptsCommon(const AS_CommonLevel& common) const {
    return dynamic_cast<const AS_CommonPegLevel*>(&common) != nullptr;
}

void AS_PegLevelObj::WriteOwn(DB_Archive& archive) {
    archive.WriteU32(static_cast<uint32_t>(startFrame_));
    for (double value : {offsetY, offsetX, offsetZ, secondOffsetY, secondOffsetX, secondOffsetZ})
        archive.WriteF64(value);
    archive.WriteBool(looped_);
    archive.WriteU32(loopType_);
    archive.WriteU32(loopEnd_);
    archive.WriteU32(lastField);
}

void AS_PegLevelObj::ReadOwn(DB_Archive& archive) {
    startFrame_ = static_cast<int32_t>(archive.ReadU32());
    for (double* value : {&offsetY, &offsetX, &offsetZ, &secondOffsetY, &secondOffsetX, &secondOffsetZ})
        *value = archive.ReadF64();
    looped_ = archive.ReadBool();
    loopType_ = archive.ReadU32();
    if (archive.Version() <= 31) {
        const double end = archive.ReadF64();
        loopEnd_ = std::isfinite(end) && end >= 0.0 && end < 4294967296.0 ? static_cast<uint32_t>(end) : 0;
    } else {
        loopEnd_ = archive.ReadU32();
    }
    lastField = archive.ReadU32();
}

uint32_t AS_PegLevelObj::LowestLoopEnd() const {
    const uint32_t duration = CommonPeg() ? CommonPeg()->Duration() : 2;
    return static_cast<uint32_t>(std::max<int64_t>(int64_t{startFrame_} + duration - 1, 0));
}

uint32_t AS_PegLevelObj::GetLoopEnd() const {
    return loopType_ == 1 ? std::max(loopEnd_, LowestLoopEnd()) : loopEnd_;
}

void AS_PegLevelObj::SetLoopEnd(uint32_t value) {
    loopEnd_ = loopType_ == 1 ? std::max(value, LowestLoopEnd()) : value;
}

uint32_t AS_PegLevelObj::GetDuration() const {
    const int64_t d = CommonPeg() ? CommonPeg()->Duration() : 2;
    if (!looped_)
        return static_cast<uint32_t>(d);
    const int64_t e = GetLoopEnd();
    switch (loopType_) {
    case 0:
        return static_cast<uint32_t>((d - 1) * e + 1);
    case 1:
        return static_cast<uint32_t>(e - startFrame_ + 1);
    case 2:
        return static_cast<uint32_t>(e);
    default:
        return static_cast<uint32_t>(d);
    }
}

int32_t AS_PegLevelObj::GetLastFrame() const {
    const int64_t d = CommonPeg() ? CommonPeg()->Duration() : 2;
    return static_cast<int32_t>(startFrame_ + d - 1);
}

std::unique_ptr<AS_DopeSheetLevelObj> AS_PegLevelObj::Clone(uint32_t newId, bool copyCells) const {
    auto clone =
        std::make_unique<AS_PegLevelObj>(newId, std::static_pointer_cast<AS_CommonPegLevel>(SharedCommon()));
    CopyBaseTo(*clone);
    if (copyCells)
        CopyPegFieldsTo(*clone);
    return clone;
}

std::unique_ptr<AS_PegLevelObj> AS_PegLevelObj::Duplicate(const UT_WString& name, uint32_t id) const {
    auto copy = std::make_unique<AS_PegLevelObj>(id, CommonPeg()->DeepCopy(name, id));
    CopyBaseTo(*copy);
    CopyPegFieldsTo(*copy);
    return copy;
}

void AS_PegLevelObj::CopyPegFieldsTo(AS_PegLevelObj& target) const {
    target.startFrame_ = startFrame_;
    target.offsetY = offsetY;
    target.offsetX = offsetX;
    target.offsetZ = offsetZ;
    target.secondOffsetY = secondOffsetY;
    target.secondOffsetX = secondOffsetX;
    target.secondOffsetZ = secondOffsetZ;
    target.looped_ = looped_;
    target.loopType_ = loopType_;
    target.loopEnd_ = loopEnd_;
    target.lastField = lastField;
}
