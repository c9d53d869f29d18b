#pragma once

#include "core/CPersistentObjBase.h"
#include "motion/C3DFunctionPoint.h"
#include "motion/CDiscretized3DCurve.h"
#include "motion/CFunctionBase.h"

#include <cstdint>
#include <memory>
#include <vector>

// A point in space as a function of the frame: keys ascending in frame, and a cache of
// samples and per-frame records derived from them.
class C3DFunction : public CPersistentObjBase {
public:
    using KeyArray = std::vector<std::unique_ptr<C3DFunctionPoint>>;
    static constexpr int16_t kDefaultSmoothness = 40;
    // Samples per segment are bounded so that a damaged file cannot ask for a cache
    // larger than its keys times this.
    static constexpr int kMaxSmoothness = 1000;
    // Key frames lie in the range of 16-bit frames.
    static constexpr double kMinFrame = -32768.0;
    static constexpr double kMaxFrame = 32767.0;

    explicit C3DFunction(uint8_t modeByte = 0) : modeByte_(modeByte) {}
    C3DFunction(const C3DFunction&) = delete;
    C3DFunction& operator=(const C3DFunction&) = delete;

    // LoadPoints, then mode byte and smoothness (older streams: see ReadTail).
    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;
    ~C3DFunction() override = default;
    virtual bool IsKeyAt(double frame) const { return FindKeyAt(frame) >= 0; }
    virtual void OnChanged() {}
    virtual void SetLockInTime(int, double, bool) {}
    virtual void SetLockInSpace(int, double, bool) {}
    virtual std::unique_ptr<C3DFunction> Clone(bool deep) const = 0;
    // Copies keys, mode byte, smoothness and cache.
    virtual void CopyFrom(const C3DFunction& source);
    virtual C3DPoint Evaluate(double frame, bool wantNeighbours = false, C3DPoint* outBefore = nullptr,
                              C3DPoint* outAfter = nullptr) = 0;
    // Steps of 0 or less mean the smoothness.
    virtual void Discretize(int steps) = 0;
    virtual void SetSmoothness(int steps);
    virtual int GetSmoothness() const { return smoothness_; }
    // A key strictly inside the path at a frame that holds none; outIndex gets its index.
    virtual void AddKey(const C3DPoint& position, double frame, int* outIndex, bool locked);
    virtual int FindKeyAt(double frame) const;
    // Sets a key's position; outFrame gets its frame, or -1.0 for an unknown index.
    virtual void MoveKey(int index, const C3DPoint& position, double* outFrame);
    virtual void SetDuration(int length);
    virtual void SetFromPoints(const C3DPoint*, int, int, CFunctionPlace*) {}
    virtual void LoadPoints(DB_Archive& archive);
    virtual std::unique_ptr<C3DFunctionPoint> NewPoint() const = 0;

    C3DFunctionPoint* GetKey(int index) const;
    // Removes a key strictly between the first and the last.
    void DeleteKey(int index);
    void OffsetAll(const C3DPoint& delta);
    // The path rests at its frame0 position from frame0 to frame1.
    void HoldPosition(double frame0, double frame1, bool lockFirst);
    // Appends a key at the last position so that the path lasts `length` frames.
    void ExtendTo(int length);
    int GetDurationInFrames() const;
    // The precomputed record of a whole frame, counted from the first frame; frames
    // outside the path take the nearest record. False while the cache is empty.
    bool GetFrameRecord(int frame, C3DPoint& position, C3DPoint& before, C3DPoint& after);
    void Renumber();
    int FirstKeyAfter(double frame) const;
    int LastKeyBefore(double frame) const;

    int KeyCount() const { return static_cast<int>(keys_.size()); }
    const KeyArray& GetKeys() const { return keys_; }
    const CDiscretized3DCurve& GetCache() const { return cache_; }
    CDiscretized3DCurve& GetCache() { return cache_; }
    uint8_t GetModeByte() const { return modeByte_; }
    bool IsDirty() const { return dirty_ != 0; }
    void SetDirty() { dirty_ = 1; }

protected:
    // What follows the keys in the stream.
    virtual void ReadTail(DB_Archive& archive);
    // The insertion place of a new key at `frame`, or -1 where none may go.
    int InsertionPlace(double frame) const;

    KeyArray keys_;
    CDiscretized3DCurve cache_;
    int16_t smoothness_ = kDefaultSmoothness;
    uint8_t modeByte_ = 0;
    uint8_t dirty_ = 1;
};

// Where an owner keeps its path; adapters hold the place rather than the path.
using C3DFunctionPlace = std::unique_ptr<C3DFunction>;
