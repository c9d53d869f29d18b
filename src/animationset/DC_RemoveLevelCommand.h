#pragma once

#include "animationset/AS_CompositionOrder.h"
#include "animationset/DC_Command.h"

#include <cstdint>
#include <optional>
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
    // The inverse of the making of new elements: after the removal the orders take back
    // their rows from before, since a new row on top of the Sceneplanning order may have
    // taken rows below it as its children, which its removal would take along.
    DC_RemoveLevelCommand(const DC_Command& origin, uint32_t sceneId, std::vector<uint32_t> elementIds,
                          std::vector<AS_CompositionRow> drawingRows,
                          std::vector<AS_CompositionRow> sceneplanningRows);

    // Null when the scene is not in the set, or an id is not a present element of it or
    // appears twice.
    std::unique_ptr<UT_Command> Execute() override;

    uint32_t SceneId() const { return sceneId_; }
    const std::vector<uint32_t>& ElementIds() const { return elementIds_; }

private:
    uint32_t sceneId_;
    std::vector<uint32_t> elementIds_;
    struct Rows {
        std::vector<AS_CompositionRow> drawing;
        std::vector<AS_CompositionRow> sceneplanning;
    };
    std::optional<Rows> rowsAfter_;
};
