#include "animationset/AS_MediaObj.h"

#include "core/DB_Archive.h"

#include <algorithm>

void AS_MediaObj::Read(DB_Archive& archive) {
    const int32_t version = archive.Version();
    if (version <= 31) {
        global_ = archive.ReadBool();
        archive.ReadWideString(name_);
        std::replace(name_.begin(), name_.end(), u'\\', u'/');
        archive.ReadNew();
        return;
    }
    if (version == 40)
        global_ = archive.ReadBool();
    templateId_ = archive.ReadUniqueId();
    archive.ReadWideString(name_);
    if (archive.IsEmbedded())
        id_ = archive.ReadId();
}

void AS_MediaObj::Write(DB_Archive& archive) {
    archive.WriteUniqueId(templateId_);
    archive.WriteWideString(name_);
    if (archive.IsEmbedded())
        archive.WriteId(id_);
}
