#pragma once

#include "vector/GR_Color.h"
#include "vector/GR_LineStyle.h"
#include "vector/GR_SharedPath.h"
#include "vector/GR_StrokeEnd.h"

#include <cstdint>

class GR_Component;
class GR_Layer;
class GR_Zone;

// A stroke of a layer: an edge of the planar map between the vertices of its two ends.
class GR_VectorStroke {
public:
    enum Flag : uint16_t {
        kNew = 1 << 0,         // new since the last commit
        kIntersected = 1 << 1, // visited by the intersection pass
        kVisitedEnd0 = 1 << 2, // end 0 visited by a walk of the recolouring
        kVisitedEnd1 = 1 << 3, // end 1 likewise
        kExcludedFromPaint = 1 << 4,
        kBridge = 1 << 5, // a bridge of gap closing
    };

    // A new stroke on an interned path; it registers with the record and leaves it when
    // deleted. Its ring links point at itself and it is in no layer.
    GR_VectorStroke(GR_SharedPath* path, GR_ColorRef colour0, GR_ColorRef colour1, const GR_LineStyle& style,
                    uint8_t endFlag0 = 0, uint8_t endFlag1 = 0);
    // A new stroke equal to another one: path, colours, style and end flags.
    explicit GR_VectorStroke(const GR_VectorStroke& other);
    GR_VectorStroke& operator=(const GR_VectorStroke&) = delete;
    ~GR_VectorStroke();

    const GR_BezierPath2d& Path() const { return path_->Path(); }
    GR_SharedPath* SharedPath() const { return path_; }
    // Moves the stroke to another record (of equal value, in another set).
    void SetSharedPath(GR_SharedPath* path);
    // Fewer than 2 knots, or a zero tangent at either end (a path whose chord polyline is a
    // single point): never part of a layer.
    bool IsDegenerate() const;
    uint64_t Serial() const { return serial_; }
    // The layer whose list holds the stroke, or nullptr.
    GR_Layer* ListLayer() const { return listLayer_; }
    GR_StrokeEnd End(uint8_t end) { return {this, end}; }

    bool HasFlag(uint16_t flag) const { return (flags & flag) != 0; }
    void SetFlag(uint16_t flag, bool on) { flags = on ? (flags | flag) : (flags & ~flag); }

    // Links of the layer's list, in insertion order.
    GR_VectorStroke* previous = nullptr;
    GR_VectorStroke* next = nullptr;
    // For each end, the next end counter-clockwise around that end's vertex.
    GR_StrokeEnd ring[2];
    // The layer the stroke belongs to, and the one it is to be in after the next commit.
    // While a commit runs, a stroke moved from another layer keeps that layer here until
    // the layer is cleaned, so that the recolouring can tell where its colours came from.
    GR_Layer* committedLayer = nullptr;
    GR_Layer* targetLayer = nullptr;
    // Direction out of each end: the first chord of the path's chord polyline that has a
    // length, from end 0, and the last one reversed, from end 1. Kept only to order ends
    // around a vertex.
    GR_Point2f tangent[2];
    uint16_t flags = kNew;
    // 1 if that end came from a split against a cut stroke: the logical line stops there.
    uint8_t endFlags[2] = {0, 0};
    // Colour 0 on the left of the stroke walked from end 0 to end 1, colour 1 on the right.
    GR_ColorRef colour[2];
    GR_LineStyle style;

    // Derived data of the layer's zones, valid while they are.
    GR_Zone* zone[2] = {nullptr, nullptr};
    GR_Component* component = nullptr;
    // Scratch mark of walks and queries: a walk takes a new value from NewMark and marks
    // the strokes it has seen with it.
    uint64_t mark = 0;
    static uint64_t NewMark();

private:
    friend class GR_Layer;
    void ComputeTangents();

    GR_SharedPath* path_;
    uint64_t serial_;
    GR_Layer* listLayer_ = nullptr;
};

inline GR_StrokeEnd GR_StrokeEnd::Next() const {
    return stroke->ring[end];
}
inline void GR_StrokeEnd::SetNext(const GR_StrokeEnd& next) const {
    stroke->ring[end] = next;
}
inline GR_Point2f GR_StrokeEnd::Tangent() const {
    return stroke->tangent[end];
}
inline void GR_StrokeEnd::Tangents(GR_Point2f& mine, GR_Point2f& other) const {
    mine = stroke->tangent[end];
    other = stroke->tangent[1 - end];
}
inline GR_Point2f GR_StrokeEnd::Point() const {
    const GR_BezierPath2d& path = stroke->Path();
    return end == 0 ? path.points.front() : path.points.back();
}
inline void GR_StrokeEnd::Points(GR_Point2f& mine, GR_Point2f& other) const {
    mine = Point();
    other = Twin().Point();
}
inline const GR_ColorRef& GR_StrokeEnd::LeftColor() const {
    return stroke->colour[end];
}
inline const GR_ColorRef& GR_StrokeEnd::RightColor() const {
    return stroke->colour[1 - end];
}
inline void GR_StrokeEnd::SetLeftColor(GR_ColorRef colour) const {
    stroke->colour[end] = std::move(colour);
}
inline void GR_StrokeEnd::SetRightColor(GR_ColorRef colour) const {
    stroke->colour[1 - end] = std::move(colour);
}
inline GR_Zone* GR_StrokeEnd::Zone() const {
    return stroke->zone[end];
}
