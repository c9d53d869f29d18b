#include "motion/CFunctionPoint.h"

#include "core/DB_Archive.h"
#include "motion/CSplinePoint.h"

void CFunctionPoint::Read(DB_Archive& archive) {
    C2DPoint::Read(archive);
    kind = archive.ReadI16();
    index = archive.ReadI16();
}

void CFunctionPoint::Write(DB_Archive& archive) {
    C2DPoint::Write(archive);
    archive.WriteI16(0);
    archive.WriteI16(index);
}

void CFunctionPoint::Assign(const C2DPoint& other) {
    C2DPoint::Assign(other);
    if (auto* key = dynamic_cast<const CFunctionPoint*>(&other)) {
        reserved = key->reserved;
        kind = key->kind;
        index = key->index;
        flag = key->flag;
    }
}

std::unique_ptr<CFunctionPoint> CFunctionPoint::Duplicate() const {
    std::unique_ptr<CFunctionPoint> copy = MakeEmpty();
    copy->Assign(*this);
    return copy;
}

void CSplinePoint::Read(DB_Archive& archive) {
    CFunctionPoint::Read(archive);
    outHandle.Read(archive);
    inHandle.Read(archive);
}

void CSplinePoint::Write(DB_Archive& archive) {
    CFunctionPoint::Write(archive);
    outHandle.Write(archive);
    inHandle.Write(archive);
}

void CSplinePoint::Assign(const C2DPoint& other) {
    CFunctionPoint::Assign(other);
    if (auto* key = dynamic_cast<const CSplinePoint*>(&other)) {
        outHandle.Assign(key->outHandle);
        inHandle.Assign(key->inHandle);
    }
}
