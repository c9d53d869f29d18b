#include "animationset/AS_CompositionOrder.h"

#include "animationset/AS_DopeSheetLevelObj.h"
#include "animationset/CDopeSheetObj.h"
#include "core/DB_Archive.h"

#include <algorithm>
#include <climits>

namespace {

uint32_t MaskBitOfKind(uint32_t kind) {
    switch (kind) {
    case kLevelVectorDrawing:
    case kLevelImage:
        return AS_CompositionOrder::kMaskDrawing;
    case kLevelCamera:
        return AS_CompositionOrder::kMaskCamera;
    case kLevelPeg:
        return AS_CompositionOrder::kMaskPeg;
    case kLevelSound:
        return AS_CompositionOrder::kMaskSound;
    case kLevelMedia:
        return AS_CompositionOrder::kMaskMedia;
    case kLevelEffect:
        return AS_CompositionOrder::kMaskEffect;
    case kLevelParamGroup:
        return AS_CompositionOrder::kMaskParamGroup;
    default:
        return 0;
    }
}

AS_CompositionRow NewRow(uint32_t id, bool shown) {
    AS_CompositionRow row;
    row.id = id;
    row.shown = shown;
    row.depth = 1;
    row.collapsed = false;
    row.enabled = true;
    return row;
}

// Removal: with children the whole subtree goes; without, the children move up one level.
class DeleteFunc : public AS_CompositionOrder::BaseModifChilds {
public:
    explicit DeleteFunc(bool withChildren) : withChildren_(withChildren) {}
    void Apply(std::vector<AS_CompositionRow>& rows) override {
        if (withChildren_ || rows.empty()) {
            rows.clear();
            return;
        }
        rows.erase(rows.begin());
        for (AS_CompositionRow& row : rows)
            --row.depth;
    }

private:
    bool withChildren_;
};

// Reparenting: the subtree root becomes one deeper than the new parent.
class ReparentFunc : public AS_CompositionOrder::BaseModifChilds {
public:
    explicit ReparentFunc(const std::vector<AS_CompositionRow>& rows) : rows_(rows) {}
    int GetInsertPosition(int from, int to, int subtreeSize) override {
        const int parent = BaseModifChilds::GetInsertPosition(from, to, subtreeSize);
        parentDepth_ = to < 0 ? 0 : rows_[static_cast<size_t>(parent)].depth;
        return parent;
    }
    void Apply(std::vector<AS_CompositionRow>& subtree) override {
        if (subtree.empty())
            return;
        const int32_t delta = parentDepth_ + 1 - subtree.front().depth;
        for (AS_CompositionRow& row : subtree)
            row.depth += delta;
    }

private:
    const std::vector<AS_CompositionRow>& rows_;
    int32_t parentDepth_ = 0;
};

} // namespace

int AS_CompositionOrder::BaseModifChilds::GetInsertPosition(int from, int to, int subtreeSize) {
    if (to == -1)
        return 0;
    return from < to ? to - subtreeSize : to;
}

AS_CompositionOrder::ChildScannerBase::ChildScannerBase(const AS_CompositionOrder& order, int startRow)
    : order_(order), startRow_(startRow), currentRow_(startRow) {
    if (startRow == -1) {
        wantedDepth_ = 0;
    } else if (!order.InRange(startRow)) {
        startRow_ = currentRow_ = -1;
        wantedDepth_ = 9999;
    } else {
        wantedDepth_ = order.GetDepth(startRow) + 1;
    }
}

int AS_CompositionOrder::ChildScannerBase::NextRow() {
    return order_.NextChild(*this);
}

void AS_CompositionOrder::ChildScannerBase::Finish() {
    currentRow_ = -1;
    finished_ = true;
}

bool AS_CompositionOrder::NoPegRecursionChildScanner::CanDescend(int row) const {
    const AS_DopeSheetLevelObj* level = order_.GetLevelOfRow(row);
    return !level || (level->GetKind() != kLevelPeg && level->GetKind() != kLevelParamGroup);
}

