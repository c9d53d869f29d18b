#pragma once

#include "animationset/DC_CellCommand.h"

// Makes the selected frames of each selected drawing element show the drawing of a name,
// making the drawing where the element has none of that name. The inverse puts the old
// cells back and removes the drawings that it made.
class DC_ReLabelCellCommand : public DC_CellCommand {
public:
    static constexpr const char16_t* kName = u"Change Drawing";

    DC_ReLabelCellCommand(CAnimationSetObj& set, DC_CellSelection selection, UT_WString drawingName);

    // Null when the scene or an element is gone, or no selected element holds drawings.
    std::unique_ptr<UT_Command> Execute() override;

    const UT_WString& DrawingName() const { return name_; }

private:
    UT_WString name_;
};
