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

// The box operations run in every query of the kernel and the planar map: inline.
namespace GR_BoxDetail {

// Extends the low side [value, flag] by v: a further point takes the side over, an equal
// point closes it if it is closed itself.
inline void ExtendLow(double& value, uint32_t& flag, double v, uint32_t closed) {
    if (v < value) {
        value = v;
        flag = closed;
    } else if (v == value) {
        flag |= closed;
    }
}

inline void ExtendHigh(double& value, uint32_t& flag, double v, uint32_t closed) {
    if (v > value) {
        value = v;
        flag = closed;
    } else if (v == value) {
        flag |= closed;
    }
}

// Whether high >= low, strictly unless both sides are closed.
inline bool AtLeast(double high, uint32_t highClosed, double low, uint32_t lowClosed) {
    return (highClosed && lowClosed) ? high >= low : high > low;
}

} // namespace GR_BoxDetail

inline void GR_Box2d::Add(const GR_Point2d& p, uint32_t closed) {
    closed = closed ? 1 : 0;
    if (empty) {
        empty = false;
        xmin = xmax = p.x;
        ymin = ymax = p.y;
        closedXmin = closedXmax = closedYmin = closedYmax = closed;
        return;
    }
    GR_BoxDetail::ExtendLow(xmin, closedXmin, p.x, closed);
    GR_BoxDetail::ExtendLow(ymin, closedYmin, p.y, closed);
    GR_BoxDetail::ExtendHigh(xmax, closedXmax, p.x, closed);
    GR_BoxDetail::ExtendHigh(ymax, closedYmax, p.y, closed);
}

inline void GR_Box2d::Merge(const GR_Box2d& other) {
    if (other.empty)
        return;
    if (empty) {
        *this = other;
        return;
    }
    GR_BoxDetail::ExtendLow(xmin, closedXmin, other.xmin, other.closedXmin);
    GR_BoxDetail::ExtendLow(ymin, closedYmin, other.ymin, other.closedYmin);
    GR_BoxDetail::ExtendHigh(xmax, closedXmax, other.xmax, other.closedXmax);
    GR_BoxDetail::ExtendHigh(ymax, closedYmax, other.ymax, other.closedYmax);
}

inline bool GR_Box2d::Contains(const GR_Point2d& p) const {
    if (empty)
        return false;
    return GR_BoxDetail::AtLeast(p.x, 1, xmin, closedXmin) &&
           GR_BoxDetail::AtLeast(xmax, closedXmax, p.x, 1) &&
           GR_BoxDetail::AtLeast(p.y, 1, ymin, closedYmin) && GR_BoxDetail::AtLeast(ymax, closedYmax, p.y, 1);
}

inline bool GR_Box2d::Overlaps(const GR_Box2d& o) const {
    if (empty || o.empty)
        return false;
    return GR_BoxDetail::AtLeast(xmax, closedXmax, o.xmin, o.closedXmin) &&
           GR_BoxDetail::AtLeast(o.xmax, o.closedXmax, xmin, closedXmin) &&
           GR_BoxDetail::AtLeast(ymax, closedYmax, o.ymin, o.closedYmin) &&
           GR_BoxDetail::AtLeast(o.ymax, o.closedYmax, ymin, closedYmin);
}