int AS_CompositionOrder::NextChild(ChildScannerBase& scanner) const {
    while (!scanner.finished_) {
        int row = scanner.currentRow_ + 1;
        const int count = GetRowCount();
        if (row >= count) {
            scanner.Finish();
            break;
        }
        const int32_t depth = rows_[static_cast<size_t>(row)].depth;
        if (row > 0 && depth > scanner.wantedDepth_ && depth > rows_[static_cast<size_t>(row - 1)].depth &&
            !scanner.CanDescend(row - 1)) {
            const int32_t parentDepth = rows_[static_cast<size_t>(row - 1)].depth;
            while (row < count && rows_[static_cast<size_t>(row)].depth > parentDepth)
                ++row;
            if (row >= count) {
                scanner.Finish();
                break;
            }
        }
        if (rows_[static_cast<size_t>(row)].depth < scanner.wantedDepth_) {
            scanner.Finish();
            break;
        }
        scanner.currentRow_ = row;
        if (scanner.Accept(row))
            return row;
    }
    return -1;
}

void AS_CompositionOrder::Read(DB_Archive& archive) {
    // A row takes 11 bytes.
    const uint32_t count = archive.ReadCount(11);
    rows_.assign(count, AS_CompositionRow{});
    for (AS_CompositionRow& row : rows_) {
        row.id = archive.ReadId();
        row.shown = archive.ReadBool();
        row.depth = static_cast<int32_t>(archive.ReadU32());
        row.collapsed = archive.ReadBool();
        row.enabled = archive.ReadBool();
    }
    RebuildShown();
    rangeDirty_ = true;
}

void AS_CompositionOrder::Write(DB_Archive& archive) {
    archive.WriteCount(rows_.size());
    for (const AS_CompositionRow& row : rows_) {
        archive.WriteId(row.id);
        archive.WriteBool(row.shown);
        archive.WriteU32(static_cast<uint32_t>(row.depth));
        archive.WriteBool(row.collapsed);
        archive.WriteBool(row.enabled);
    }
}

bool AS_CompositionOrder::Accepts(const AS_DopeSheetLevelObj& level) const {
    return (MaskBitOfKind(level.GetKind()) & levelMask_) != 0;
}

void AS_CompositionOrder::AddLevel(uint32_t id, bool shown) {
    const AS_DopeSheetLevelObj* level = scene_ ? scene_->FindElement(id) : nullptr;
    if (!level || !Accepts(*level))
        return;
    InsertRows(GetRowCount(), {NewRow(id, shown)});
}

void AS_SPCompositionOrder::AddLevel(uint32_t id, bool shown) {
    const AS_DopeSheetLevelObj* level = Scene() ? Scene()->FindElement(id) : nullptr;
    if (!level || !Accepts(*level))
        return;
    InsertRows(0, {NewRow(id, shown)});
}

void AS_CompositionOrder::SetRows(std::vector<AS_CompositionRow> rows) {
    rows_ = std::move(rows);
    RebuildShown();
    rangeDirty_ = true;
}

void AS_CompositionOrder::RebuildShown() {
    shown_.clear();
    for (size_t i = 0; i < rows_.size(); ++i)
        if (rows_[i].shown)
            shown_.push_back(static_cast<int>(i));
}

void AS_CompositionOrder::InsertRows(int position, const std::vector<AS_CompositionRow>& rows) {
    position = std::clamp(position, 0, GetRowCount());
    rows_.insert(rows_.begin() + position, rows.begin(), rows.end());
    RebuildShown();
}

int AS_CompositionOrder::SubtreeEnd(int row) const {
    if (!InRange(row))
        return row;
    const int32_t depth = rows_[static_cast<size_t>(row)].depth;
    int end = row + 1;
    while (end < GetRowCount() && rows_[static_cast<size_t>(end)].depth > depth)
        ++end;
    return end;
}

std::vector<AS_CompositionRow> AS_CompositionOrder::CutSubtree(int row) {
    const int end = SubtreeEnd(row);
    std::vector<AS_CompositionRow> subtree(rows_.begin() + row, rows_.begin() + end);
    rows_.erase(rows_.begin() + row, rows_.begin() + end);
    return subtree;
}

AS_DopeSheetLevelObj* AS_CompositionOrder::GetLevel(int shownIndex) const {
    return GetLevelOfRow(RowOfShownIndex(shownIndex));
}

