#pragma once

#include "animationset/DC_Command.h"

#include <cstdint>
#include <vector>

// Removes elements from a scene. They stay in the scene, marked removed, until the next
// save erases their files, so that an undo before the save needs no file work; the
// inverse also holds a snapshot of them, drawings included, for an undo after the save.
// Observers hear code 14 before the change, with the common ids of the elements that
// leave no clone behind, and code 8 after it, with the element ids.
class DC_RemoveLevelCommand : public DC_Command {
public:
    static constexpr const char16_t* kName = u"Delete Element";

    DC_RemoveLevelCommand(CAnimationSetObj& set, uint32_t sceneId, std::vector<uint32_t> elementIds);
    // The inverse of an addition: the context of `origin`.
    DC_RemoveLevelCommand(const DC_Command& origin, uint32_t sceneId, std::vector<uint32_t> elementIds);

    // Null when the scene is not in the set, or an id is not a present element of it or
    // appears twice.
    std::unique_ptr<UT_Command> Execute() override;

    uint32_t SceneId() const { return sceneId_; }
    const std::vector<uint32_t>& ElementIds() const { return elementIds_; }

private:
    uint32_t sceneId_;
    std::vector<uint32_t> elementIds_;
};
