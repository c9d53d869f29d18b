#pragma once

#include "animationset/AS_CompositionOrder.h"
#include "animationset/DC_Command.h"
#include "core/DB_MemFile.h"

#include <cstddef>
#include <cstdint>
#include <vector>

class CDopeSheetObj;

// Puts removed elements back into their scene: the inverse of DC_RemoveLevelCommand. It
// holds a snapshot of the elements as they were, written through an embedded archive so
// that their drawings come back even when a save erased the files, their places in the
// scene's list of elements, the rows of both composition orders and the current camera.
// An element whose clones are still in the scene shares their common half again.
class DC_AddLevelCommand : public DC_Command {
public:
    // Takes the snapshot of the elements of `scene` named by `elementIds` now, before
    // they go.
    DC_AddLevelCommand(const DC_Command& origin, CDopeSheetObj& scene,
                       const std::vector<uint32_t>& elementIds);

    uint32_t Size() const override;
    // Null when the scene is not in the set or one of the elements is present in it; a
    // damaged snapshot throws DB_Exception.
    std::unique_ptr<UT_Command> Execute() override;

    uint32_t SceneId() const { return sceneId_; }
    const std::vector<uint32_t>& ElementIds() const { return elementIds_; }

private:
    uint32_t sceneId_;
    // In the order of their places among the elements that were present.
    std::vector<uint32_t> elementIds_;
    std::vector<size_t> positions_;
    DB_MemFile snapshot_;
    std::vector<AS_CompositionRow> drawingRows_;
    std::vector<AS_CompositionRow> sceneplanningRows_;
    uint32_t currentCameraId_ = AS_kInvalidId;
};
