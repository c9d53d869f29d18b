#pragma once

#include "animationset/DC_CellCommand.h"

// Takes the selected frames out of each selected element: blank with shift off, or out of
// the exposure with the later frames moving back with shift on. The inverse puts back what
// it took.
class DC_RemoveCellsCommand : public DC_CellCommand {
public:
    // The cells become blank.
    static constexpr const char16_t* kCutName = u"Cut";
    // The later cells move back.
    static constexpr const char16_t* kDeleteName = u"Delete Blank Cell";

    DC_RemoveCellsCommand(CAnimationSetObj& set, DC_CellSelection selection, bool shift);
    DC_RemoveCellsCommand(const DC_Command& origin, DC_CellSelection selection, bool shift);

    // Null when the scene or a selected element is gone.
    std::unique_ptr<UT_Command> Execute() override;

    bool Shifts() const { return shift_; }

private:
    bool shift_;
};
