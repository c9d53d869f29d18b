#pragma once

#include "motion/CFunctionBase.h"

#include <cstdint>

// A curve of straight segments between its keys.
class CInterpolation : public CFunctionBase {
public:
    CInterpolation() = default;
    CInterpolation(int16_t x0, double y0, int16_t x1, double y1);

    std::unique_ptr<CFunctionBase> Clone(bool deep) const override;
    void Discretize(CDiscretizedCurve& samples, double steps) const override;
    double EvaluateSegment(int i, int j, double x) const override;
    std::unique_ptr<CFunctionPoint> NewPoint() const override {
        return std::make_unique<CInterpolationPoint>();
    }
    // The samples are the keys themselves, one per segment start.
    int SegmentOfSample(size_t sampleIndex) const override { return static_cast<int>(sampleIndex); }
};
