#pragma once

#include "animationset/DC_Command.h"

#include <cstdint>
#include <vector>

// Makes `count` new elements of one sort in a scene, each with a new element id, a new
// common half and the unique name that the scene makes from the base name ("Arm",
// "Arm 2", ...). A new peg's row starts disabled in the Sceneplanning order. The inverse
// removes the new elements again.
class DC_CreateLevelCommand : public DC_Command {
public:
    static constexpr const char16_t* kName = u"New Element";

    // The command's own codes of the sorts it makes; they are not the kind codes.
    enum TypeCode : uint32_t {
        kVectorDrawing = 0,
        kBitmap = 1,
        kSound = 2,
        kPeg = 3,
        kCamera = 4,
        kMediaLink = 5,
    };

    // `duration` is the frames of a peg or a camera; a camera takes the set's camera size.
    DC_CreateLevelCommand(CAnimationSetObj& set, uint32_t sceneId, uint32_t count, UT_WString baseName,
                          uint32_t typeCode, uint32_t duration = 10);

    // Null when the scene is not in the set or the type code is unknown; also, after the
    // message "Unable to create the level(s) using the given name.", when the base name
    // is empty or has characters that a name may not have.
    std::unique_ptr<UT_Command> Execute() override;

    // The ids of the elements that the first run made.
    const std::vector<uint32_t>& CreatedIds() const { return created_; }

private:
    uint32_t sceneId_;
    uint32_t count_;
    UT_WString baseName_;
    uint32_t typeCode_;
    uint32_t duration_;
    std::vector<uint32_t> created_;
};
