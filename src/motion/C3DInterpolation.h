#pragma once

#include "motion/C3DFunction.h"

// A piecewise-straight path, as a peg's pivot point follows. Its keys are locked in time
// and its cache is rebuilt at once after every edit.
class C3DInterpolation : public C3DFunction {
public:
    C3DInterpolation() { smoothness_ = 1; }
    C3DInterpolation(int16_t frame0, const C3DPoint& position0, int16_t frame1, const C3DPoint& position1,
                     uint8_t modeByte);

    std::unique_ptr<C3DFunction> Clone(bool deep) const override;
    C3DPoint Evaluate(double frame, bool wantNeighbours = false, C3DPoint* outBefore = nullptr,
                      C3DPoint* outAfter = nullptr) override;
    // One sample and one record per key.
    void Discretize(int steps) override;
    void AddKey(const C3DPoint& position, double frame, int* outIndex, bool locked) override;
    void MoveKey(int index, const C3DPoint& position, double* outFrame) override;
    std::unique_ptr<C3DFunctionPoint> NewPoint() const override {
        return std::make_unique<C3DInterpolationPoint>();
    }
    // As SetDuration, with interior keys rounded to whole frames and keeping their locks;
    // of two keys that meet on one frame the second goes.
    virtual void SetDurationRounded(int length);
};
