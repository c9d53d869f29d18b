#pragma once

#include "vector/GR_Bezier2d.h"
#include "vector/GR_Point2d.h"

#include <cstddef>
#include <vector>

class GR_BezierPath2d;

// Turns raw points into a smooth cubic path within a tolerance: corners are found first,
// then each stretch between corners is fitted by least squares with Newton steps on the
// parameters, and split where the error stays too large.
class GR_BezierPath2dFitter {
public:
    explicit GR_BezierPath2dFitter(double tolerance);

    // Fits the input (straight edges are resampled, curves flattened first) into output.
    // False when the fit needs more points than one path holds: FitSegments then gives all.
    bool Fit(const GR_BezierPath2d& input, GR_BezierPath2d& output) const;
    // The input as the points the fit works on.
    std::vector<GR_Point2d> Prepare(const GR_BezierPath2d& input) const;
    // Fits prepared points: nothing for at most 1 point, one straight segment for at most 3,
    // else cubics.
    std::vector<GR_Bezier2d> FitSegments(const std::vector<GR_Point2d>& points) const;
    // Indices of the corners, the first and last point included.
    std::vector<size_t> FindCorners(const std::vector<GR_Point2d>& points,
                                    const std::vector<double>& arc) const;

    double tolerance;
    // Derived values: tolerance squared, corner span and tangent span in arc length, and
    // the fewest points an interval needs for a least-squares fit.
    double errorLimit;
    double cornerSpan;
    double tangentSpan;
    static constexpr size_t kMinimumPoints = 3;
    static constexpr int kIterations = 3;
    static constexpr double kCornerAngle = 100.0;
};
