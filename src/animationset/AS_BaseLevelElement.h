#pragma once

#include "animationset/AS_ClonableLevel.h"
#include "motion/C3DPoint.h"

#include <cstdint>

// Where an element stands in the scene. 81 bytes on a stream.
struct AS_Placement {
    C3DPoint offset;
    C3DPoint rotationPivot;
    C3DPoint scalePivot;
    C3DPoint fourthPoint;
    uint32_t startFrame = 1;
    double rotation = 0.0; // degrees
    double verticalScale = 1.0;
    double horizontalScale = 1.0;
    uint32_t elementType = 0; // 0 normal, 1 foreground, 2 background
    bool keepProportions = false;

    void Read(DB_Archive& archive);
    void Write(DB_Archive& archive);
    // Scale about the scale pivot, rotate about the rotation pivot, move by the offset;
    // all in single precision.
    AS_Matrix Matrix() const;
};

// An element with a placement in space: drawings, images and media links.
class AS_BaseLevelElement : public AS_ClonableLevel {
public:
    using AS_ClonableLevel::AS_ClonableLevel;

    // The placement's matrix; the frame does not matter.
    void GetMatrix(AS_Matrix& out, int32_t frame) const override;

    const AS_Placement& Placement() const { return placement_; }
    AS_Placement& Placement() { return placement_; }

protected:
    // The clipboard form carries the placement.
    void WriteDragBody(DB_Archive& archive) override { placement_.Write(archive); }
    void ReadDragBody(DB_Archive& archive) override { placement_.Read(archive); }

    AS_Placement placement_;
};
