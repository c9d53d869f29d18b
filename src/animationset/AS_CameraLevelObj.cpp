#include "animationset/AS_CameraLevelObj.h"

#include "core/DB_Archive.h"
#include "motion/CSpline.h"

#include <algorithm>
#include <cmath>

namespace {

std::unique_ptr<CFunctionBase> FlatFieldOfView(uint32_t duration) {
    const auto last = static_cast<int16_t>(std::clamp<uint32_t>(duration, 2, INT16_MAX) - 1);
    return std::make_unique<CSpline>(0, 30.0, last, 30.0);
}

} // namespace

double AS_CameraLevelObj::DefaultDistance() {
    const double referenceWidth = 2500.0 + 2500.0;
    const double depthField = (referenceWidth * 0.5 / std::tan(0.261903)) / 12.0;
    return 12.0 * depthField;
}

AS_CameraLevelObj::AS_CameraLevelObj()
    : AS_ClonableLevel(kLevelCamera, AS_kInvalidId, nullptr), z(DefaultDistance()),
      fieldOfView_(FlatFieldOfView(10)) {}

AS_CameraLevelObj::AS_CameraLevelObj(uint32_t id, std::shared_ptr<AS_CommonCameraLevel> common,
                                     uint32_t duration)
    : AS_ClonableLevel(kLevelCamera, id, std::move(common)), z(DefaultDistance()), duration_(duration),
      fieldOfView_(FlatFieldOfView(duration)) {}

std::unique_ptr<AS_CameraLevelObj> AS_CameraLevelObj::Create(uint32_t id, const UT_WString& name,
                                                             uint32_t duration, uint32_t width,
                                                             uint32_t height) {
    auto camera =
        std::make_unique<AS_CameraLevelObj>(id, std::make_shared<AS_CommonCameraLevel>(name, id), duration);
    camera->SetSize(width == 0 ? kDefaultWidth : width, height == 0 ? kDefaultHeight : height);
    return camera;
}

bool AS_CameraLevelObj::AcceptsCommon(const AS_CommonLevel& common) const {
    return dynamic_cast<const AS_CommonCameraLevel*>(&common) != nullptr;
}

void AS_CameraLevelObj::WriteOwn(DB_Archive& archive) {
    for (double value : {y, x, z, height_, width_})
        archive.WriteF64(value);
    archive.WriteBool(fixed);
    archive.WriteF64(fixedFieldOfView);
    archive.WriteTyped(*fieldOfView_);
    archive.WriteU32(startFrame_);
    archive.WriteU32(duration_);
}

void AS_CameraLevelObj::ReadOwn(DB_Archive& archive) {
    for (double* value : {&y, &x, &z, &height_, &width_})
        *value = archive.ReadF64();
    fixed = archive.ReadBool();
    fixedFieldOfView = archive.ReadF64();
    fieldOfView_ = archive.ReadNewAs<CFunctionBase>();
    startFrame_ = archive.ReadU32();
    duration_ = archive.ReadU32();
}

std::unique_ptr<AS_DopeSheetLevelObj> AS_CameraLevelObj::Clone(uint32_t newId, bool copyCells) const {
    auto clone = std::make_unique<AS_CameraLevelObj>(
        newId, std::static_pointer_cast<AS_CommonCameraLevel>(SharedCommon()), duration_);
    CopyBaseTo(*clone);
    CopyCameraFieldsTo(*clone, copyCells);
    return clone;
}

std::unique_ptr<AS_CameraLevelObj> AS_CameraLevelObj::Duplicate(const UT_WString& name, uint32_t id) const {
    auto copy =
        std::make_unique<AS_CameraLevelObj>(id, std::make_shared<AS_CommonCameraLevel>(name, id), duration_);
    CopyBaseTo(*copy);
    CopyCameraFieldsTo(*copy, true);
    return copy;
}

void AS_CameraLevelObj::CopyCameraFieldsTo(AS_CameraLevelObj& target, bool withFrames) const {
    target.y = y;
    target.x = x;
    target.z = z;
    target.width_ = width_;
    target.height_ = height_;
    target.fixed = fixed;
    target.fixedFieldOfView = fixedFieldOfView;
    target.fieldOfView_ = fieldOfView_->Clone(true);
    if (withFrames)
        target.startFrame_ = startFrame_;
}
