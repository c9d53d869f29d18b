#include "animationset/AS_DrawingLevelObj.h"

#include "core/DB_Archive.h"

#include <algorithm>

void AS_DrawingLevelObj::WriteOwn(DB_Archive& archive) {
    placement_.Write(archive);
    archive.WriteCount(cells_.size());
    for (const AS_CellRecord& cell : cells_) {
        archive.WriteId(cell.drawingId);
        archive.WriteWideString(cell.note);
    }
}

void AS_DrawingLevelObj::ReadOwn(DB_Archive& archive) {
    context_ = archive.Context();
    const bool early = archive.Version() <= 31;
    if (!early)
        placement_.Read(archive);
    // A cell takes at least its id and the count of its note.
    const uint32_t count = archive.ReadCount(8);
    cells_.assign(count, AS_CellRecord{});
    for (AS_CellRecord& cell : cells_) {
        cell.drawingId = archive.ReadId();
        archive.ReadWideString(cell.note);
    }
    if (early) {
        archive.ReadU32();
        placement_.Read(archive);
    }
}

void AS_DrawingLevelObj::CopyLevelTo(AS_DrawingLevelObj& target, bool copyCells) const {
    CopyBaseTo(target);
    if (copyCells) {
        target.placement_ = placement_;
        target.cells_ = cells_;
    }
}

void AS_DrawingLevelObj::ClearModified() {
    if (CommonDrawing())
        CommonDrawing()->ClearModified();
}

int32_t AS_DrawingLevelObj::GetFirstFrame() const {
    for (size_t i = 0; i < cells_.size(); ++i)
        if (cells_[i].drawingId != AS_kInvalidId)
            return static_cast<int32_t>(i);
    return 0;
}

int32_t AS_DrawingLevelObj::GetLastFrame() const {
    for (size_t i = cells_.size(); i-- > 0;)
        if (cells_[i].drawingId != AS_kInvalidId)
            return static_cast<int32_t>(i);
    return 0;
}

uint32_t AS_DrawingLevelObj::GetDuration() const {
    const int32_t first = GetFirstFrame();
    if (cells_.empty() || cells_[static_cast<size_t>(first)].drawingId == AS_kInvalidId)
        return 0;
    return static_cast<uint32_t>(GetLastFrame() - first + 1);
}

bool AS_DrawingLevelObj::IsRangeEmpty(int32_t first, int32_t last) const {
    for (int32_t frame = std::max(first, 0); frame <= last && frame < static_cast<int32_t>(cells_.size());
         ++frame)
        if (cells_[static_cast<size_t>(frame)].drawingId != AS_kInvalidId)
            return false;
    return true;
}

void AS_DrawingLevelObj::SetFolder(const UT_FilePath& folder) {
    AS_BaseLevelElement::SetFolder(folder);
    if (CommonDrawing())
        CommonDrawing()->SetFolder(folder);
}

UT_WString AS_DrawingLevelObj::GetFileExtension() const {
    return CommonDrawing() ? CommonDrawing()->GetFileExtension() : UT_WString();
}

UT_WString AS_DrawingLevelObj::GetFolderName() const {
    return CommonDrawing() ? CommonDrawing()->GetFolderName() : UT_WString();
}

void AS_DrawingLevelObj::OnRemovedForGood() {
    if (CommonDrawing() && IsLastHolder())
        CommonDrawing()->ReleaseDrawings();
}

bool AS_DrawingLevelObj::SetDrawingLocked(uint32_t drawingId, bool locked) {
    AS_DopeSheetDrawingObj* drawing = CommonDrawing() ? CommonDrawing()->FindDrawing(drawingId) : nullptr;
    if (drawing)
        drawing->SetLocked(locked);
    return drawing != nullptr;
}

void AS_DrawingLevelObj::RemoveFiles() {
    if (CommonDrawing())
        CommonDrawing()->RemoveDrawingFiles();
}

std::unique_ptr<AS_VectorGraphicLevelObj> AS_VectorGraphicLevelObj::Create(uint32_t id,
                                                                           const UT_WString& name) {
    return std::make_unique<AS_VectorGraphicLevelObj>(
        id, std::make_shared<AS_CommonVectorDrawingLevel>(name, id));
}

std::unique_ptr<AS_DopeSheetLevelObj> AS_VectorGraphicLevelObj::Clone(uint32_t newId, bool copyCells) const {
    auto clone = std::make_unique<AS_VectorGraphicLevelObj>(
        newId, std::static_pointer_cast<AS_CommonVectorDrawingLevel>(SharedCommon()));
    CopyLevelTo(*clone, copyCells);
    return clone;
}

bool AS_VectorGraphicLevelObj::AcceptsCommon(const AS_CommonLevel& common) const {
    return dynamic_cast<const AS_CommonVectorDrawingLevel*>(&common) != nullptr;
}

std::unique_ptr<AS_BitmapLevelObj> AS_BitmapLevelObj::Create(uint32_t id, const UT_WString& name) {
    return std::make_unique<AS_BitmapLevelObj>(id, std::make_shared<AS_CommonBitmapDrawingLevel>(name, id));
}

std::unique_ptr<AS_DopeSheetLevelObj> AS_BitmapLevelObj::Clone(uint32_t newId, bool copyCells) const {
    auto clone = std::make_unique<AS_BitmapLevelObj>(
        newId, std::static_pointer_cast<AS_CommonBitmapDrawingLevel>(SharedCommon()));
    CopyLevelTo(*clone, copyCells);
    return clone;
}

bool AS_BitmapLevelObj::AcceptsCommon(const AS_CommonLevel& common) const {
    return dynamic_cast<const AS_CommonBitmapDrawingLevel*>(&common) != nullptr;
}
