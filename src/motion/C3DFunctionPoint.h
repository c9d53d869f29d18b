#pragma once

#include "motion/C3DPoint.h"

#include <cstdint>

// A key of a path: a position and the frame at which the path passes it.
class C3DFunctionPoint : public C3DPoint {
public:
    C3DFunctionPoint() = default;
    C3DFunctionPoint(const C3DPoint& position, double keyFrame) : C3DPoint(position), frame(keyFrame) {}

    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;
    std::unique_ptr<C3DPoint> Clone() const override { return std::make_unique<C3DFunctionPoint>(*this); }
    virtual void SetLockedInTime(bool flag) { lockedInTime = flag ? 1 : 0; }
    virtual void SetLockedInSpace(bool flag) { lockedInSpace = flag ? 1 : 0; }
    virtual double GetFrame() const { return frame; }
    virtual void SetFrame(double f) { frame = f; }

    void SetPosition(const C3DPoint& p) { C3DPoint::operator=(p); }

    int16_t index = 0;
    double frame = 0.0;
    uint8_t lockedInTime = 0;
    uint8_t lockedInSpace = 0;
};

// A key of a piecewise-straight path: locked in time from the start.
class C3DInterpolationPoint : public C3DFunctionPoint {
public:
    C3DInterpolationPoint() { lockedInTime = 1; }
    C3DInterpolationPoint(const C3DPoint& position, double keyFrame) : C3DFunctionPoint(position, keyFrame) {
        lockedInTime = 1;
    }
    std::unique_ptr<C3DPoint> Clone() const override {
        return std::make_unique<C3DInterpolationPoint>(*this);
    }
};
