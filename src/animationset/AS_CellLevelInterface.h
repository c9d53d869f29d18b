#pragma once

#include <cstdint>

// Frames from 0 up to this limit (twelve hours at 24 frames a second) can hold cells;
// writes beyond it are dropped rather than growing an exposure without bound.
inline constexpr int32_t AS_kFrameLimit = 1 << 20;

// What every level with an exposure offers: frames put in and taken out. Drawing and
// image levels implement it; sound and media levels join when their cells arrive.
class AS_CellLevelInterface {
public:
    virtual ~AS_CellLevelInterface() = default;

    // Makes room at `frame`: with `shift`, `count` blank frames go in and the later ones
    // move on; without, the range becomes blank. A frame past the end first grows the
    // exposure with blanks up to it.
    virtual void InsertCells(int32_t frame, bool shift, int32_t count) = 0;
    // Takes `count` frames out at `frame`: with `shift` the later frames move back; without,
    // the range becomes blank. Nothing happens at or past the end, and a range that runs
    // past the end stops there.
    virtual void RemoveCells(int32_t frame, int32_t count, bool shift) = 0;
};
