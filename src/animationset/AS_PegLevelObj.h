#pragma once

#include "animationset/AS_ClonableLevel.h"
#include "motion/C2DPoint.h"
#include "motion/C3DFunction.h"
#include "motion/CFunctionBase.h"

#include <memory>

// The shared half of a peg: its curves and base transform.
class AS_CommonPegLevel : public AS_CommonLevel {
public:
    AS_CommonPegLevel() : AS_CommonPegLevel(UT_WString(), AS_kInvalidId, 2) {}
    // Flat curves over `duration` frames (at least 2): no rotation, scale 1, a velocity
    // from 0 to 100 and a path that stays at the origin.
    AS_CommonPegLevel(UT_WString name, uint32_t commonId, uint32_t duration);

    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;
    // A new common half with copies of every curve and field.
    std::shared_ptr<AS_CommonPegLevel> DeepCopy(const UT_WString& name, uint32_t commonId) const;

    uint32_t Duration() const { return duration_; }
    CFunctionBase* Rotation() const { return rotation_.get(); }
    CFunctionBase* VerticalScale() const { return verticalScale_.get(); }
    CFunctionBase* HorizontalScale() const { return horizontalScale_.get(); }
    CFunctionBase* Velocity() const { return velocity_.get(); }
    C3DFunction* Path() const { return path_.get(); }
    C3DFunction* PivotPath() const { return pivotPath_.get(); }

    bool flag = false;
    C2DPoint baseScale{1.0, 1.0};
    double baseRotation = 0.0;
    bool keepProportions = false;
    bool pivotOnScaling = false;

private:
    // Points the path and velocity-based scales at this object's velocity curve.
    void ConnectCurves();

    uint32_t duration_ = 2;
    CFunctionPlace rotation_;
    CFunctionPlace verticalScale_;
    CFunctionPlace horizontalScale_;
    CFunctionPlace velocity_;
    C3DFunctionPlace path_;
    C3DFunctionPlace pivotPath_;
};

// A peg: moves what hangs under it in the Sceneplanning order.
class AS_PegLevelObj : public AS_ClonableLevel {
public:
    AS_PegLevelObj() : AS_ClonableLevel(kLevelPeg, AS_kInvalidId, nullptr) {}
    AS_PegLevelObj(uint32_t id, std::shared_ptr<AS_CommonPegLevel> common)
        : AS_ClonableLevel(kLevelPeg, id, std::move(common)) {}
    static std::unique_ptr<AS_PegLevelObj> Create(uint32_t id, const UT_WString& name,
                                                  uint32_t duration = 10);

    // D for a peg that does not loop; with a loop, by the loop type.
    uint32_t GetDuration() const override;
    int32_t GetFirstFrame() const override { return startFrame_; }
    int32_t GetLastFrame() const override;
    std::unique_ptr<AS_DopeSheetLevelObj> Clone(uint32_t newId, bool copyCells) const override;
    // A new peg on a new common half: a deep copy of the curves and all peg fields.
    std::unique_ptr<AS_PegLevelObj> Duplicate(const UT_WString& name, uint32_t id) const;

    AS_CommonPegLevel* CommonPeg() const { return static_cast<AS_CommonPegLevel*>(Common()); }
    int32_t GetStartFrame() const { return startFrame_; }
    void SetStartFrame(int32_t frame) { startFrame_ = frame; }
    // With loop type 1 the loop end is never below the peg's last frame.
    uint32_t GetLoopEnd() const;
    void SetLoopEnd(uint32_t value);
    bool IsLooped() const { return looped_; }
    void SetLooped(bool looped) { looped_ = looped; }
    uint32_t GetLoopType() const { return loopType_; }
    void SetLoopType(uint32_t type) { loopType_ = type; }

    double offsetY = 0.0;
    double offsetX = 0.0;
    double offsetZ = 0.0;
    double secondOffsetY = 0.0;
    double secondOffsetX = 0.0;
    double secondOffsetZ = 0.0;
    uint32_t lastField = 0;

protected:
    bool AcceptsCommon(const AS_CommonLevel& common) const override;
    void WriteOwn(DB_Archive& archive) override;
    void ReadOwn(DB_Archive& archive) override;
    // The clipboard form carries the common half with its curves, then the peg's fields.
    void WriteDragBody(DB_Archive& archive) override {
        WriteCommonBody(archive);
        WriteOwn(archive);
    }
    void ReadDragBody(DB_Archive& archive) override {
        ReadCommonBody(archive);
        ReadOwn(archive);
    }

private:
    uint32_t LowestLoopEnd() const;
    void CopyPegFieldsTo(AS_PegLevelObj& target) const;

    int32_t startFrame_ = 0;
    bool looped_ = false;
    uint32_t loopType_ = 0;
    uint32_t loopEnd_ = 1;
};
