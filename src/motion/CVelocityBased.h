#pragma once

#include "motion/CFunctionBase.h"

// A curve whose segments run from key to key in the proportion in which another
// function, the reference, progresses. The reference is a place holding a curve
// pointer, since the owner may replace the curve in that place.
class CVelocityBased : public CFunctionBase {
public:
    CVelocityBased() = default;
    explicit CVelocityBased(CFunctionPlace* referencePlace) : reference(referencePlace) {}

    void SetDuration(int length) override;
    std::unique_ptr<CFunctionBase> Clone(bool deep) const override;
    void CopyFrom(const CFunctionBase& source, bool deep) override;
    void Discretize(CDiscretizedCurve& samples, double steps) const override;
    double EvaluateSegment(int i, int j, double x) const override;
    std::unique_ptr<CFunctionPoint> NewPoint() const override {
        return std::make_unique<CVelocityBasedPoint>();
    }

    CFunctionPlace* reference = nullptr;

private:
    const CFunctionBase* Reference() const { return reference ? reference->get() : nullptr; }
};
