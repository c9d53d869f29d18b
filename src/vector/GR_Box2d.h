#pragma once

#include "vector/GR_Point2d.h"

#include <cstdint>

// An axis-aligned box with an empty flag and a closed flag per side. A side is open when
// the point that defines it was added open: that is how a knot shared by two pieces of a
// path is kept out of one of them.
class GR_Box2d {
public:
    void Add(const GR_Point2d& p, uint32_t closed = 1);
    void Merge(const GR_Box2d& other);
    // Moves every side outward by r; the flags stay.
    void Grow(double r);

    // Whether the point lies in the box, each side honouring its flag.
    bool Contains(const GR_Point2d& p) const;
    // Two boxes overlap on an axis when max(a) >= min(b) if both sides are closed,
    // strictly otherwise.
    bool Overlaps(const GR_Box2d& other) const;
    // Squared distance from a point to the closed box; 0 inside.
    double DistanceSquared(const GR_Point2d& p) const;
    // 2 * (width + height), the measure of the chord rule.
    double Perimeter() const { return 2.0 * ((xmax - xmin) + (ymax - ymin)); }

    bool empty = true;
    double xmin = 0.0, ymin = 0.0, xmax = 0.0, ymax = 0.0;
    uint32_t closedXmin = 1, closedYmin = 1, closedXmax = 1, closedYmax = 1;
};
