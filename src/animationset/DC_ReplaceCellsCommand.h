#pragma once

#include "animationset/DC_CellCommand.h"

// Puts cell records into elements of a scene, each from its first frame on, and sets each
// exposure to the length kept with the records, so that what grew is cut back. Its own
// inverse, with the records and lengths that it replaced.
class DC_ReplaceCellsCommand : public DC_CellCommand {
public:
    DC_ReplaceCellsCommand(CAnimationSetObj& set, DC_CellSelection selection,
                           std::vector<DC_LevelCells> cells);
    DC_ReplaceCellsCommand(const DC_Command& origin, DC_CellSelection selection,
                           std::vector<DC_LevelCells> cells);

    // Null when the scene or one of the elements is gone.
    std::unique_ptr<UT_Command> Execute() override;
    uint32_t Size() const override;

    const std::vector<DC_LevelCells>& Cells() const { return cells_; }

private:
    std::vector<DC_LevelCells> cells_;
};
