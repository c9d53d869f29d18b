#pragma once

#include "vector/GR_Box2d.h"
#include "vector/GR_Point2d.h"

#include <cstdint>

struct GR_PathHit;

// One Bezier segment of degree 1 to 3 in f64, or a piece of one: [t0, t1] is the interval
// of the segment's own parameter that the piece covers.
class GR_Bezier2d {
public:
    // Decides whether a near hit is acceptable; the base accepts every hit.
    class GapTest {
    public:
        virtual ~GapTest() = default;
        virtual bool Accept(const GR_PathHit& hit) const;
    };

    GR_Bezier2d() = default;
    GR_Bezier2d(const GR_Point2d& a, const GR_Point2d& b);
    GR_Bezier2d(const GR_Point2d& a, const GR_Point2d& b, const GR_Point2d& c, const GR_Point2d& d);

    GR_Point2d Evaluate(double t) const;
    // De Casteljau at t. The inner ends of both pieces are closed.
    void Split(double t, GR_Bezier2d& left, GR_Bezier2d& right) const;
    // As Split, with the shared point rounded to the grid and used by both pieces.
    void SplitSnapped(double t, GR_Bezier2d& left, GR_Bezier2d& right) const;
    // The hodograph; a segment of degree 1 gives a constant of degree 0.
    void Derivative(GR_Bezier2d& hodograph) const;
    GR_Point2d DerivativeAt(double t) const;
    // degree * (P_k - P_0), with P_k the first control point that differs from P_0; zero
    // when all coincide.
    GR_Point2d StartDerivative() const;
    GR_Point2d EndDerivative() const;
    // Degree 1 as it is, else the chord rule on the box of the control points.
    bool IsSmall() const;
    // Box of the control points; the end points carry the closed flags.
    const GR_Box2d& Box() const;
    void InvalidateBox() { box.empty = true; }
    const GR_Point2d& First() const { return control[0]; }
    const GR_Point2d& Last() const { return control[degree]; }
    // Maps a parameter of this piece (0 to 1) back to the segment's own parameter.
    double MapBack(double u) const { return u * t1 + (1.0 - u) * t0; }

    uint32_t degree = 1;
    double t0 = 0.0, t1 = 1.0;
    GR_Point2d control[4];
    uint32_t closedStart = 1, closedEnd = 1;
    mutable GR_Box2d box;
};