AS_DopeSheetLevelObj* AS_CompositionOrder::GetLevelOfRow(int row) const {
    if (!InRange(row) || !scene_)
        return nullptr;
    return scene_->FindElement(rows_[static_cast<size_t>(row)].id);
}

uint32_t AS_CompositionOrder::GetLevelId(int row) const {
    return InRange(row) ? rows_[static_cast<size_t>(row)].id : 0xFFFFFFFFu;
}

int AS_CompositionOrder::RowOfShownIndex(int shownIndex) const {
    return shownIndex >= 0 && shownIndex < GetShownCount() ? shown_[static_cast<size_t>(shownIndex)] : -1;
}

int AS_CompositionOrder::FindRow(uint32_t id) const {
    for (size_t i = 0; i < rows_.size(); ++i)
        if (rows_[i].id == id)
            return static_cast<int>(i);
    return -1;
}

int AS_CompositionOrder::FindShownIndex(uint32_t id) const {
    const int row = FindRow(id);
    auto it = std::find(shown_.begin(), shown_.end(), row);
    return row < 0 || it == shown_.end() ? -1 : static_cast<int>(it - shown_.begin());
}

int AS_CompositionOrder::GetShownIndexAtOrAfter(int row) const {
    return static_cast<int>(std::lower_bound(shown_.begin(), shown_.end(), row) - shown_.begin());
}

void AS_CompositionOrder::RemoveLevel(uint32_t id) {
    const int row = FindRow(id);
    if (row >= 0)
        RemoveRow(row, true);
}

void AS_CompositionOrder::RemoveRow(int row, bool withChildren) {
    if (!InRange(row))
        return;
    std::vector<AS_CompositionRow> subtree = CutSubtree(row);
    DeleteFunc(withChildren).Apply(subtree);
    InsertRows(row, subtree);
    rangeDirty_ = true;
}

void AS_CompositionOrder::Move(int from, int to, bool before) {
    if (!InRange(from) || to < -1 || to >= GetRowCount())
        return;
    int target = to;
    bool noneFound = false;
    if (!before) {
        const int32_t movedDepth = rows_[static_cast<size_t>(from)].depth;
        target = -1;
        for (int r = to + 1; r < GetRowCount(); ++r)
            if (rows_[static_cast<size_t>(r)].depth <= movedDepth) {
                target = r;
                break;
            }
        if (target == -1) {
            target = GetRowCount() - 1;
            noneFound = true;
        }
    }
    // A subtree cannot go inside itself.
    if (before && target > from && target < SubtreeEnd(from))
        return;
    std::vector<AS_CompositionRow> subtree = CutSubtree(from);
    const int size = static_cast<int>(subtree.size());
    int position = BaseModifChilds().GetInsertPosition(from, target, size);
    if (!before && target != -1 && noneFound)
        ++position;
    InsertRows(position, subtree);
}

void AS_CompositionOrder::MoveByShownIndex(int from, int to, bool before) {
    Move(RowOfShownIndex(from), RowOfShownIndex(to), before);
}

bool AS_SPCompositionOrder::Reparent(int row, int newParent) {
    if (!InRange(row) || newParent < -1 || newParent >= GetRowCount())
        return false;
    // A subtree cannot hang below itself.
    if (newParent >= row && newParent < SubtreeEnd(row))
        return false;
    std::vector<AS_CompositionRow> subtree = CutSubtree(row);
    ReparentFunc func(rows_);
    const int parent = func.GetInsertPosition(row, newParent, static_cast<int>(subtree.size()));
    func.Apply(subtree);
    int position = GetRowCount();
    if (newParent != -1) {
        const int32_t parentDepth = rows_[static_cast<size_t>(parent)].depth;
        position = parent + 1;
        while (position < GetRowCount() && rows_[static_cast<size_t>(position)].depth > parentDepth)
            ++position;
    }
    InsertRows(position, subtree);
    return true;
}

bool AS_SPCompositionOrder::ReparentByShownIndex(int from, int to) {
    return Reparent(RowOfShownIndex(from), to < 0 ? -1 : RowOfShownIndex(to));
}

