#pragma once

#include "animationset/AS_CellIterator.h"

// A cell iterator as a value: a copy that a command or a walk moves without touching the
// application's current cell.
class AS_DopeSheetCellIterator : public AS_CellIterator {
public:
    AS_DopeSheetCellIterator() = default;
    explicit AS_DopeSheetCellIterator(const AS_CellIterator& other) : AS_CellIterator(other) {}
};
