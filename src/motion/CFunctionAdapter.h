#pragma once

#include "motion/CFunctionBase.h"

// Base of the wrappers through which the function editor edits a curve.
class CFunctionAdapterBase : public CFunctionBase {};

// Wraps the curve held in a place for editing, and keeps its values within the limits
// of the quantity that it edits. Owns nothing.
class CFunctionAdapter : public CFunctionAdapterBase {
public:
    explicit CFunctionAdapter(CFunctionPlace* targetPlace);

    int GetDuration() const override { return Target()->GetDuration(); }
    void SetDuration(int length) override { Target()->SetDuration(length); }
    bool HasHandles() const override { return Target()->HasHandles(); }
    void ReshapeAll(int preset) override { Target()->ReshapeAll(preset); }
    void ReshapeSegment(int keyIndex, int preset) override { Target()->ReshapeSegment(keyIndex, preset); }
    void SetConstantAll(double y) override { Target()->SetConstantAll(y); }
    void SetConstantSegment(int keyIndex, double y) override { Target()->SetConstantSegment(keyIndex, y); }
    CUIControlPoint* GetHandle(int id) override { return Target()->GetHandle(id); }
    CFunctionPoint* GetKey(int index) const override { return Target()->GetKey(index); }
    // Moves the handle, keeps key id / 2 in range and gives the handle's position.
    C2DPoint MoveHandle(int id, int mode, double x, double y) override;
    int HitHandle(double x, double y) const override { return Target()->HitHandle(x, y); }
    void AddKey(double x, double y) override { Target()->AddKey(x, y); }
    void DeleteKey(int index) override { Target()->DeleteKey(index); }
    CFunctionPoint* GetKeyByIndex(int index) const override { return Target()->GetKeyByIndex(index); }
    std::unique_ptr<CFunctionBase> Clone(bool deep) const override { return Target()->Clone(deep); }
    void CopyFrom(const CFunctionBase& source, bool deep) override { Target()->CopyFrom(source, deep); }
    double Evaluate(double x) const override { return Target()->Evaluate(x); }
    void Discretize(CDiscretizedCurve& samples, double steps) const override {
        Target()->Discretize(samples, steps);
    }
    double EvaluateSegment(int i, int j, double x) const override {
        return Target()->EvaluateSegment(i, j, x);
    }
    void AppendSample(CDiscretizedCurve& samples, double x, double y) const override {
        Target()->AppendSample(samples, x, y);
    }
    // ClampValue, the target's SetKeyValue, then the key and its handles into range.
    void SetKeyValue(int index, double y, double* outX) override;
    int FindKeyAt(double x) const override { return Target()->FindKeyAt(x); }
    const KeyArray& GetKeys() const override { return Target()->GetKeys(); }
    std::unique_ptr<CFunctionPoint> NewPoint() const override { return Target()->NewPoint(); }
    int SegmentOfSample(size_t sampleIndex) const override { return Target()->SegmentOfSample(sampleIndex); }

    virtual bool CanChangeKind() const = 0;
    virtual void ChangeKind(int kind) = 0;
    virtual void ClampValue(int index, double& y) = 0;
    virtual void ResetRange();

    CFunctionBase* Target() const { return target->get(); }

    CFunctionPlace* target;
    double minValue = -10000.0;
    double maxValue = 10000.0;

protected:
    // Brings key `index`, its in-handle and its out-handle within minValue ... maxValue.
    void ClampKeyToRange(int index);
};

// The velocity curve of a peg: a monotonic rise from 0 at the first key to 100 at the last.
class CVelocityFunctionAdapter : public CFunctionAdapter {
public:
    explicit CVelocityFunctionAdapter(CFunctionPlace* targetPlace);
    void SetConstantAll(double) override {}
    void SetConstantSegment(int, double) override {}
    C2DPoint MoveHandle(int id, int mode, double x, double y) override;
    void AddKey(double x, double y) override;
    bool CanChangeKind() const override { return false; }
    void ChangeKind(int) override {}
    void ClampValue(int index, double& y) override;
    void ResetRange() override;
};

// A horizontal or vertical scale; its kind may change to a spline or a velocity-based curve.
class CScaleFunctionAdapter : public CFunctionAdapter {
public:
    CScaleFunctionAdapter(CFunctionPlace* targetPlace, CFunctionPlace* velocityPlace);
    bool CanChangeKind() const override { return true; }
    // 1 makes the curve a spline, 2 a velocity-based curve; other kinds do nothing.
    void ChangeKind(int kind) override;
    void ClampValue(int, double&) override {}

    CFunctionPlace* velocity;
};

class CRotationFunctionAdapter : public CFunctionAdapter {
public:
    explicit CRotationFunctionAdapter(CFunctionPlace* targetPlace) : CFunctionAdapter(targetPlace) {}
    bool CanChangeKind() const override { return true; }
    void ChangeKind(int) override {}
    void ClampValue(int, double&) override {}
};

// Field of view of a camera, in degrees from 10 to 150.
class CFOVFunctionAdapter : public CFunctionAdapter {
public:
    explicit CFOVFunctionAdapter(CFunctionPlace* targetPlace);
    C2DPoint MoveHandle(int id, int mode, double x, double y) override;
    bool CanChangeKind() const override { return true; }
    void ChangeKind(int) override {}
    void ClampValue(int index, double& y) override;
    void ResetRange() override;
};
