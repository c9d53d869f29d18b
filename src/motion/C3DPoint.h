#pragma once

#include "core/CPersistentObjBase.h"

#include <cstdint>
#include <memory>

// A point in scene space, in scene units, held and stored as three f32.
class C3DPoint : public CPersistentObjBase {
public:
    C3DPoint() = default;
    C3DPoint(double px, double py, double pz) { Set(px, py, pz); }
    C3DPoint(const C3DPoint&) = default;
    C3DPoint& operator=(const C3DPoint&) = default;

    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;
    ~C3DPoint() override = default;
    virtual std::unique_ptr<C3DPoint> Clone() const { return std::make_unique<C3DPoint>(*this); }

    void Set(double px, double py, double pz) {
        x = static_cast<float>(px);
        y = static_cast<float>(py);
        z = static_cast<float>(pz);
    }
    void Add(const C3DPoint& p) { Set(x + p.x, y + p.y, z + p.z); }
    void Subtract(const C3DPoint& p) { Set(x - p.x, y - p.y, z - p.z); }
    // The sum of squares is formed in extended precision.
    double Distance(const C3DPoint& p) const;
    // This point becomes b*t + a*(1-t).
    void Lerp(const C3DPoint& a, const C3DPoint& b, double t);
    // The coordinate of axis 0 (x), 1 (y) or 2 (z).
    double Axis(int axis) const { return axis == 0 ? x : axis == 1 ? y : z; }
    void SetAxis(int axis, double value);

    float x = 0.0f;
    float y = 0.0f;
    float z = 0.0f;
};

// One sample of a discretized path, with the frame at which the path passes it.
class C3DCurvePoint : public C3DPoint {
public:
    C3DCurvePoint() = default;
    C3DCurvePoint(const C3DPoint& p, double f) : C3DPoint(p), frame(f) {}
    void Read(DB_Archive&) override {}
    void Write(DB_Archive&) override {}
    std::unique_ptr<C3DPoint> Clone() const override { return std::make_unique<C3DCurvePoint>(*this); }

    double frame = 0.0;
    uint8_t mark = 0;
};
