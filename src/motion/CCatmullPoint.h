#pragma once

#include "motion/C3DFunctionPoint.h"

// Tension, continuity and bias that new path keys start with: the "Scene" preferences
// "Tension", "Continuity" and "Bias", 0 until the application sets them.
struct CCatmullDefaults {
    float tension = 0.0f;
    float continuity = 0.0f;
    float bias = 0.0f;
};
CCatmullDefaults& MotionCatmullDefaults();

// A key of a Kochanek-Bartels motion path, with its tension, continuity and bias (-1 to 1).
class CCatmullPoint : public C3DFunctionPoint {
public:
    CCatmullPoint();
    CCatmullPoint(const C3DPoint& position, double keyFrame);

    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;
    std::unique_ptr<C3DPoint> Clone() const override { return std::make_unique<CCatmullPoint>(*this); }

    void TakeDefaults();

    float tension = 0.0f;
    float continuity = 0.0f;
    float bias = 0.0f;
};
