#include "animationset/DC_UpdateElementCommand.h"

#include "animationset/AS_MediaLinkLevelObj.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"

#include <cmath>

namespace {

// The start frame of an element; a media element moves its runs with it.
bool SetStart(AS_BaseLevelElement& element, uint32_t frame) {
    if (auto* media = dynamic_cast<AS_MediaLinkLevelObj*>(&element))
        return media->SetStartFrame(frame);
    element.Placement().startFrame = frame;
    return true;
}

} // namespace

DC_UpdateElementCommand::DC_UpdateElementCommand(CAnimationSetObj& set, uint32_t sceneId, uint32_t elementId,
                                                 uint32_t field, Value value)
    : DC_Command(set), sceneId_(sceneId), elementId_(elementId), field_(field), value_(std::move(value)) {}

DC_UpdateElementCommand::DC_UpdateElementCommand(const DC_Command& origin, uint32_t sceneId,
                                                 uint32_t elementId, uint32_t field, Value value,
                                                 std::optional<AS_Placement> restore)
    : DC_Command(origin), sceneId_(sceneId), elementId_(elementId), field_(field), value_(std::move(value)),
      restore_(std::move(restore)) {}

bool DC_UpdateElementCommand::Apply(AS_Placement& p, uint32_t field, const Value& value) {
    const auto number = static_cast<float>(value.number);
    switch (field) {
    case kOffset:
        p.offset = value.point;
        return true;
    case kRotation:
        p.rotation = value.number;
        return true;
    case kRotationPivotY:
        p.rotationPivot.y = number;
        return true;
    case kRotationPivotX:
        p.rotationPivot.x = number;
        return true;
    case kRotationPivotZ:
        p.rotationPivot.z = number;
        return true;
    case kRotationPivot:
        p.rotationPivot = value.point;
        return true;
    case kScalePivotY:
        p.scalePivot.y = number;
        return true;
    case kScalePivotX:
        p.scalePivot.x = number;
        return true;
    case kScalePivotZ:
        p.scalePivot.z = number;
        return true;
    case kScalePivot:
        p.scalePivot = value.point;
        return true;
    case kFourthPoint:
        p.fourthPoint = value.point;
        return true;
    case kFlipVertical:
        p.verticalScale = -p.verticalScale;
        return true;
    case kFlipHorizontal:
        p.horizontalScale = -p.horizontalScale;
        return true;
    case kVerticalScale:
        p.verticalScale = value.number;
        if (p.keepProportions)
            p.horizontalScale = Follow(p.horizontalScale, value.number);
        return true;
    case kHorizontalScale:
        p.horizontalScale = value.number;
        if (p.keepProportions)
            p.verticalScale = Follow(p.verticalScale, value.number);
        return true;
    case kElementType:
        if (value.number != 0.0 && value.number != 1.0 && value.number != 2.0)
            return false;
        p.elementType = static_cast<uint32_t>(value.number);
        return true;
    case kKeepProportions: {
        const bool on = value.number != 0.0;
        if (on && !p.keepProportions)
            p.horizontalScale = Follow(p.horizontalScale, p.verticalScale);
        p.keepProportions = on;
        return true;
    }
    default:
        return false;
    }
}

std::unique_ptr<UT_Command> DC_UpdateElementCommand::Execute() {
    CDopeSheetObj* scene = AnimationSet().FindScene(sceneId_);
    AS_DopeSheetLevelObj* level = scene ? scene->FindElement(elementId_) : nullptr;
    if (!level || scene->IsRemoved(elementId_))
        return nullptr;

    if (field_ == kElementName) {
        Value old;
        old.name = level->GetName();
        if (scene->CheckElementName(value_.name, elementId_).empty())
            level->SetName(value_.name);
        AS_DopeSheetUpdateData data(AS_DopeSheetCategory::kElement, kElementRenamed, scene);
        data.element = level;
        data.elements = {elementId_};
        Send(data);
        return std::unique_ptr<UT_Command>(new DC_UpdateElementCommand(
            *this, sceneId_, elementId_, kElementName, std::move(old), std::nullopt));
    }

    auto* element = dynamic_cast<AS_BaseLevelElement*>(level);
    if (!element)
        return nullptr;
    AS_Placement& placement = element->Placement();
    const AS_Placement old = placement;
    std::unique_ptr<UT_Command> inverse;
    if (restore_) {
        if (!SetStart(*element, restore_->startFrame))
            return nullptr;
        placement = *restore_;
        inverse.reset(new DC_UpdateElementCommand(*this, sceneId_, elementId_, field_, {}, old));
    } else if (field_ == kStartFrame) {
        if (value_.number < 0.0 || value_.number > double(UINT32_MAX) ||
            !SetStart(*element, static_cast<uint32_t>(value_.number)))
            return nullptr;
        Value back;
        back.number = old.startFrame;
        inverse.reset(new DC_UpdateElementCommand(*this, sceneId_, elementId_, kStartFrame, std::move(back),
                                                  std::nullopt));
    } else {
        if (!Apply(placement, field_, value_))
            return nullptr;
        inverse.reset(new DC_UpdateElementCommand(*this, sceneId_, elementId_, field_, {}, old));
    }
    AS_DopeSheetUpdateData data(AS_DopeSheetCategory::kPlacement,
                                field_ == kKeepProportions ? kProportionalScaling : kPlacementValuesChanged,
                                scene);
    data.element = level;
    data.elements = {elementId_};
    Send(data);
    return inverse;
}
