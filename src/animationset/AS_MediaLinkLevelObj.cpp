#include "animationset/AS_MediaLinkLevelObj.h"

#include "animationset/AS_MediaManager.h"
#include "animationset/AS_ParamGroupLevel.h"
#include "core/DB_Archive.h"
#include "core/UT_Format.h"

#include <algorithm>

std::unique_ptr<AS_MediaLinkLevelObj> AS_MediaLinkLevelObj::Create(uint32_t id, const UT_WString& name) {
    return std::make_unique<AS_MediaLinkLevelObj>(id, std::make_shared<AS_CommonParamGroupLevel>(name, id));
}

bool AS_MediaLinkLevelObj::AreValid(const std::vector<AS_MediaCell>& cells) {
    uint32_t previousEnd = 0;
    for (const AS_MediaCell& cell : cells) {
        if (!cell.media || cell.end < cell.start || cell.start < previousEnd)
            return false;
        previousEnd = cell.end;
    }
    return true;
}

bool AS_MediaLinkLevelObj::SetCells(std::vector<AS_MediaCell> cells) {
    if (!AreValid(cells))
        return false;
    cells_ = std::move(cells);
    return true;
}

void AS_MediaLinkLevelObj::WriteOwn(DB_Archive& archive) {
    archive.WriteCount(cells_.size());
    for (const AS_MediaCell& cell : cells_) {
        archive.WriteU32(cell.start);
        archive.WriteU32(cell.end);
        archive.WriteU32(cell.offset);
        archive.WriteShared(cell.media.get());
    }
    placement_.Write(archive);
}

void AS_MediaLinkLevelObj::ReadOwn(DB_Archive& archive) {
    // Three numbers and a shared reference of at least six bytes.
    const uint32_t count = archive.ReadCount(18);
    std::vector<AS_MediaCell> cells(count);
    for (AS_MediaCell& cell : cells) {
        cell.start = archive.ReadU32();
        cell.end = archive.ReadU32();
        cell.offset = archive.ReadU32();
        cell.media = archive.ReadSharedAs<AS_MediaObj>();
    }
    if (!SetCells(std::move(cells)))
        archive.ThrowUnexpected();
    placement_.Read(archive);
}

void AS_MediaLinkLevelObj::SetMediaManager(AS_MediaManager* manager) {
    if (!manager)
        return;
    for (AS_MediaCell& cell : cells_)
        cell.media = manager->Merge(cell.media);
}

int32_t AS_MediaLinkLevelObj::GetFirstFrame() const {
    return cells_.empty() ? 0 : static_cast<int32_t>(cells_.front().start);
}

int32_t AS_MediaLinkLevelObj::GetLastFrame() const {
    if (cells_.empty())
        return 0;
    const AS_MediaCell& last = cells_.back();
    return static_cast<int32_t>(std::max(last.end, last.start + 1) - 1);
}

uint32_t AS_MediaLinkLevelObj::GetDuration() const {
    if (cells_.empty())
        return 0;
    return static_cast<uint32_t>(GetLastFrame() - GetFirstFrame() + 1);
}

int AS_MediaLinkLevelObj::CellIndexAt(int32_t frame) const {
    if (frame < 0)
        return -1;
    const auto at = static_cast<uint32_t>(frame);
    // The first run that ends after the frame.
    auto it = std::upper_bound(cells_.begin(), cells_.end(), at,
                               [](uint32_t f, const AS_MediaCell& cell) { return f < cell.end; });
    if (it == cells_.end() || it->start > at)
        return -1;
    return static_cast<int>(it - cells_.begin());
}

UT_WString AS_MediaLinkLevelObj::CellName(int32_t frame) const {
    const int index = CellIndexAt(frame);
    if (index < 0)
        return {};
    const AS_MediaCell& cell = cells_[static_cast<size_t>(index)];
    if (static_cast<uint32_t>(frame) == cell.start)
        return cell.media->GetName();
    const int64_t contentFrame = int64_t(cell.offset) + frame - int64_t(cell.start) + 1;
    return u"| " + UT_Fmt(u"%d", UT_Num(contentFrame));
}

bool AS_MediaLinkLevelObj::SetStartFrame(uint32_t frame) {
    const int64_t shift = int64_t(frame) - int64_t(placement_.startFrame);
    for (const AS_MediaCell& cell : cells_)
        if (int64_t(cell.start) + shift < 0 || int64_t(cell.end) + shift > int64_t(AS_kInvalidId))
            return false;
    for (AS_MediaCell& cell : cells_) {
        cell.start = static_cast<uint32_t>(int64_t(cell.start) + shift);
        cell.end = static_cast<uint32_t>(int64_t(cell.end) + shift);
    }
    placement_.startFrame = frame;
    return true;
}

std::unique_ptr<AS_DopeSheetLevelObj> AS_MediaLinkLevelObj::Clone(uint32_t newId, bool copyCells) const {
    auto clone = std::make_unique<AS_MediaLinkLevelObj>(newId, SharedCommon());
    CopyBaseTo(*clone);
    if (copyCells) {
        clone->placement_ = placement_;
        clone->cells_ = cells_;
    }
    return clone;
}
