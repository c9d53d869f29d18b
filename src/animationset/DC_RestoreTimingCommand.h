#pragma once

#include "animationset/DC_CellCommand.h"

// Changes how long drawings are held in the first selected element: every run of the
// selected frames to one length, or run after run to the lengths of a list. The inverse
// gives the runs their old lengths back.
class DC_RestoreTimingCommand : public DC_CellCommand {
public:
    static constexpr const char16_t* kName = u"Change Exposure";
    static constexpr const char16_t* kAddName = u"Add Exposure";
    static constexpr const char16_t* kRemoveName = u"Remove Exposure";

    // Every run to `length` frames (at least 1). With `whole`, only the run at the
    // selection's first frame.
    DC_RestoreTimingCommand(CAnimationSetObj& set, DC_CellSelection selection, int32_t length,
                            bool whole = false);
    // The runs from the selection's first frame on to `lengths`, one after the other.
    DC_RestoreTimingCommand(const DC_Command& origin, DC_CellSelection selection,
                            std::vector<int32_t> lengths);

    // Null when the scene or the element is gone, or it holds no drawings.
    std::unique_ptr<UT_Command> Execute() override;

    int32_t Length() const { return length_; }
    const std::vector<int32_t>& Lengths() const { return lengths_; }

private:
    bool whole_ = false;
    // -1 when the list serves.
    int32_t length_ = -1;
    std::vector<int32_t> lengths_;
};
