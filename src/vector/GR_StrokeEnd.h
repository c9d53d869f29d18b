#pragma once

#include "vector/GR_Color.h"
#include "vector/GR_Point2d.h"

#include <cstddef>
#include <cstdint>

class GR_VectorStroke;
class GR_Zone;

// A stroke with one of its ends. It is both a member of the ring of ends at a vertex and a
// half-edge of the planar map, directed away from that end. The zone walk h := Twin(Next(h))
// keeps the zone on the left of every half-edge it meets.
struct GR_StrokeEnd {
    GR_StrokeEnd() = default;
    GR_StrokeEnd(GR_VectorStroke* stroke, uint8_t end) : stroke(stroke), end(end) {}

    bool IsNull() const { return stroke == nullptr; }
    bool operator==(const GR_StrokeEnd& o) const { return stroke == o.stroke && end == o.end; }
    bool operator!=(const GR_StrokeEnd& o) const { return !(*this == o); }

    // The next end counter-clockwise around the vertex.
    GR_StrokeEnd Next() const;
    void SetNext(const GR_StrokeEnd& next) const;
    // The same stroke from its other end.
    GR_StrokeEnd Twin() const { return {stroke, static_cast<uint8_t>(1 - end)}; }
    // The end whose Next is this one.
    GR_StrokeEnd Previous() const;
    // The next half-edge of the zone walk.
    GR_StrokeEnd NextInZone() const { return Next().Twin(); }
    // The number of ends at the vertex.
    size_t Degree() const;

    // The point of this end, and of the other.
    GR_Point2f Point() const;
    void Points(GR_Point2f& mine, GR_Point2f& other) const;
    // The stored direction out of this end, and out of the other.
    GR_Point2f Tangent() const;
    void Tangents(GR_Point2f& mine, GR_Point2f& other) const;
    // Same tangents at both ends and same far point: the same curve stored again.
    bool SameCurve(const GR_StrokeEnd& other) const;

    // Colour 0 lies on the left of a stroke walked from end 0 to end 1.
    const GR_ColorRef& LeftColor() const;
    const GR_ColorRef& RightColor() const;
    void SetLeftColor(GR_ColorRef colour) const;
    void SetRightColor(GR_ColorRef colour) const;

    // The zone on the left of this half-edge while the layer's zones are valid.
    GR_Zone* Zone() const;

    // The order of a ring: counter-clockwise from the positive x axis by tangent. Ends with
    // exactly the same direction tie: end 0 before end 1, and among equal ends the lower
    // serial first for end 0 and the higher first for end 1.
    static bool Before(const GR_StrokeEnd& a, const GR_StrokeEnd& b);

    GR_VectorStroke* stroke = nullptr;
    uint8_t end = 0;
};

// The inline operations need the stroke's definition.
#include "vector/GR_VectorStroke.h"
