#include "motion/C2DPoint.h"

#include "core/DB_Archive.h"

void C2DPoint::Read(DB_Archive& archive) {
    x = archive.ReadF32();
    y = archive.ReadF32();
}

void C2DPoint::Write(DB_Archive& archive) {
    archive.WriteF32(static_cast<float>(x));
    archive.WriteF32(static_cast<float>(y));
}

void C2DPoint::Assign(const C2DPoint& other) {
    x = other.x;
    y = other.y;
}

void C2DPoint::Lerp(const C2DPoint& a, const C2DPoint& b, double t) {
    x = t * b.x + (1.0 - t) * a.x;
    y = t * b.y + (1.0 - t) * a.y;
}

void CCurvePoint::Assign(const C2DPoint& other) {
    C2DPoint::Assign(other);
    if (auto* sample = dynamic_cast<const CCurvePoint*>(&other))
        mark = sample->mark;
}

void CUIControlPoint::Read(DB_Archive& archive) {
    C2DPoint::Read(archive);
    id = archive.ReadI16();
}

void CUIControlPoint::Write(DB_Archive& archive) {
    C2DPoint::Write(archive);
    archive.WriteI16(id);
}

void CUIControlPoint::Assign(const C2DPoint& other) {
    C2DPoint::Assign(other);
    if (auto* handle = dynamic_cast<const CUIControlPoint*>(&other))
        id = handle->id;
}
