#pragma once

#include "animationset/AS_BaseLevelElement.h"
#include "animationset/DC_Command.h"
#include "motion/C3DPoint.h"

#include <cmath>
#include <cstdint>
#include <optional>

// Changes one field of an element with a placement (drawing, image, media) at a time,
// by field code, or its name. The inverse puts the old value back: the start frame and
// the name by the same code, the other fields by restoring the whole placement, since a
// scale with keep proportions on moves the other scale too.
class DC_UpdateElementCommand : public DC_Command {
public:
    static constexpr const char16_t* kName = u"Change Element";

    enum Field : uint32_t {
        kOffset = 0,         // point
        kStartFrame = 1,     // number; a media element moves its runs with it
        kRotation = 2,       // number, degrees
        kRotationPivotY = 3, // number
        kRotationPivotX = 4,
        kRotationPivotZ = 5,
        kRotationPivot = 6, // point
        kScalePivotY = 7,   // number
        kScalePivotX = 8,
        kScalePivotZ = 9,
        kScalePivot = 10,  // point
        kFourthPoint = 11, // point
        kFlipVertical = 12,
        kFlipHorizontal = 13,
        // With keep proportions on, the other scale takes the absolute value of the one set
        // and keeps its own sign.
        kVerticalScale = 14,   // number
        kHorizontalScale = 15, // number
        kElementType = 16,     // number: 0 normal, 1 foreground, 2 background
        // Number, 0 or 1; turning it on makes the horizontal scale follow the vertical one.
        kKeepProportions = 17,
        // Name, through SetName; a name that the scene refuses changes nothing.
        kElementName = 18,
        kFieldCount = 19,
    };

    struct Value {
        C3DPoint point;
        double number = 0.0;
        UT_WString name;
    };

    DC_UpdateElementCommand(CAnimationSetObj& set, uint32_t sceneId, uint32_t elementId, uint32_t field,
                            Value value);

    // Null when the scene or the element is not there, the element has no placement (for
    // the codes below 18), the code or the element type is unknown, or a media element's
    // runs would start before frame 0.
    std::unique_ptr<UT_Command> Execute() override;

    uint32_t Field() const { return field_; }

    // The rule of keep proportions: `own` takes the absolute value of `set`, with its own
    // sign (zero counts as positive).
    static double Follow(double own, double set) { return own >= 0.0 ? std::abs(set) : -std::abs(set); }
    // Applies a code other than the start frame and the name to a placement; false for an
    // unknown code or element type.
    static bool Apply(AS_Placement& placement, uint32_t field, const Value& value);

private:
    // An inverse: the context of `origin`. With `restore`, it puts all of that placement
    // back, whatever the field.
    DC_UpdateElementCommand(const DC_Command& origin, uint32_t sceneId, uint32_t elementId, uint32_t field,
                            Value value, std::optional<AS_Placement> restore);

    uint32_t sceneId_;
    uint32_t elementId_;
    uint32_t field_;
    Value value_;
    std::optional<AS_Placement> restore_;
};
