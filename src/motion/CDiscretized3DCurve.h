#pragma once

#include "motion/C3DPoint.h"

#include <cstdint>
#include <vector>

// The cache of a path: samples in path order, each with its frame, and one record per
// whole frame with the position and the two samples around it.
class CDiscretized3DCurve {
public:
    struct FrameRecord {
        C3DPoint position;
        C3DPoint before;
        C3DPoint after;
    };

    void Clear();
    void Reserve(size_t sampleCount, size_t recordCount);
    void AppendSample(const C3DCurvePoint& sample) { samples_.push_back(sample); }
    bool GetSample(size_t i, C3DCurvePoint& out) const;
    void SetSample(size_t i, const C3DCurvePoint& in);
    void AppendRecord(const C3DPoint& position, const C3DPoint& before, const C3DPoint& after);
    // The record of a frame counted from the path's first frame; false outside the records.
    bool GetPosition(int frame, C3DPoint& out) const;
    bool GetNeighbours(int frame, C3DPoint& before, C3DPoint& after) const;
    void ClearRecords() { frameRecords_.clear(); }

    size_t SampleCount() const { return samples_.size(); }
    size_t RecordCount() const { return frameRecords_.size(); }
    const std::vector<C3DCurvePoint>& Samples() const { return samples_; }
    std::vector<C3DCurvePoint>& Samples() { return samples_; }
    const std::vector<FrameRecord>& Records() const { return frameRecords_; }

    int16_t steps = 0;

private:
    std::vector<C3DCurvePoint> samples_;
    std::vector<FrameRecord> frameRecords_;
};
