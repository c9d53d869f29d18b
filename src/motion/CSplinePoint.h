#pragma once

#include "motion/CFunctionPoint.h"

// A spline key with its two Bezier handles, in the plane of the curve.
class CSplinePoint : public CFunctionPoint {
public:
    CSplinePoint() = default;
    CSplinePoint(double px, double py) : CFunctionPoint(px, py) {}

    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;
    void Assign(const C2DPoint& other) override;
    int16_t GetOutHandleId() const override { return outHandle.id; }
    int16_t GetInHandleId() const override { return inHandle.id; }
    void SetInHandleId(int16_t id) override { inHandle.id = id; }
    void SetOutHandleId(int16_t id) override { outHandle.id = id; }
    CUIControlPoint* GetOutHandle() override { return &outHandle; }
    CUIControlPoint* GetInHandle() override { return &inHandle; }
    C3DFunctionPoint* GetAdaptedSource() const override { return nullptr; }
    C2DPoint GetAdaptedPosition() const override { return C2DPoint(0.0, 0.0); }

    CUIControlPoint outHandle{-1.0, -1.0, 0};
    CUIControlPoint inHandle{-1.0, -1.0, 0};

protected:
    std::unique_ptr<CFunctionPoint> MakeEmpty() const override { return std::make_unique<CSplinePoint>(); }
};
