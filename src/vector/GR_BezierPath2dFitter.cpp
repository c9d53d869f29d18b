#include "vector/GR_BezierPath2dFitter.h"

#include "vector/GR_BezierFlattener.h"
#include "vector/GR_BezierPath2d.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace {

GR_Point2d Normalised(const GR_Point2d& v) {
    const double length = GR_Length(v);
    return length > 0.0 ? v * (1.0 / length) : GR_Point2d();
}

// Derivative at s = 0 of the quadratic P_anchor + c1 s + c2 s^2 fitted by least squares to
// the points at parameters s; nothing when the system is singular.
bool AnchoredQuadratic(const std::vector<GR_Point2d>& points, const std::vector<double>& s,
                       const GR_Point2d& anchor, GR_Point2d& derivative) {
    double s2 = 0.0, s3 = 0.0, s4 = 0.0;
    GR_Point2d r1, r2;
    for (size_t i = 0; i < points.size(); ++i) {
        const double v = s[i], v2 = v * v;
        s2 += v2;
        s3 += v2 * v;
        s4 += v2 * v2;
        const GR_Point2d d = points[i] - anchor;
        r1 = r1 + d * v;
        r2 = r2 + d * v2;
    }
    const double det = s2 * s4 - s3 * s3;
    if (det == 0.0 || !std::isfinite(det))
        return false;
    derivative = (r1 * s4 - r2 * s3) * (1.0 / det);
    return derivative.x != 0.0 || derivative.y != 0.0;
}

// A cubic by its Bernstein weights; the fitter's hot loop.
GR_Point2d CubicAt(const GR_Point2d* c, double u) {
    const double v = 1.0 - u;
    return c[0] * (v * v * v) + c[1] * (3.0 * u * v * v) + c[2] * (3.0 * u * u * v) + c[3] * (u * u * u);
}

struct FitResult {
    double a1 = 0.0, a2 = 0.0;
    double maxError = 0.0;
    size_t maxIndex = 0;
    double sumError = 0.0;
    size_t overCount = 0;
};

class IntervalFitter {
public:
    IntervalFitter(const GR_BezierPath2dFitter& owner, const std::vector<GR_Point2d>& points,
                   const std::vector<double>& arc, std::vector<GR_Bezier2d>& out)
        : owner_(owner), p_(points), arc_(arc), out_(out) {}

    // Unit tangent at index `at` along the direction of travel, from the points between it
    // and `limit` (a span of the tangent width and at least 3 points).
    GR_Point2d EndTangent(size_t at, size_t limit) const {
        const int direction = limit > at ? 1 : -1;
        size_t m = at;
        size_t count = 1;
        while (m != limit) {
            m = direction > 0 ? m + 1 : m - 1;
            ++count;
            if (count >= 3 && std::fabs(arc_[m] - arc_[at]) >= owner_.tangentSpan)
                break;
        }
        const GR_Point2d chord = (p_[m] - p_[at]) * static_cast<double>(direction);
        const double width = std::fabs(arc_[m] - arc_[at]);
        if (count < 3 || width == 0.0)
            return Normalised(chord);
        std::vector<GR_Point2d> points;
        std::vector<double> s;
        for (size_t i = at; i != m;) {
            i = direction > 0 ? i + 1 : i - 1;
            points.push_back(p_[i]);
            s.push_back(std::fabs(arc_[i] - arc_[at]) / width);
        }
        GR_Point2d derivative;
        if (!AnchoredQuadratic(points, s, p_[at], derivative))
            return Normalised(chord);
        return Normalised(derivative * static_cast<double>(direction));
    }

    // Unit tangent through an inner point, from a span on both sides.
    GR_Point2d CentreTangent(size_t at, size_t first, size_t last) const {
        size_t k = at, j = at;
        while (k > first) {
            --k;
            if (at - k >= 2 && arc_[at] - arc_[k] >= owner_.tangentSpan)
                break;
        }
        while (j < last) {
            ++j;
            if (j - at >= 2 && arc_[j] - arc_[at] >= owner_.tangentSpan)
                break;
        }
        const GR_Point2d chord = p_[j] - p_[k];
        const double width = arc_[j] - arc_[k];
        if (j - k + 1 < 3 || width == 0.0)
            return Normalised(chord);
        std::vector<GR_Point2d> points;
        std::vector<double> s;
        for (size_t i = k; i <= j; ++i)
            if (i != at) {
                points.push_back(p_[i]);
                s.push_back((arc_[i] - arc_[at]) / width);
            }
        GR_Point2d derivative;
        if (!AnchoredQuadratic(points, s, p_[at], derivative))
            return Normalised(chord);
        return Normalised(derivative);
    }

