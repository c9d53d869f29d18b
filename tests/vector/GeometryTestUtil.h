#pragma once

#include "vector/GR_Bezier2d.h"
#include "vector/GR_BezierPath2d.h"

#include <random>
#include <vector>

namespace geomtest {

// The chord polyline that the pair recursion works on: each segment halved with the
// snapped split until its pieces obey the chord rule.
inline void AppendChords(const GR_Bezier2d& piece, std::vector<GR_Point2d>& out) {
    if (piece.IsSmall()) {
        out.push_back(piece.Last());
        return;
    }
    GR_Bezier2d left, right;
    piece.SplitSnapped(0.5, left, right);
    AppendChords(left, out);
    AppendChords(right, out);
}

inline std::vector<GR_Point2d> ChordPolyline(const GR_BezierPath2d& path) {
    std::vector<GR_Point2d> out;
    if (path.SegmentCount() == 0)
        return out;
    out.push_back(path.Point(0));
    for (size_t i = 0; i < path.SegmentCount(); ++i) {
        GR_Bezier2d segment;
        path.Segment(i, segment);
        AppendChords(segment, out);
    }
    return out;
}

// A random path of degree 1 to 3 segments. `lattice` > 0 puts every point on multiples of
// it (many coincidences: shared knots, collinear edges); else grid points in the range.
inline GR_BezierPath2d RandomPath(std::mt19937& rng, size_t segments, double range, double lattice,
                                  int maxDegree = 3) {
    std::uniform_real_distribution<double> coordinate(0.0, range);
    std::uniform_int_distribution<int> degree(1, maxDegree);
    const auto point = [&]() {
        GR_Point2d p{coordinate(rng), coordinate(rng)};
        if (lattice > 0.0)
            return GR_Point2d{std::floor(p.x / lattice) * lattice, std::floor(p.y / lattice) * lattice};
        return GR_SnapToGrid(p);
    };
    GR_BezierPath2d path;
    GR_Point2d last = point();
    for (size_t s = 0; s < segments; ++s) {
        GR_Bezier2d segment;
        segment.degree = static_cast<uint32_t>(degree(rng));
        segment.control[0] = last;
        for (uint32_t k = 1; k <= segment.degree; ++k)
            segment.control[k] = point();
        if (segment.control[segment.degree] == last)
            continue;
        path.AppendSegment(segment);
        last = segment.control[segment.degree];
    }
    return path;
}

} // namespace geomtest
