#pragma once

#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/DC_CellSelection.h"
#include "animationset/DC_Command.h"

#include <cstdint>
#include <optional>
#include <vector>

// The cell records of one element from a frame on, as a command keeps them to put them
// back, with the length of the element's exposure at that time.
struct DC_LevelCells {
    uint32_t element = AS_kInvalidId;
    int32_t first = 0;
    std::vector<AS_CellRecord> records;
    size_t length = 0;
};

// Base of the commands on cells. Each keeps the selection that it works on; before an undo
// or redo it brings the user back to its scene and mode and gives the application's
// current cell that selection, and after its change the current cell takes the selection
// that the change left.
class DC_CellCommand : public DC_Command {
public:
    const DC_CellSelection& Selection() const { return selection_; }
    void Prepare() override;

protected:
    DC_CellCommand(CAnimationSetObj& set, DC_CellSelection selection, bool notify = true);
    // An inverse: the set, notify flag and context of `origin`.
    DC_CellCommand(const DC_Command& origin, DC_CellSelection selection);

    // The scene of the selection, or null when it is gone.
    CDopeSheetObj* FindScene() const;
    // The drawing or image element `id` of `scene` that is not removed, or null.
    static AS_DrawingLevelObj* FindCellLevel(const CDopeSheetObj& scene, uint32_t id);
    // The level of every record of `cells`, in order; nothing when any of them is gone.
    static std::optional<std::vector<AS_DrawingLevelObj*>>
    FindCellLevels(const CDopeSheetObj& scene, const std::vector<DC_LevelCells>& cells);
    // With Notify set: the current cell takes `after`, when it stands in that scene and
    // order, and the record of category 3 and `code` goes out with it, naming the elements
    // of the selection and the first cell of each.
    void SendCells(CDopeSheetObj& scene, uint32_t code, const DC_CellSelection& after) const;

    DC_CellSelection selection_;
};
