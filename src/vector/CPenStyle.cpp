#include "vector/CPenStyle.h"

#include "core/DB_Archive.h"

void CPenStyle::Read(DB_Archive& archive) {
    minimumSize = archive.ReadU32();
    maximumSize = archive.ReadU32();
    reserved = archive.ReadU32();
    colour = archive.ReadUniqueId();
    name = archive.ReadWideString();
    smoothness = kDefaultSmoothness;
}

void CPenStyle::Write(DB_Archive& archive) {
    archive.WriteU32(minimumSize);
    archive.WriteU32(maximumSize);
    archive.WriteU32(reserved);
    archive.WriteUniqueId(colour);
    archive.WriteWideString(name);
}
