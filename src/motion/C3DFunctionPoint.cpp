#include "motion/C3DFunctionPoint.h"

#include "core/DB_Archive.h"
#include "motion/CCatmullPoint.h"

void C3DFunctionPoint::Read(DB_Archive& archive) {
    C3DPoint::Read(archive);
    index = archive.ReadI16();
    frame = archive.ReadF64();
    lockedInSpace = archive.ReadU8();
    lockedInTime = archive.ReadU8();
}

void C3DFunctionPoint::Write(DB_Archive& archive) {
    C3DPoint::Write(archive);
    archive.WriteI16(index);
    archive.WriteF64(frame);
    archive.WriteU8(lockedInSpace);
    archive.WriteU8(lockedInTime);
}

CCatmullDefaults& MotionCatmullDefaults() {
    static CCatmullDefaults defaults;
    return defaults;
}

CCatmullPoint::CCatmullPoint() {
    TakeDefaults();
}

CCatmullPoint::CCatmullPoint(const C3DPoint& position, double keyFrame)
    : C3DFunctionPoint(position, keyFrame) {
    TakeDefaults();
}

void CCatmullPoint::TakeDefaults() {
    const CCatmullDefaults& defaults = MotionCatmullDefaults();
    tension = defaults.tension;
    continuity = defaults.continuity;
    bias = defaults.bias;
}

void CCatmullPoint::Read(DB_Archive& archive) {
    C3DFunctionPoint::Read(archive);
    tension = archive.ReadF32();
    continuity = archive.ReadF32();
    bias = archive.ReadF32();
}

void CCatmullPoint::Write(DB_Archive& archive) {
    C3DFunctionPoint::Write(archive);
    archive.WriteF32(tension);
    archive.WriteF32(continuity);
    archive.WriteF32(bias);
}
