#include "animationset/AS_CommonLevel.h"

#include "core/DB_Archive.h"

void AS_CommonLevel::Read(DB_Archive& archive) {
    archive.ReadWideString(name_);
    lastCloneNumber_ = archive.ReadU32();
    if (archive.Version() > 31) {
        commonId_ = archive.ReadId();
    } else {
        // The earlier format kept another number here; the level rebuilds the id.
        archive.ReadU32();
        commonId_ = AS_kInvalidId;
    }
}

void AS_CommonLevel::Write(DB_Archive& archive) {
    archive.WriteWideString(name_);
    archive.WriteU32(lastCloneNumber_);
    archive.WriteId(commonId_);
}