    void Fit(size_t first, size_t last, const GR_Point2d& t0, const GR_Point2d& t3) {
        const GR_Point2d p0 = p_[first], p3 = p_[last];
        const double span = arc_[last] - arc_[first];
        u_.assign(last - first + 1, 0.0);
        for (size_t i = first; i <= last; ++i)
            u_[i - first] = span > 0.0 ? (arc_[i] - arc_[first]) / span : 0.0;
        const double e = owner_.errorLimit;
        FitResult current = Solve(first, last, t0, t3);
        FitResult best = current;
        for (int pass = 0; pass < GR_BezierPath2dFitter::kIterations; ++pass) {
            if (current.maxError < e / 2.25)
                break;
            if (pass == 0 ? current.maxError > 9.0 * e : current.maxError > 2.25 * e)
                break;
            const GR_Bezier2d curve = Curve(p0, p3, t0, t3, current);
            Reparameterise(first, last, curve);
            current = Solve(first, last, t0, t3);
            if (!(current.maxError > best.maxError))
                best = current;
        }
        if (best.maxError > e && last - first >= 2 * GR_BezierPath2dFitter::kMinimumPoints) {
            size_t split = best.maxIndex;
            if (split - first < GR_BezierPath2dFitter::kMinimumPoints ||
                last - split < GR_BezierPath2dFitter::kMinimumPoints)
                split = (first + last) / 2;
            const GR_Point2d centre = CentreTangent(split, first, last);
            Fit(first, split, t0, centre);
            Fit(split, last, centre, t3);
            return;
        }
        out_.push_back(Curve(p0, p3, t0, t3, best));
    }

private:
    static GR_Bezier2d Curve(const GR_Point2d& p0, const GR_Point2d& p3, const GR_Point2d& t0,
                             const GR_Point2d& t3, const FitResult& r) {
        return GR_Bezier2d(p0, p0 + t0 * r.a1, p3 + t3 * r.a2, p3);
    }

    // Tangent lengths by least squares, then the error at the inner points.
    FitResult Solve(size_t first, size_t last, const GR_Point2d& t0, const GR_Point2d& t3) const {
        const GR_Point2d p0 = p_[first], p3 = p_[last];
        double c11 = 0.0, c12 = 0.0, c22 = 0.0, x1 = 0.0, x2 = 0.0;
        for (size_t i = first + 1; i < last; ++i) {
            const double u = u_[i - first], v = 1.0 - u;
            const double b0 = v * v * v, b1 = 3.0 * u * v * v, b2 = 3.0 * u * u * v, b3 = u * u * u;
            const GR_Point2d a1 = t0 * b1, a2 = t3 * b2;
            const GR_Point2d residual = p_[i] - (p0 * (b0 + b1) + p3 * (b2 + b3));
            c11 += GR_Dot(a1, a1);
            c12 += GR_Dot(a1, a2);
            c22 += GR_Dot(a2, a2);
            x1 += GR_Dot(a1, residual);
            x2 += GR_Dot(a2, residual);
        }
        FitResult r;
        const double det = c11 * c22 - c12 * c12;
        bool fallback = last - first < GR_BezierPath2dFitter::kMinimumPoints || det == 0.0;
        if (!fallback) {
            r.a1 = (x1 * c22 - c12 * x2) / det;
            r.a2 = (c11 * x2 - c12 * x1) / det;
            fallback = r.a1 < 0.0 || r.a2 > 0.0 || !std::isfinite(r.a1) || !std::isfinite(r.a2);
        }
        if (fallback) {
            const double chord = GR_Length(p3 - p0);
            r.a1 = chord / 3.0;
            r.a2 = -chord / 3.0;
        }
        const GR_Bezier2d curve = Curve(p0, p3, t0, t3, r);
        r.maxIndex = (first + last) / 2;
        for (size_t i = first + 1; i < last; ++i) {
            const double error = GR_DistanceSquared(CubicAt(curve.control, u_[i - first]), p_[i]);
            if (error >= r.maxError) {
                r.maxError = error;
                r.maxIndex = i;
            }
            r.sumError += error;
            if (error >= owner_.errorLimit)
                ++r.overCount;
        }
        return r;
    }

