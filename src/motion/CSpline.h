#pragma once

#include "motion/CFunctionBase.h"
#include "motion/CSplinePoint.h"

#include <cstdint>

// A curve of cubic Bezier segments in the plane of frame and value. Each segment runs
// from a key through its out-handle and the next key's in-handle to the next key.
class CSpline : public CFunctionBase {
public:
    // Handle drag modes of MoveHandle.
    enum { kModeFree = 0, kModeSmooth = 1, kModeSymmetric = 2 };
    // The shapes that ReshapeAll and ReshapeSegment give a segment.
    enum Preset {
        kLinear = 0,
        kEaseInOut = 1,
        kExtremeEaseInOut = 2,
        kSlowDeceleration = 3,
        kSlowAcceleration = 4,
        kFastInOut = 5,
        kExtremeFastInOut = 6,
    };

    CSpline() = default;
    // Two keys with flat tangents: the inner handles at a third of the span, in whole frames.
    CSpline(int16_t x0, double y0, int16_t x1, double y1);

    bool HasHandles() const override { return true; }
    void ReshapeAll(int preset) override;
    void ReshapeSegment(int keyIndex, int preset) override;
    void SetConstantAll(double y) override;
    void SetConstantSegment(int keyIndex, double y) override;
    CUIControlPoint* GetHandle(int id) override;
    C2DPoint MoveHandle(int id, int mode, double x, double y) override;
    int HitHandle(double x, double y) const override;
    void AddKey(double x, double y) override;
    std::unique_ptr<CFunctionBase> Clone(bool deep) const override;
    void Discretize(CDiscretizedCurve& samples, double steps) const override;
    double EvaluateSegment(int i, int j, double x) const override;
    void SetKeyValue(int index, double y, double* outX) override;
    std::unique_ptr<CFunctionPoint> NewPoint() const override { return std::make_unique<CSplinePoint>(); }
    void SetFromValues(const double* values, int firstFrame, int count) override;
    void ConvertFrom(const CFunctionBase& source) override;

    CSplinePoint* SplineKey(int index) const { return static_cast<CSplinePoint*>(GetKey(index)); }

private:
    void ApplyPreset(int keyIndex, int preset);
    // Handle ids 2*i and 2*i+1 for every key, the outer end handles included.
    void NumberAllHandles();
};

// The parameter in [0, 1] at which the Bezier x polynomial of x0, a, b, x1 reaches x.
double MotionBezierParameter(double x0, double a, double b, double x1, double x);