int AS_CompositionOrder::GetDepth(int row) const {
    return InRange(row) ? rows_[static_cast<size_t>(row)].depth : 0;
}

void AS_CompositionOrder::SetShownWithChildren(int row, bool shown) {
    if (!InRange(row))
        return;
    const int end = SubtreeEnd(row);
    for (int r = row; r < end; ++r)
        rows_[static_cast<size_t>(r)].shown = shown;
    RebuildShown();
    rangeDirty_ = true;
}

void AS_CompositionOrder::SetShown(int row, bool shown) {
    if (!InRange(row))
        return;
    rows_[static_cast<size_t>(row)].shown = shown;
    RebuildShown();
    rangeDirty_ = true;
}

bool AS_CompositionOrder::IsShown(int row) const {
    return InRange(row) && rows_[static_cast<size_t>(row)].shown;
}
bool AS_CompositionOrder::IsShownByShownIndex(int shownIndex) const {
    return IsShown(RowOfShownIndex(shownIndex));
}
bool AS_CompositionOrder::IsCollapsed(int row) const {
    return InRange(row) && rows_[static_cast<size_t>(row)].collapsed;
}
void AS_CompositionOrder::SetCollapsed(int row, bool value) {
    if (InRange(row))
        rows_[static_cast<size_t>(row)].collapsed = value;
}
bool AS_CompositionOrder::IsEnabled(int row) const {
    return InRange(row) && rows_[static_cast<size_t>(row)].enabled;
}
void AS_CompositionOrder::SetEnabled(int row, bool value) {
    if (InRange(row)) {
        rows_[static_cast<size_t>(row)].enabled = value;
        rangeDirty_ = true;
    }
}
bool AS_CompositionOrder::IsRender(int row) const {
    return InRange(row) && rows_[static_cast<size_t>(row)].render;
}
void AS_CompositionOrder::SetRender(int row, bool value) {
    if (InRange(row))
        rows_[static_cast<size_t>(row)].render = value;
}
bool AS_CompositionOrder::IsExpanded(int row) const {
    return InRange(row) && rows_[static_cast<size_t>(row)].expanded;
}
void AS_CompositionOrder::SetExpanded(int row, bool value) {
    if (InRange(row))
        rows_[static_cast<size_t>(row)].expanded = value;
}

int AS_CompositionOrder::GetParent(int row) const {
    if (!InRange(row) || row == 0)
        return -1;
    const int32_t depth = rows_[static_cast<size_t>(row)].depth;
    for (int r = row - 1; r >= 0; --r)
        if (rows_[static_cast<size_t>(r)].depth < depth)
            return r;
    return -1;
}

int AS_CompositionOrder::GetParentOfLevel(uint32_t id) const {
    return GetParent(FindRow(id));
}

bool AS_CompositionOrder::IsAncestor(int ancestor, int row) const {
    if (ancestor == -1)
        return true;
    if (row == -1)
        return false;
    for (int r = GetParent(row); r != -1; r = GetParent(r))
        if (r == ancestor)
            return true;
    return false;
}

void AS_CompositionOrder::GetFrameRange(int32_t& first, int32_t& last) {
    if (rangeDirty_) {
        rangeDirty_ = false;
        firstFrame_ = INT32_MAX;
        lastFrame_ = -1;
        for (int row : shown_) {
            const AS_DopeSheetLevelObj* level = GetLevelOfRow(row);
            if (!rows_[static_cast<size_t>(row)].enabled || !level || level->GetDuration() == 0 ||
                level->GetEndFrame() == -1)
                continue;
            firstFrame_ = std::min(firstFrame_, level->GetFirstFrame());
            lastFrame_ = std::max(lastFrame_, level->GetLastFrame());
        }
        if (lastFrame_ == -1)
            firstFrame_ = -1;
    }
    first = firstFrame_;
    last = lastFrame_;
}

int32_t AS_CompositionOrder::GetLastFrame() const {
    int32_t last = 0;
    for (int row : shown_) {
        const AS_DopeSheetLevelObj* level = GetLevelOfRow(row);
        if (level && rows_[static_cast<size_t>(row)].enabled)
            last = std::max(last, level->GetLastFrame());
    }
    return last;
}
