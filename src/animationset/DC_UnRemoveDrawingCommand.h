#pragma once

#include "animationset/DC_Command.h"
#include "core/DB_MemFile.h"

#include <vector>

// Puts removed drawings back into their element with their ids, from the snapshot that the
// removal took, and shows them again in the cells that showed them.
class DC_UnRemoveDrawingCommand : public DC_Command {
public:
    // A cell that showed a removed drawing.
    struct Cell {
        uint32_t element;
        int32_t frame;
        uint32_t drawing;
    };

    // `snapshot` holds, per drawing, its id and its entry in the embedded form.
    DC_UnRemoveDrawingCommand(const DC_Command& origin, uint32_t sceneId, uint32_t elementId,
                              std::vector<uint32_t> drawingIds, DB_MemFile snapshot, std::vector<Cell> cells,
                              uint32_t nextDrawingId);

    // Null when the scene or element is gone or holds one of the ids again; a damaged
    // snapshot throws DB_Exception.
    std::unique_ptr<UT_Command> Execute() override;
    uint32_t Size() const override;

private:
    uint32_t sceneId_;
    uint32_t elementId_;
    std::vector<uint32_t> drawingIds_;
    DB_MemFile snapshot_;
    std::vector<Cell> cells_;
    uint32_t nextDrawingId_;
};
