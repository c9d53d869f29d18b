#include "animationset/AS_MediaLinkLevelObj.h"

#include "core/DB_Archive.h"

void AS_MediaLinkLevelObj::WriteOwn(DB_Archive& archive) {
    archive.WriteCount(0);
    placement_.Write(archive);
}

void AS_MediaLinkLevelObj::ReadOwn(DB_Archive& archive) {
    if (archive.ReadU32() != 0)
        archive.ThrowUnexpected();
    placement_.Read(archive);
}

std::unique_ptr<AS_DopeSheetLevelObj> AS_MediaLinkLevelObj::Clone(uint32_t newId, bool copyCells) const {
    auto clone = std::make_unique<AS_MediaLinkLevelObj>(newId, SharedCommon());
    CopyBaseTo(*clone);
    if (copyCells)
        clone->placement_ = placement_;
    return clone;
}
