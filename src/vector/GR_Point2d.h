#pragma once

#include <cmath>

// Points of the geometry kernel: f64 for computation, f32 for storage.
struct GR_Point2d {
    double x = 0.0;
    double y = 0.0;

    GR_Point2d operator+(const GR_Point2d& o) const { return {x + o.x, y + o.y}; }
    GR_Point2d operator-(const GR_Point2d& o) const { return {x - o.x, y - o.y}; }
    GR_Point2d operator-() const { return {-x, -y}; }
    GR_Point2d operator*(double s) const { return {x * s, y * s}; }
    bool operator==(const GR_Point2d& o) const { return x == o.x && y == o.y; }
    bool operator!=(const GR_Point2d& o) const { return !(*this == o); }
};

struct GR_Point2f {
    float x = 0.0f;
    float y = 0.0f;

    bool operator==(const GR_Point2f& o) const { return x == o.x && y == o.y; }
    bool operator!=(const GR_Point2f& o) const { return !(*this == o); }
};

inline double GR_Dot(const GR_Point2d& a, const GR_Point2d& b) {
    return a.x * b.x + a.y * b.y;
}
inline double GR_Cross(const GR_Point2d& a, const GR_Point2d& b) {
    return a.x * b.y - a.y * b.x;
}
inline double GR_Length(const GR_Point2d& a) {
    return std::sqrt(a.x * a.x + a.y * a.y);
}
inline double GR_DistanceSquared(const GR_Point2d& a, const GR_Point2d& b) {
    const GR_Point2d d = a - b;
    return d.x * d.x + d.y * d.y;
}
inline GR_Point2d GR_ToDouble(const GR_Point2f& p) {
    return {p.x, p.y};
}

// The drawing grid: every point that enters a drawing lies on multiples of 2^-10.
constexpr double kGR_Grid = 0.0009765625;

// floor(v / grid + 0.5) * grid; not std::round, which differs at -grid / 2.
inline double GR_SnapToGrid(double v) {
    return std::floor(v / kGR_Grid + 0.5) * kGR_Grid;
}
inline GR_Point2d GR_SnapToGrid(const GR_Point2d& p) {
    return {GR_SnapToGrid(p.x), GR_SnapToGrid(p.y)};
}
inline GR_Point2f GR_SnapToGridF(const GR_Point2d& p) {
    return {static_cast<float>(GR_SnapToGrid(p.x)), static_cast<float>(GR_SnapToGrid(p.y))};
}

// A piece is replaced by its chord when it is straight or when 2 * (width + height) of
// its box is below this many drawing units. Fixed in drawing units, whatever the zoom.
constexpr double kGR_ChordRuleSize = 32.0;

// Counter-clockwise order of directions from the positive x axis: the half-plane compare.
// Directions in [0, pi) come before those in [pi, 2 pi); within a half, by cross product.
inline int GR_HalfPlane(const GR_Point2d& v) {
    return (v.y > 0.0 || (v.y == 0.0 && v.x > 0.0)) ? 0 : 1;
}
inline bool GR_DirectionBefore(const GR_Point2d& a, const GR_Point2d& b) {
    const int ha = GR_HalfPlane(a), hb = GR_HalfPlane(b);
    if (ha != hb)
        return ha < hb;
    return GR_Cross(a, b) > 0.0;
}
