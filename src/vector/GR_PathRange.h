#pragma once

#include "vector/GR_Box2d.h"

#include <cstdint>

// A run of whole segments of a path, knots first to last, with the closed flags of its two
// end points. Ranges are halved at (first + last) / 2; a shared knot belongs to the later
// half, so that a point on it is found once.
struct GR_PathRange {
    uint16_t first = 0;
    uint16_t last = 0;
    uint32_t closedFirst = 1;
    uint32_t closedLast = 1;

    bool IsSingle() const { return last - first <= 1; }
    uint16_t Middle() const { return static_cast<uint16_t>((first + last) / 2); }
    GR_PathRange Left() const { return {first, Middle(), closedFirst, 0}; }
    GR_PathRange Right() const { return {Middle(), last, 1, closedLast}; }
};

// Bounds on the first parameter of a hit in a walk: FirstHit takes lower < t <= upper,
// LastHit lower <= t < upper.
struct GR_ParameterBounds {
    double lower = -1.0;
    double upper = 1e300;
};
