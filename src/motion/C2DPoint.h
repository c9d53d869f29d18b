#pragma once

#include "core/CPersistentObjBase.h"

#include <cstdint>

// A point in the plane of a function curve: frame and value. Stored as two f32.
class C2DPoint : public CPersistentObjBase {
public:
    C2DPoint() = default;
    C2DPoint(double px, double py) : x(px), y(py) {}
    C2DPoint(const C2DPoint&) = default;
    C2DPoint& operator=(const C2DPoint&) = default;

    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;
    ~C2DPoint() override = default;
    virtual void Assign(const C2DPoint& other);

    void Set(double px, double py) {
        x = px;
        y = py;
    }
    void SetX(double px) { x = px; }
    void SetY(double py) { y = py; }
    // This point becomes t*b + (1-t)*a in both coordinates.
    void Lerp(const C2DPoint& a, const C2DPoint& b, double t);

    double x = 0.0;
    double y = 0.0;
};

// One sample of a discretized curve; never persisted.
class CCurvePoint : public C2DPoint {
public:
    CCurvePoint() = default;
    CCurvePoint(double px, double py) : C2DPoint(px, py) {}
    void Read(DB_Archive&) override {}
    void Write(DB_Archive&) override {}
    void Assign(const C2DPoint& other) override;

    uint8_t mark = 0;
};

// A Bezier handle of a spline key, in absolute frame and value.
class CUIControlPoint : public C2DPoint {
public:
    CUIControlPoint() = default;
    CUIControlPoint(double px, double py, int16_t handleId) : C2DPoint(px, py), id(handleId) {}
    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;
    void Assign(const C2DPoint& other) override;

    int16_t id = 0;
};
