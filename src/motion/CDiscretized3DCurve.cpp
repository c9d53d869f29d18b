#include "motion/CDiscretized3DCurve.h"

void CDiscretized3DCurve::Clear() {
    samples_.clear();
    frameRecords_.clear();
    steps = 0;
}

void CDiscretized3DCurve::Reserve(size_t sampleCount, size_t recordCount) {
    samples_.reserve(sampleCount);
    frameRecords_.reserve(recordCount);
}

bool CDiscretized3DCurve::GetSample(size_t i, C3DCurvePoint& out) const {
    if (i >= samples_.size())
        return false;
    out = samples_[i];
    return true;
}

void CDiscretized3DCurve::SetSample(size_t i, const C3DCurvePoint& in) {
    if (i < samples_.size())
        samples_[i] = in;
}

void CDiscretized3DCurve::AppendRecord(const C3DPoint& position, const C3DPoint& before,
                                       const C3DPoint& after) {
    frameRecords_.push_back(FrameRecord{position, before, after});
}

bool CDiscretized3DCurve::GetPosition(int frame, C3DPoint& out) const {
    if (frame < 0 || static_cast<size_t>(frame) >= frameRecords_.size())
        return false;
    out = frameRecords_[static_cast<size_t>(frame)].position;
    return true;
}

bool CDiscretized3DCurve::GetNeighbours(int frame, C3DPoint& before, C3DPoint& after) const {
    if (frame < 0 || static_cast<size_t>(frame) >= frameRecords_.size())
        return false;
    before = frameRecords_[static_cast<size_t>(frame)].before;
    after = frameRecords_[static_cast<size_t>(frame)].after;
    return true;
}
