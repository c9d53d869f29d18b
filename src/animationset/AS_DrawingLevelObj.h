#pragma once

#include "animationset/AS_BaseLevelElement.h"
#include "animationset/AS_CommonDrawingLevel.h"

#include <vector>

// One frame of a drawing element's exposure.
struct AS_CellRecord {
    uint32_t drawingId = AS_kInvalidId; // none for a blank cell
    UT_WString note;
    bool operator==(const AS_CellRecord&) const = default;
};

// An element whose frames show drawings of its common half by id.
class AS_DrawingLevelObj : public AS_BaseLevelElement {
public:
    using AS_BaseLevelElement::AS_BaseLevelElement;

    void ClearModified() override;
    uint32_t GetDuration() const override;
    bool IsRangeEmpty(int32_t first, int32_t last) const override;
    int32_t GetFirstFrame() const override;
    int32_t GetLastFrame() const override;
    int32_t GetEndFrame() const override { return GetLastFrame(); }
    void SetFolder(const UT_FilePath& folder) override;
    UT_WString GetFileExtension() const override;
    UT_WString GetFolderName() const override;
    void OnRemovedForGood() override;
    void RemoveFiles() override;
    // Locks or unlocks one drawing of the common half; false when there is no such drawing.
    bool SetDrawingLocked(uint32_t drawingId, bool locked);

    AS_CommonDrawingLevel* CommonDrawing() const { return static_cast<AS_CommonDrawingLevel*>(Common()); }
    std::vector<AS_CellRecord>& Cells() { return cells_; }
    const std::vector<AS_CellRecord>& Cells() const { return cells_; }
    void* ReadContext() const { return context_; }

protected:
    void WriteOwn(DB_Archive& archive) override;
    void ReadOwn(DB_Archive& archive) override;
    void CopyLevelTo(AS_DrawingLevelObj& target, bool copyCells) const;

private:
    std::vector<AS_CellRecord> cells_;
    void* context_ = nullptr;
};

// A Drawing element: vector drawings.
class AS_VectorGraphicLevelObj : public AS_DrawingLevelObj {
public:
    AS_VectorGraphicLevelObj() : AS_DrawingLevelObj(kLevelVectorDrawing, AS_kInvalidId, nullptr) {}
    AS_VectorGraphicLevelObj(uint32_t id, std::shared_ptr<AS_CommonVectorDrawingLevel> common)
        : AS_DrawingLevelObj(kLevelVectorDrawing, id, std::move(common)) {}
    // A new element with a new common half whose id is the element's.
    static std::unique_ptr<AS_VectorGraphicLevelObj> Create(uint32_t id, const UT_WString& name);
    std::unique_ptr<AS_DopeSheetLevelObj> Clone(uint32_t newId, bool copyCells) const override;

protected:
    bool AcceptsCommon(const AS_CommonLevel& common) const override;
};

// An Image element: bitmaps.
class AS_BitmapLevelObj : public AS_DrawingLevelObj {
public:
    AS_BitmapLevelObj() : AS_DrawingLevelObj(kLevelImage, AS_kInvalidId, nullptr) {}
    AS_BitmapLevelObj(uint32_t id, std::shared_ptr<AS_CommonBitmapDrawingLevel> common)
        : AS_DrawingLevelObj(kLevelImage, id, std::move(common)) {}
    static std::unique_ptr<AS_BitmapLevelObj> Create(uint32_t id, const UT_WString& name);
    std::unique_ptr<AS_DopeSheetLevelObj> Clone(uint32_t newId, bool copyCells) const override;

protected:
    bool AcceptsCommon(const AS_CommonLevel& common) const override;
};
