#pragma once

#include "motion/C3DFunction.h"
#include "motion/CFunctionAdapter.h"

// A key of a path seen as a scalar key: x is the key's frame, y one coordinate.
class CAdapted3DPoint : public CPlainFunctionPoint {
public:
    CAdapted3DPoint() = default;
    CAdapted3DPoint(C3DFunctionPoint* key, int axis);
    C3DFunctionPoint* GetAdaptedSource() const override { return source; }
    C2DPoint GetAdaptedPosition() const override { return C2DPoint(x, y); }

    C3DFunctionPoint* source = nullptr;

protected:
    std::unique_ptr<CFunctionPoint> MakeEmpty() const override { return std::make_unique<CAdapted3DPoint>(); }
};

// The samples of a path seen through one coordinate: (frame, coordinate) per sample.
class CDiscretized3DCurveAdapter : public CDiscretizedCurve {
public:
    std::unique_ptr<CDiscretizedCurve> Clone() const override {
        return std::make_unique<CDiscretized3DCurveAdapter>(*this);
    }
    void Clear() override;
    size_t Count() const override { return source ? source->SampleCount() : 0; }
    // The samples belong to the path; they are not added or changed through here.
    void Append(const CCurvePoint&) override {}
    void Set(size_t, const CCurvePoint&) override {}
    void Get(size_t i, CCurvePoint& out) const override;

    CDiscretized3DCurve* source = nullptr;
    int axis = 0;
};

// One coordinate of a path as a scalar curve, for the function editor's projections
// "Projection EW" (x), "Projection NS" (y) and "Projection FB" (z).
class C3DFunctionAdapter : public CFunctionAdapterBase {
public:
    C3DFunctionAdapter(C3DFunctionPlace* pathPlace, int axis);

    int GetDuration() const override;
    CFunctionPoint* GetKey(int index) const override;
    void AddKey(double frame, double value) override;
    void DeleteKey(int index) override;
    std::unique_ptr<CFunctionBase> Clone(bool deep) const override;
    double Evaluate(double frame) const override;
    void Discretize(CDiscretizedCurve& samples, double steps) const override;
    double EvaluateSegment(int i, int j, double frame) const override;
    void SetKeyValue(int index, double value, double* outFrame) override;
    int FindKeyAt(double frame) const override { return Path()->FindKeyAt(frame); }
    bool IsKeyAt(double frame) const override { return Path()->IsKeyAt(frame); }
    const KeyArray& GetKeys() const override;
    std::unique_ptr<CFunctionPoint> NewPoint() const override { return std::make_unique<CAdapted3DPoint>(); }
    void OffsetValues(double dy) override;
    void HoldValue(double frame0, double frame1, bool insertFirst) override;

    void SetLockInTime(int index, double frame, bool lock);
    void SetLockInSpace(int index, double frame, bool lock);
    bool IsLockedInTime(int index) const;

    C3DFunction* Path() const { return path_->get(); }
    int Axis() const { return axis_; }

private:
    void Rebuild() const;

    C3DFunctionPlace* path_;
    int axis_;
    mutable KeyArray adapted_;
};
