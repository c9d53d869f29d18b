#include "vector/GR_BezierAccess.h"

#include <algorithm>

GR_BezierAccess::GR_BezierAccess(const GR_StrokeEnd& end)
    : end_(end), count_(end.IsNull() ? 0 : end.stroke->Path().SegmentCount()), done_(count_ == 0) {
    if (!done_ && end_.end == 1)
        index_ = count_ - 1;
}

void GR_BezierAccess::Segment(GR_Bezier2d& out) const {
    end_.stroke->Path().Segment(index_, out);
    if (end_.end == 0)
        return;
    std::reverse(out.control, out.control + out.degree + 1);
    std::swap(out.closedStart, out.closedEnd);
    out.InvalidateBox();
}

void GR_BezierAccess::Advance() {
    if (done_)
        return;
    if (end_.end == 0) {
        done_ = ++index_ >= count_;
    } else if (index_ == 0) {
        done_ = true;
    } else {
        --index_;
    }
}

double GR_BezierAccess::PathParameter(double t) const {
    return static_cast<double>(index_) + (end_.end == 0 ? t : 1.0 - t);
}
