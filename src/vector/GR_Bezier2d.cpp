#include "vector/GR_Bezier2d.h"

#include "vector/GR_PathHit.h"

bool GR_Bezier2d::GapTest::Accept(const GR_PathHit&) const {
    return true;
}

GR_Bezier2d::GR_Bezier2d(const GR_Point2d& a, const GR_Point2d& b) : degree(1) {
    control[0] = a;
    control[1] = b;
}

GR_Bezier2d::GR_Bezier2d(const GR_Point2d& a, const GR_Point2d& b, const GR_Point2d& c, const GR_Point2d& d)
    : degree(3) {
    control[0] = a;
    control[1] = b;
    control[2] = c;
    control[3] = d;
}

GR_Point2d GR_Bezier2d::Evaluate(double t) const {
    if (degree == 0)
        return control[0];
    GR_Point2d work[4];
    const uint32_t n = degree > 3 ? 3 : degree;
    for (uint32_t i = 0; i <= n; ++i)
        work[i] = control[i];
    const double s = 1.0 - t;
    for (uint32_t level = n; level > 0; --level)
        for (uint32_t i = 0; i < level; ++i)
            work[i] = work[i] * s + work[i + 1] * t;
    return work[0];
}

void GR_Bezier2d::Split(double t, GR_Bezier2d& left, GR_Bezier2d& right) const {
    const uint32_t n = degree > 3 ? 3 : degree;
    GR_Point2d work[4];
    for (uint32_t i = 0; i <= n; ++i)
        work[i] = control[i];
    const double s = 1.0 - t;
    GR_Bezier2d l, r;
    l.degree = r.degree = n;
    l.control[0] = work[0];
    r.control[n] = work[n];
    for (uint32_t level = 1; level <= n; ++level) {
        for (uint32_t i = 0; i + level <= n; ++i)
            work[i] = work[i] * s + work[i + 1] * t;
        l.control[level] = work[0];
        r.control[n - level] = work[n - level];
    }
    const double middle = t * t1 + s * t0;
    l.t0 = t0;
    l.t1 = middle;
    r.t0 = middle;
    r.t1 = t1;
    l.closedStart = closedStart;
    l.closedEnd = 1;
    r.closedStart = 1;
    r.closedEnd = closedEnd;
    left = l;
    right = r;
}

void GR_Bezier2d::SplitSnapped(double t, GR_Bezier2d& left, GR_Bezier2d& right) const {
    Split(t, left, right);
    const GR_Point2d shared = GR_SnapToGrid(left.control[left.degree]);
    left.control[left.degree] = shared;
    right.control[0] = shared;
    left.InvalidateBox();
    right.InvalidateBox();
}

void GR_Bezier2d::Derivative(GR_Bezier2d& hodograph) const {
    const uint32_t n = degree > 3 ? 3 : degree;
    hodograph = GR_Bezier2d();
    hodograph.degree = n - 1;
    for (uint32_t i = 0; i < n; ++i)
        hodograph.control[i] = (control[i + 1] - control[i]) * static_cast<double>(n);
    hodograph.t0 = t0;
    hodograph.t1 = t1;
}

GR_Point2d GR_Bezier2d::DerivativeAt(double t) const {
    GR_Bezier2d hodograph;
    Derivative(hodograph);
    return hodograph.Evaluate(t);
}

GR_Point2d GR_Bezier2d::StartDerivative() const {
    for (uint32_t k = 1; k <= degree && k < 4; ++k)
        if (control[k] != control[0])
            return (control[k] - control[0]) * static_cast<double>(degree);
    return {};
}

GR_Point2d GR_Bezier2d::EndDerivative() const {
    const uint32_t n = degree > 3 ? 3 : degree;
    for (uint32_t k = n; k-- > 0;)
        if (control[k] != control[n])
            return (control[n] - control[k]) * static_cast<double>(n);
    return {};
}

bool GR_Bezier2d::IsSmall() const {
    return degree <= 1 || Box().Perimeter() < kGR_ChordRuleSize;
}

const GR_Box2d& GR_Bezier2d::Box() const {
    if (box.empty) {
        const uint32_t n = degree > 3 ? 3 : degree;
        box.Add(control[0], closedStart);
        for (uint32_t i = 1; i < n; ++i)
            box.Add(control[i], 1);
        box.Add(control[n], n == 0 ? closedStart : closedEnd);
    }
    return box;
}
