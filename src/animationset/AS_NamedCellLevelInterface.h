#pragma once

#include "animationset/AS_CellLevelInterface.h"
#include "core/UT_String.h"

#include <cstdint>
#include <vector>

// The drawing names of one element, in id order: the drawing list of the element, and
// what cells copied by name are converted through.
struct AS_ElementDrawingNames {
    UT_WString element;
    std::vector<UT_WString> drawings;
    bool operator==(const AS_ElementDrawingNames&) const = default;
};

// A level whose cells name drawings of its element. A run is a maximal stretch of frames
// that show one drawing; blank frames never form a run.
class AS_NamedCellLevelInterface : public AS_CellLevelInterface {
public:
    // Appends the element's name with all its drawing names; nothing when it has none.
    virtual void CollectDrawings(std::vector<AS_ElementDrawingNames>& out) const = 0;
    // Frames `first` to `first + count - 1` take the drawings named by `names`, starting
    // at `names[index]`; a name without a drawing, or beyond the list, leaves a blank.
    virtual void SetCellsFromNames(const std::vector<UT_WString>& names, size_t index, int32_t first,
                                   int32_t count) = 0;
    // True when the cells show drawings of the element's own (not media).
    virtual bool HasDrawingCells() const = 0;
    // Adds a drawing under `name` and gives its id.
    virtual uint32_t CreateDrawing(const UT_WString& name) = 0;
    // A drawing under the next free number.
    virtual uint32_t CreateNewDrawing() = 0;
    // The drawing of that name, or AS_kInvalidId.
    virtual uint32_t FindDrawingId(const UT_WString& name) const = 0;
    // Frames `first` to `first + count - 1` show drawing `id`, the exposure growing with
    // blanks as needed. Notes stay.
    virtual void SetCells(uint32_t id, int32_t first, int32_t count) = 0;
    virtual void SetCell(uint32_t id, int32_t frame) = 0;
    // Holds every run of the range for `length` frames (2: on twos). The range first widens
    // back to the start of the run at `first`. Gives the widened first frame and one past the
    // last frame covered afterwards.
    virtual void SetRunLengths(int32_t first, int32_t count, int32_t length, int32_t& outFirst,
                               int32_t& outLast) = 0;
    // The length of the run at `frame`, which moves back to the run's first frame; 1, with
    // the frame kept, on a blank frame or past the end.
    virtual int32_t GetRunLength(int32_t& frame) const = 0;
    // From `frame` up to `last`, appends each run's length (1 for each blank) and moves on
    // by it; `frame` ends past `last`.
    virtual void CollectRunLengths(int32_t& frame, int32_t last, std::vector<int32_t>& out) const = 0;
};
