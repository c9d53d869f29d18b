#pragma once

#include "vector/GR_Bezier2d.h"
#include "vector/GR_Point2d.h"

#include <vector>

class GR_BezierPath2d;

// Turns segments into polylines by adaptive stepping along the cubic. Lengths and
// deviations are measured after multiplying by the scale (typically device units per
// drawing unit): a step is refined at or above the middle limit, coarsened below the low
// limit, and an in-between point is kept when leaving it out would move the polyline by
// the high limit or more.
class GR_BezierFlattener {
public:
    explicit GR_BezierFlattener(double scale = 1.0, double low = 0.15, double middle = 0.5, double high = 0.9)
        : scale(scale), low(low), middle(middle), high(high) {}

    // Appends the points of one segment; its end points only where the piece is closed.
    void Flatten(const GR_Bezier2d& segment, std::vector<GR_Point2d>& out) const;
    // The whole path as one polyline, each knot once.
    void FlattenPath(const GR_BezierPath2d& path, std::vector<GR_Point2d>& out) const;

    // Makes a polyline dense: an edge with extents dx, dy gets
    // n = max(floor(|dx| / s) + 1, floor(|dy| / s) + 1) equal steps. s <= 0 copies.
    static void Resample(const std::vector<GR_Point2d>& polyline, double s, std::vector<GR_Point2d>& out);
    // Each pass moves every inner point to 0.25 previous + 0.5 itself + 0.25 next, with the
    // values from before the pass; the ends stay.
    static void RelaxPath(std::vector<GR_Point2d>& path, int passes);

    double scale;
    double low, middle, high;
};
