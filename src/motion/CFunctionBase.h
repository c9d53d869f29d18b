#pragma once

#include "core/CPersistentObjBase.h"
#include "motion/CDiscretizedCurve.h"
#include "motion/CFunctionPoint.h"

#include <memory>
#include <vector>

// A scalar function of the frame: an ordered array of keys, ascending in x, and the
// operations of the function editor on them.
class CFunctionBase : public CPersistentObjBase {
public:
    using KeyArray = std::vector<std::unique_ptr<CFunctionPoint>>;
    // Samples per segment that FindFrameForValue expects of its samples.
    static constexpr int kSearchSteps = 35;

    CFunctionBase() = default;
    CFunctionBase(const CFunctionBase&) = delete;
    CFunctionBase& operator=(const CFunctionBase&) = delete;

    // Destroys all keys, then LoadPoints.
    void Read(DB_Archive& archive) override;
    // Key count (u32), then each key.
    void Write(DB_Archive& archive) override;
    ~CFunctionBase() override = default;
    // The last key's x truncated, plus 1; 0 without keys.
    virtual int GetDuration() const;
    // Rescales the keys to `length` frames; keys that collapse onto one frame go.
    virtual void SetDuration(int length);
    virtual bool HasHandles() const { return false; }
    virtual void ReshapeAll(int) {}
    virtual void ReshapeSegment(int, int) {}
    virtual void SetConstantAll(double) {}
    virtual void SetConstantSegment(int, double) {}
    virtual CUIControlPoint* GetHandle(int) { return nullptr; }
    virtual CFunctionPoint* GetKey(int index) const;
    // Only splines act; the result is always (-1.0, -1.0).
    virtual C2DPoint MoveHandle(int id, int mode, double x, double y);
    // Id of a handle within 0.1 of (x, y), else 0.
    virtual int HitHandle(double, double) const { return 0; }
    // Inserts a key strictly inside the curve; nothing happens elsewhere.
    virtual void AddKey(double x, double y);
    // Removes a key strictly between the first and the last.
    virtual void DeleteKey(int index);
    virtual CFunctionPoint* GetKeyByIndex(int index) const { return GetKey(index); }
    virtual std::unique_ptr<CFunctionBase> Clone(bool deep) const = 0;
    virtual void CopyFrom(const CFunctionBase& source, bool deep);
    // The value at x; the end values hold beyond the ends; 0.0 without keys.
    virtual double Evaluate(double x) const;
    // Inverts the curve through samples of 35 steps per segment (made when empty);
    // -1.0 where the value is not reached.
    virtual double FindFrameForValue(CDiscretizedCurve& samples, double value, double startX) const;
    virtual void Discretize(CDiscretizedCurve& samples, double steps) const = 0;
    // Value at x between keys i and j = i + 1.
    virtual double EvaluateSegment(int i, int j, double x) const = 0;
    virtual void AppendSample(CDiscretizedCurve& samples, double x, double y) const;
    virtual void SetKeyValue(int index, double y, double* outX);
    virtual int FindKeyAt(double x) const;
    virtual bool IsKeyAt(double x) const { return FindKeyAt(x) >= 0; }
    virtual const KeyArray& GetKeys() const { return keys_; }
    // Count (u32), then for each key NewPoint and its Read.
    virtual void LoadPoints(DB_Archive& archive);
    virtual std::unique_ptr<CFunctionPoint> NewPoint() const = 0;
    virtual void OffsetValues(double dy);
    // Carries the value at x0 to x1.
    virtual void HoldValue(double x0, double x1, bool insertFirst);
    // One key per value, key k at frame firstFrame + k.
    virtual void SetFromValues(const double* values, int firstFrame, int count);
    // Rebuilds the keys from any other curve.
    virtual void ConvertFrom(const CFunctionBase& source);

    int KeyCount() const { return static_cast<int>(GetKeys().size()); }
    // The search of FindFrameForValue from sample `cursor` on. Returns false where no
    // pair of samples brackets the value; else the frame, with `cursor` on the pair.
    bool FindFrameFrom(const CDiscretizedCurve& samples, double value, size_t& cursor, double& frame) const;
    // The segment that a sample index of FindFrameForValue falls in.
    virtual int SegmentOfSample(size_t sampleIndex) const {
        return static_cast<int>(sampleIndex / kSearchSteps);
    }

protected:
    // Index and handle ids from the start, ids of the outer end handles left as they are.
    void Renumber();
    void InsertKey(size_t position, std::unique_ptr<CFunctionPoint> key);
    // The insertion place for a new key at x, or -1 where none may go.
    int InsertionPlace(double x) const;

    KeyArray keys_;
};

// Where an owner keeps one of its curves. Adapters and velocity-based curves hold the
// place rather than the curve, since the owner may put another curve there.
using CFunctionPlace = std::unique_ptr<CFunctionBase>;

// Truncation toward zero of a frame, saturated to the 16-bit frame range.
int MotionTruncFrame(double x);
