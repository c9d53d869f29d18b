#pragma once

#include "animationset/DC_CellCommand.h"

// Puts cells into elements: inserted before the frames already there with shift on, over
// them with shift off. The inverse removes them again the same way.
class DC_AddCellsCommand : public DC_CellCommand {
public:
    static constexpr const char16_t* kName = u"Paste";

    DC_AddCellsCommand(const DC_Command& origin, DC_CellSelection selection, std::vector<DC_LevelCells> cells,
                       bool shift);

    // Null when the scene or an element is gone.
    std::unique_ptr<UT_Command> Execute() override;
    uint32_t Size() const override;

private:
    std::vector<DC_LevelCells> cells_;
    bool shift_;
};
