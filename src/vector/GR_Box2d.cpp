#include "vector/GR_Box2d.h"

#include <algorithm>

namespace {

// Extends the low side [value, flag] by v: a further point takes the side over, an equal
// point closes it if it is closed itself.
void ExtendLow(double& value, uint32_t& flag, double v, uint32_t closed) {
    if (v < value) {
        value = v;
        flag = closed;
    } else if (v == value) {
        flag |= closed;
    }
}

void ExtendHigh(double& value, uint32_t& flag, double v, uint32_t closed) {
    if (v > value) {
        value = v;
        flag = closed;
    } else if (v == value) {
        flag |= closed;
    }
}

// Whether high >= low, strictly unless both sides are closed.
bool AtLeast(double high, uint32_t highClosed, double low, uint32_t lowClosed) {
    return (highClosed && lowClosed) ? high >= low : high > low;
}

} // namespace

void GR_Box2d::Add(const GR_Point2d& p, uint32_t closed) {
    closed = closed ? 1 : 0;
    if (empty) {
        empty = false;
        xmin = xmax = p.x;
        ymin = ymax = p.y;
        closedXmin = closedXmax = closedYmin = closedYmax = closed;
        return;
    }
    ExtendLow(xmin, closedXmin, p.x, closed);
    ExtendLow(ymin, closedYmin, p.y, closed);
    ExtendHigh(xmax, closedXmax, p.x, closed);
    ExtendHigh(ymax, closedYmax, p.y, closed);
}

void GR_Box2d::Merge(const GR_Box2d& other) {
    if (other.empty)
        return;
    if (empty) {
        *this = other;
        return;
    }
    ExtendLow(xmin, closedXmin, other.xmin, other.closedXmin);
    ExtendLow(ymin, closedYmin, other.ymin, other.closedYmin);
    ExtendHigh(xmax, closedXmax, other.xmax, other.closedXmax);
    ExtendHigh(ymax, closedYmax, other.ymax, other.closedYmax);
}

void GR_Box2d::Grow(double r) {
    xmin -= r;
    ymin -= r;
    xmax += r;
    ymax += r;
}

bool GR_Box2d::Contains(const GR_Point2d& p) const {
    if (empty)
        return false;
    return AtLeast(p.x, 1, xmin, closedXmin) && AtLeast(xmax, closedXmax, p.x, 1) &&
           AtLeast(p.y, 1, ymin, closedYmin) && AtLeast(ymax, closedYmax, p.y, 1);
}

bool GR_Box2d::Overlaps(const GR_Box2d& o) const {
    if (empty || o.empty)
        return false;
    return AtLeast(xmax, closedXmax, o.xmin, o.closedXmin) &&
           AtLeast(o.xmax, o.closedXmax, xmin, closedXmin) &&
           AtLeast(ymax, closedYmax, o.ymin, o.closedYmin) && AtLeast(o.ymax, o.closedYmax, ymin, closedYmin);
}

double GR_Box2d::DistanceSquared(const GR_Point2d& p) const {
    if (empty)
        return 0.0;
    const double dx = std::max({xmin - p.x, 0.0, p.x - xmax});
    const double dy = std::max({ymin - p.y, 0.0, p.y - ymax});
    return dx * dx + dy * dy;
}