    // One Newton step on each inner parameter towards the nearest point of the curve.
    void Reparameterise(size_t first, size_t last, const GR_Bezier2d& curve) {
        const GR_Point2d* c = curve.control;
        const GR_Point2d h0 = (c[1] - c[0]) * 3.0, h1 = (c[2] - c[1]) * 3.0, h2 = (c[3] - c[2]) * 3.0;
        const GR_Point2d g0 = (h1 - h0) * 2.0, g1 = (h2 - h1) * 2.0;
        for (size_t i = first + 1; i < last; ++i) {
            double& u = u_[i - first];
            const double v = 1.0 - u;
            const GR_Point2d d = CubicAt(c, u) - p_[i];
            const GR_Point2d q1 = h0 * (v * v) + h1 * (2.0 * u * v) + h2 * (u * u), q2 = g0 * v + g1 * u;
            const double denominator = GR_Dot(q1, q1) + GR_Dot(d, q2);
            if (denominator != 0.0)
                u -= GR_Dot(d, q1) / denominator;
        }
    }

    const GR_BezierPath2dFitter& owner_;
    const std::vector<GR_Point2d>& p_;
    const std::vector<double>& arc_;
    std::vector<GR_Bezier2d>& out_;
    std::vector<double> u_;
};

} // namespace

GR_BezierPath2dFitter::GR_BezierPath2dFitter(double tolerance)
    : tolerance(std::isfinite(tolerance) && tolerance > 0.0 ? tolerance : 0.0),
      errorLimit(this->tolerance * this->tolerance), cornerSpan(3.0 * this->tolerance),
      tangentSpan(5.0 * this->tolerance) {}

std::vector<GR_Point2d> GR_BezierPath2dFitter::Prepare(const GR_BezierPath2d& input) const {
    std::vector<GR_Point2d> raw;
    bool straight = true;
    for (size_t i = 0; i < input.SegmentCount(); ++i)
        straight = straight && input.KnotPoint(i + 1) - input.KnotPoint(i) == 1;
    if (straight) {
        for (size_t i = 0; i < input.points.size(); ++i)
            raw.push_back(input.Point(i));
    } else {
        GR_BezierFlattener(tolerance).FlattenPath(input, raw);
    }
    raw.erase(std::remove_if(raw.begin(), raw.end(),
                             [](const GR_Point2d& p) { return !std::isfinite(p.x) || !std::isfinite(p.y); }),
              raw.end());
    std::vector<GR_Point2d> points;
    GR_BezierFlattener::Resample(raw, 3.0 * tolerance, points);
    return points;
}

std::vector<size_t> GR_BezierPath2dFitter::FindCorners(const std::vector<GR_Point2d>& p,
                                                       const std::vector<double>& arc) const {
    const size_t n = p.size();
    const double c1 = std::sin(kCornerAngle / 2.0 * std::numbers::pi / 180.0);
    const double c2 = std::sin((kCornerAngle + 20.0) / 2.0 * std::numbers::pi / 180.0);
    std::vector<size_t> corners{0};
    double minimum = 1.0;
    size_t minimumIndex = 0;
    for (size_t i = 3; i + 4 <= n; ++i) {
        size_t j = i + 1;
        while (j < n - 1 && arc[j] < arc[i] + cornerSpan)
            ++j;
        size_t k = i - 1;
        while (k > 0 && arc[k] > arc[i] - cornerSpan)
            --k;
        const double length = arc[j] - arc[k];
        const double r = length > 0.0 ? GR_Length(p[j] - p[k]) / length : 0.0;
        if (r < minimum) {
            minimum = r;
            minimumIndex = i;
        }
        if (r > c2 && minimum < c1 && minimumIndex != 0) {
            corners.push_back(minimumIndex);
            i = std::max(i, minimumIndex + 3);
            minimum = r;
        }
    }
    corners.push_back(n - 1);
    return corners;
}

std::vector<GR_Bezier2d> GR_BezierPath2dFitter::FitSegments(const std::vector<GR_Point2d>& p) const {
    std::vector<GR_Bezier2d> out;
    const size_t n = p.size();
    if (n <= 1)
        return out;
    if (n <= 3) {
        out.emplace_back(p.front(), p.back());
        return out;
    }
    std::vector<double> arc(n, 0.0);
    for (size_t i = 1; i < n; ++i)
        arc[i] = arc[i - 1] + GR_Length(p[i] - p[i - 1]);
    const std::vector<size_t> corners = FindCorners(p, arc);
    IntervalFitter fitter(*this, p, arc, out);
    for (size_t c = 0; c + 1 < corners.size(); ++c) {
        const size_t first = corners[c], last = corners[c + 1];
        fitter.Fit(first, last, fitter.EndTangent(first, last), fitter.EndTangent(last, first));
    }
    return out;
}

bool GR_BezierPath2dFitter::Fit(const GR_BezierPath2d& input, GR_BezierPath2d& output) const {
    output = GR_BezierPath2d();
    for (const GR_Bezier2d& segment : FitSegments(Prepare(input)))
        if (!output.AppendSegment(segment))
            return false;
    output.CompressKnots();
    return true;
}
