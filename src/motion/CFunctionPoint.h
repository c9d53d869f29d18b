#pragma once

#include "motion/C2DPoint.h"

#include <cstdint>
#include <memory>

class C3DFunctionPoint;

// A key of a scalar curve: x is its frame, y its value.
class CFunctionPoint : public C2DPoint {
public:
    CFunctionPoint() = default;
    CFunctionPoint(double px, double py) : C2DPoint(px, py) {}

    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;
    void Assign(const C2DPoint& other) override;
    virtual int16_t GetOutHandleId() const = 0;
    virtual int16_t GetInHandleId() const = 0;
    virtual void SetInHandleId(int16_t id) = 0;
    virtual void SetOutHandleId(int16_t id) = 0;
    virtual CUIControlPoint* GetOutHandle() = 0;
    virtual CUIControlPoint* GetInHandle() = 0;
    virtual C3DFunctionPoint* GetAdaptedSource() const = 0;
    virtual C2DPoint GetAdaptedPosition() const = 0;

    // A new point of the same class with the same fields.
    std::unique_ptr<CFunctionPoint> Duplicate() const;

    uint32_t reserved = 0;
    int16_t kind = 0;
    int16_t index = 0;
    uint8_t flag = 0;

protected:
    virtual std::unique_ptr<CFunctionPoint> MakeEmpty() const = 0;
};

// A key without handles: the getters answer 0 or null and the setters do nothing.
class CPlainFunctionPoint : public CFunctionPoint {
public:
    using CFunctionPoint::CFunctionPoint;
    int16_t GetOutHandleId() const override { return 0; }
    int16_t GetInHandleId() const override { return 0; }
    void SetInHandleId(int16_t) override {}
    void SetOutHandleId(int16_t) override {}
    CUIControlPoint* GetOutHandle() override { return nullptr; }
    CUIControlPoint* GetInHandle() override { return nullptr; }
    C3DFunctionPoint* GetAdaptedSource() const override { return nullptr; }
    C2DPoint GetAdaptedPosition() const override { return C2DPoint(0.0, 0.0); }
};

class CInterpolationPoint : public CPlainFunctionPoint {
public:
    using CPlainFunctionPoint::CPlainFunctionPoint;

protected:
    std::unique_ptr<CFunctionPoint> MakeEmpty() const override {
        return std::make_unique<CInterpolationPoint>();
    }
};

class CVelocityBasedPoint : public CPlainFunctionPoint {
public:
    using CPlainFunctionPoint::CPlainFunctionPoint;

protected:
    std::unique_ptr<CFunctionPoint> MakeEmpty() const override {
        return std::make_unique<CVelocityBasedPoint>();
    }
};
