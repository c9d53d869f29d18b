#include "vector/GR_BezierFlattener.h"

#include "vector/GR_BezierPath2d.h"

#include <algorithm>
#include <cmath>

namespace {

// Step counts are powers of two up to this; beyond it a curve is far larger than any view.
constexpr double kMaxSteps = 65536.0;
// Edges of a resampled polyline are cut into at most this many steps.
constexpr double kMaxResampleSteps = 65536.0;

// The cubic in power form, evaluated by Horner's rule: exact at t = 0 and t = 1.
struct Cubic {
    GR_Point2d a, b, c, d;
    GR_Point2d At(double t) const { return ((a * t + b) * t + c) * t + d; }
};

double SegmentDistance(const GR_Point2d& p, const GR_Point2d& a, const GR_Point2d& b) {
    const GR_Point2d d = b - a;
    const double length = GR_Dot(d, d);
    const double u = length > 0.0 ? std::clamp(GR_Dot(p - a, d) / length, 0.0, 1.0) : 0.0;
    return std::sqrt(GR_DistanceSquared(p, a + d * u));
}

} // namespace

void GR_BezierFlattener::Flatten(const GR_Bezier2d& segment, std::vector<GR_Point2d>& out) const {
    const GR_Point2d first = segment.First(), last = segment.Last();
    if (segment.degree <= 1) {
        if (segment.closedStart)
            out.push_back(first);
        if (segment.closedEnd)
            out.push_back(last);
        return;
    }
    GR_Point2d p[4];
    if (segment.degree == 2) {
        const GR_Point2d* q = segment.control;
        p[0] = q[0];
        p[1] = q[0] + (q[1] - q[0]) * (2.0 / 3.0);
        p[2] = q[2] + (q[1] - q[2]) * (2.0 / 3.0);
        p[3] = q[2];
    } else {
        std::copy(segment.control, segment.control + 4, p);
    }
    const double length = scale * (GR_Length(p[1] - p[0]) + GR_Length(p[2] - p[1]) + GR_Length(p[3] - p[2]));
    const double chord = scale * GR_Length(p[3] - p[0]);
    if (segment.closedStart)
        out.push_back(first);
    if (!(length < 2.0 && length + chord < 2.0)) {
        const Cubic cubic{p[3] - p[0] + (p[1] - p[2]) * 3.0, (p[0] + p[2]) * 3.0 - p[1] * 6.0,
                          (p[1] - p[0]) * 3.0, p[0]};
        // Scaled deviation of the point one step on from the chord of its neighbours.
        const auto deviation = [&](double t, double h) {
            const GR_Point2d middlePoint = (cubic.At(t) + cubic.At(t + 2.0 * h)) * 0.5;
            return scale * GR_Length(cubic.At(t + h) - middlePoint);
        };
        double steps = 1.0;
        while (length / steps >= 2.0 && steps < kMaxSteps)
            steps *= 2.0;
        while (steps >= 8.0 && deviation(0.0, 1.0 / steps) <= middle / 8.0)
            steps *= 0.5;
        const double boundary = 1.0 / steps;
        double t = 0.0;
        GR_Point2d emitted = first;
        bool refined = false;
        while (t < 1.0) {
            const double h = 1.0 / steps;
            const double d = deviation(t, h);
            if (d >= middle && steps < kMaxSteps) {
                steps *= 2.0;
                refined = true;
                continue;
            }
            if (d < low && !refined && steps >= 2.0 && std::fmod(t, 2.0 * h) == 0.0 && t + 2.0 * h <= 1.0) {
                steps *= 0.5;
                continue;
            }
            refined = false;
            t += h;
            if (t >= 1.0)
                break;
            const GR_Point2d here = cubic.At(t);
            const bool atBoundary = std::fmod(t, boundary) == 0.0;
            if (atBoundary || scale * SegmentDistance(here, emitted, cubic.At(t + h)) >= high) {
                out.push_back(here);
                emitted = here;
            }
        }
    }
    if (segment.closedEnd)
        out.push_back(last);
}

void GR_BezierFlattener::FlattenPath(const GR_BezierPath2d& path, std::vector<GR_Point2d>& out) const {
    const size_t segments = path.SegmentCount();
    if (segments == 0) {
        if (!path.points.empty())
            out.push_back(path.Point(0));
        return;
    }
    for (size_t i = 0; i < segments; ++i) {
        GR_Bezier2d segment;
        path.Segment(i, segment);
        segment.closedStart = i == 0 ? 1 : 0;
        segment.closedEnd = 1;
        Flatten(segment, out);
    }
}

void GR_BezierFlattener::Resample(const std::vector<GR_Point2d>& polyline, double s,
                                  std::vector<GR_Point2d>& out) {
    out.clear();
    if (!(s > 0.0) || polyline.size() < 2) {
        out = polyline;
        return;
    }
    for (size_t i = 0; i + 1 < polyline.size(); ++i) {
        const GR_Point2d a = polyline[i], d = polyline[i + 1] - a;
        double n = std::max(std::floor(std::fabs(d.x) / s) + 1.0, std::floor(std::fabs(d.y) / s) + 1.0);
        if (std::isnan(n))
            n = 1.0;
        n = std::min(n, kMaxResampleSteps);
        const size_t count = static_cast<size_t>(n);
        for (size_t k = 0; k < count; ++k)
            out.push_back(a + d * (static_cast<double>(k) / n));
    }
    out.push_back(polyline.back());
}

void GR_BezierFlattener::RelaxPath(std::vector<GR_Point2d>& path, int passes) {
    if (path.size() < 3)
        return;
    for (int pass = 0; pass < passes; ++pass) {
        GR_Point2d previous = path[0];
        for (size_t i = 1; i + 1 < path.size(); ++i) {
            const GR_Point2d current = path[i];
            path[i] = previous * 0.25 + current * 0.5 + path[i + 1] * 0.25;
            previous = current;
        }
    }
}
