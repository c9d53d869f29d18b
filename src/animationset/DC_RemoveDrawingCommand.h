#pragma once

#include "animationset/DC_Command.h"

#include <vector>

// Removes drawings from a drawing element, with the cells that show them (in the element
// and its clones) blanked. The inverse holds the drawings, loaded, and the cells.
class DC_RemoveDrawingCommand : public DC_Command {
public:
    // `nextDrawingId`, when valid, becomes the element's drawing counter afterwards: the
    // undo of the making of these drawings gives their ids back.
    DC_RemoveDrawingCommand(CAnimationSetObj& set, uint32_t sceneId, uint32_t elementId,
                            std::vector<uint32_t> drawingIds, uint32_t nextDrawingId = AS_kInvalidId);
    DC_RemoveDrawingCommand(const DC_Command& origin, uint32_t sceneId, uint32_t elementId,
                            std::vector<uint32_t> drawingIds, uint32_t nextDrawingId);

    // Null when the scene, the element or a drawing is gone.
    std::unique_ptr<UT_Command> Execute() override;

    const std::vector<uint32_t>& DrawingIds() const { return drawingIds_; }

private:
    uint32_t sceneId_;
    uint32_t elementId_;
    std::vector<uint32_t> drawingIds_;
    uint32_t nextDrawingId_;
};
