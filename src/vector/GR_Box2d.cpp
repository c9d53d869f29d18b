#include "vector/GR_Box2d.h"

#include <algorithm>

void GR_Box2d::Grow(double r) {
    xmin -= r;
    ymin -= r;
    xmax += r;
    ymax += r;
}

double GR_Box2d::DistanceSquared(const GR_Point2d& p) const {
    if (empty)
        return 0.0;
    const double dx = std::max({xmin - p.x, 0.0, p.x - xmax});
    const double dy = std::max({ymin - p.y, 0.0, p.y - ymax});
    return dx * dx + dy * dy;
}
