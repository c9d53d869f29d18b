#include "colour/CM_BaseColorObj.h"

#include "core/DB_Archive.h"

CM_BaseColorObj::CM_BaseColorObj(UT_WString name) : name_(std::move(name)), id_(UT_UniqueId::Generate()) {}

void CM_BaseColorObj::ReadBase(DB_Archive& archive) {
    archive.ReadWideString(name_);
    id_ = archive.ReadUniqueId();
}

void CM_BaseColorObj::WriteBase(DB_Archive& archive) const {
    archive.WriteWideString(name_);
    archive.WriteUniqueId(id_);
}
