#pragma once

#include "motion/C3DFunction.h"
#include "motion/CCatmullPoint.h"

// The motion path of a peg or camera: a Kochanek-Bartels spline through its keys, run
// along its length at the pace of the velocity curve held in `velocityPlace`.
class CCatmullCurve : public C3DFunction {
public:
    CCatmullCurve() = default;
    CCatmullCurve(int16_t frame0, const C3DPoint& position0, int16_t frame1, const C3DPoint& position1,
                  CFunctionPlace* velocity, uint8_t modeByte);

    void SetLockInTime(int index, double frame, bool lock) override;
    void SetLockInSpace(int index, double frame, bool lock) override;
    std::unique_ptr<C3DFunction> Clone(bool deep) const override;
    void CopyFrom(const C3DFunction& source) override;
    C3DPoint Evaluate(double frame, bool wantNeighbours = false, C3DPoint* outBefore = nullptr,
                      C3DPoint* outAfter = nullptr) override;
    // Samples the spline, then gives samples and whole frames their places in time.
    void Discretize(int steps) override;
    void SetFromPoints(const C3DPoint* points, int firstFrame, int count, CFunctionPlace* velocity) override;
    std::unique_ptr<C3DFunctionPoint> NewPoint() const override { return std::make_unique<CCatmullPoint>(); }

    // Not persisted: the owner sets it after reading.
    CFunctionPlace* velocityPlace = nullptr;

protected:
    void ReadTail(DB_Archive& archive) override;

private:
    // The velocity curve, or an even pace from the first to the last frame without one.
    const CFunctionBase& Velocity();
    void SampleSpline(int steps);
    void Reparametrise();

    std::unique_ptr<CFunctionBase> evenPace_;
    CDiscretizedCurve velocitySamples_;
};
