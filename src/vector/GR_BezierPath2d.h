#pragma once

#include "vector/GR_Bezier2d.h"
#include "vector/GR_Box2d.h"
#include "vector/GR_PathHit.h"
#include "vector/GR_PathRange.h"
#include "vector/GR_Point2d.h"

#include <cstdint>
#include <vector>

class DB_Archive;

// A 2D affine map on row vectors: (x, y, 1) times the 3 x 2 matrix
// [a b; c d; e f], so x' = a x + c y + e and y' = b x + d y + f.
struct GR_Affine2d {
    double a = 1.0, b = 0.0, c = 0.0, d = 1.0, e = 0.0, f = 0.0;
    GR_Point2d Apply(const GR_Point2d& p) const { return {a * p.x + c * p.y + e, b * p.x + d * p.y + f}; }
};

// One meeting of a path with a straight line piece, as the crossing count sees it.
struct GR_LineCrossing {
    // Parameter along the line piece, 0 to 1, and path parameter.
    double line = 0.0;
    double parameter = 0.0;
    GR_Point2d point;
    // Signed weight: 4 for a full crossing, 2 or 1 at an end of a chord or of the line, with
    // the sign of the cross product of the chord and the line.
    int weight = 0;
    // Direction of the chord met, along the path.
    GR_Point2d direction;
};

// A chain of Bezier segments of degree 1 to 3 with f32 control points. Knots are either an
// explicit list of point indices or, when step is not 0, every step-th point.
//
// A path parameter's integer part is a segment index and its fraction the position inside
// that segment; a knot has a whole parameter.
class GR_BezierPath2d {
public:
    // The u16 knot index limits a path to this many points; longer paths are split by
    // whoever makes them.
    static constexpr size_t kMaxPoints = 65536;

    GR_BezierPath2d() = default;
    virtual ~GR_BezierPath2d() = default;
    GR_BezierPath2d(const GR_BezierPath2d&) = default;
    GR_BezierPath2d& operator=(const GR_BezierPath2d&) = default;

    // A path of straight edges through the given points; empty when there are more than
    // kMaxPoints of them (the caller splits such a run).
    static GR_BezierPath2d Polyline(const std::vector<GR_Point2d>& points);

    size_t KnotCount() const;
    size_t KnotPoint(size_t knot) const;
    size_t LastKnotPoint() const;
    size_t SegmentCount() const;
    void ExpandKnots();
    // Back to a uniform step when there are at least 2 knots, the first is 0, the last is
    // the last point and all differences are equal.
    void CompressKnots();

    // Segment i with closed flags 1, 1 and t0, t1 = 0, 1.
    void Segment(size_t i, GR_Bezier2d& out) const;
    // Appends the segment's points after the first; false and nothing changed when the path
    // would grow beyond kMaxPoints.
    bool AppendSegment(const GR_Bezier2d& segment);
    bool ReplaceSegment(size_t i, const GR_Bezier2d& segment);
    // Removes the points first to last, both included, and their knots.
    void RemovePoints(size_t first, size_t last);
    void Reverse();
    void Transform(const GR_Affine2d& matrix);
    GR_BezierPath2d TransformedCopy(const GR_Affine2d& matrix) const;
    void SnapPoint(size_t i);
    void SnapAllPoints();
    // Removes segments whose control points all coincide; their neighbours join.
    void CleanUp();

    GR_Point2d Point(size_t i) const { return GR_ToDouble(points[i]); }
    double PolygonLength() const;
    double SignedArea() const;
    bool IsClockwise() const { return SignedArea() < 0.0; }
    GR_Box2d Bounds() const;
    // Point at t (rounded to the grid at a whole t) with the tangent in (negated
    // derivative) and the tangent out; at the path's ends the missing one is zero.
    void TangentsAt(double t, GR_Point2d& point, GR_Point2d& tangentIn, GR_Point2d& tangentOut) const;

    void KeepRange(double t0, double t1);
    void CutAfter(double t);
    void CutBefore(double t);

    // All true crossings and shared points, in the order of the recursion. `same` when
    // other is this path: each pair of segments is then compared once.
    void IntersectAll(const GR_BezierPath2d& other, bool same, std::vector<GR_PathHit>& out) const;
    void IntersectSelf(std::vector<GR_PathHit>& out) const { IntersectAll(*this, true, out); }
    bool Intersects(const GR_BezierPath2d& other, bool same) const;
    // The hit of smallest (largest) first parameter within the bounds that IsBefore
    // (IsAfter) prefers to `best`; `found` says whether best holds a hit, in and out.
    bool FirstHit(const GR_BezierPath2d& other, const GR_ParameterBounds& bounds, GR_PathHit& best,
                  bool& found) const;
    bool LastHit(const GR_BezierPath2d& other, const GR_ParameterBounds& bounds, GR_PathHit& best,
                 bool& found) const;
    // The same for near hits within radius > 0, each accepted by the gap test.
    bool FirstNearHit(const GR_BezierPath2d& other, const GR_Bezier2d::GapTest& test, double radius,
                      bool same, const GR_ParameterBounds& bounds, GR_PathHit& best, bool& found) const;
    bool LastNearHit(const GR_BezierPath2d& other, const GR_Bezier2d::GapTest& test, double radius, bool same,
                     const GR_ParameterBounds& bounds, GR_PathHit& best, bool& found) const;
    // Crossings with a straight line piece from a to b.
    void CrossLine(const GR_Point2d& a, const GR_Point2d& b, std::vector<GR_PathHit>& out) const;
    // Weighted signed crossing count with the line piece (see Contains); touched is set
    // when the line meets the path at an end of a chord or of the line.
    int CountCrossings(const GR_Point2d& a, const GR_Point2d& b, bool& touched) const;
    // The same; `nearest` comes down to the line parameter (0 to 1) of the nearest meeting
    // that has a weight.
    int CountCrossings(const GR_Point2d& a, const GR_Point2d& b, bool& touched, double& nearest) const;
    // Every meeting with the line piece that the crossing count sees, with its weight.
    void LineCrossings(const GR_Point2d& a, const GR_Point2d& b, std::vector<GR_LineCrossing>& out) const;
    // Inside test by a horizontal ray: even-odd, or non-zero when winding is set.
    bool Contains(const GR_Point2d& point, bool winding) const;
    // Improves bestDistance (squared) and sets parameter when some point of the path is
    // nearer; true when it did.
    bool NearestPoint(const GR_Point2d& point, double& bestDistance, double& parameter) const;

    // Disk form: u16 point count, a knot bit mask, then the points.
    void Write(DB_Archive& archive) const;
    void Read(DB_Archive& archive);

    bool operator==(const GR_BezierPath2d& o) const {
        return points == o.points && knots == o.knots && step == o.step;
    }

    std::vector<GR_Point2f> points;
    std::vector<uint16_t> knots;
    uint32_t step = 0;
};
