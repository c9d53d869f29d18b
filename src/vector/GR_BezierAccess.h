#pragma once

#include "vector/GR_Bezier2d.h"
#include "vector/GR_StrokeEnd.h"

#include <cstddef>

// Walks the segments of a stroke from one of its ends: from end 0 the first segment comes
// first, from end 1 the last, and each segment is given in the direction of the walk.
class GR_BezierAccess {
public:
    explicit GR_BezierAccess(const GR_StrokeEnd& end);

    const GR_StrokeEnd& End() const { return end_; }
    size_t SegmentCount() const { return count_; }
    // The index in the path of the current segment.
    size_t Index() const { return index_; }
    bool AtEnd() const { return done_; }
    // The current segment, reversed when walking from end 1.
    void Segment(GR_Bezier2d& out) const;
    void Advance();
    // The path parameter of a parameter of the current segment in walking direction.
    double PathParameter(double t) const;

private:
    GR_StrokeEnd end_;
    size_t count_;
    size_t index_ = 0;
    bool done_;
};
