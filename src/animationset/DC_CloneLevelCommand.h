#pragma once

#include "animationset/DC_Command.h"

#include <cstdint>

// Adds a clone of an element to its scene: a new element on the same common half, with
// a copy of the note, placement and cells. Its display name and the original's take the
// clone numbers. The inverse removes the clone.
class DC_CloneLevelCommand : public DC_Command {
public:
    static constexpr const char16_t* kName = u"Clone Element";

    DC_CloneLevelCommand(CAnimationSetObj& set, uint32_t sceneId, uint32_t elementId);

    // Null when the scene or the element is not there, or the element's sort has no
    // clones (a parameter group).
    std::unique_ptr<UT_Command> Execute() override;

    // The id that the first run gave the clone.
    uint32_t CloneId() const { return cloneId_; }

private:
    uint32_t sceneId_;
    uint32_t elementId_;
    uint32_t cloneId_ = AS_kInvalidId;
};
