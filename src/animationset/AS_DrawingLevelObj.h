#pragma once

#include "animationset/AS_BaseLevelElement.h"
#include "animationset/AS_CommonDrawingLevel.h"
#include "animationset/AS_NamedCellLevelInterface.h"

#include <vector>

// One frame of a drawing element's exposure.
struct AS_CellRecord {
    uint32_t drawingId = AS_kInvalidId; // none for a blank cell
    UT_WString note;
    bool operator==(const AS_CellRecord&) const = default;
};

// An element whose frames show drawings of its common half by id. The exposure is one
// record per frame, not a list of runs; it grows with blanks on demand, and blanks at its
// end carry no meaning.
class AS_DrawingLevelObj : public AS_BaseLevelElement, public AS_NamedCellLevelInterface {
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

    // The exposure.
    void InsertCells(int32_t frame, bool shift, int32_t count) override;
    void RemoveCells(int32_t frame, int32_t count, bool shift) override;
    void CollectDrawings(std::vector<AS_ElementDrawingNames>& out) const override;
    void SetCellsFromNames(const std::vector<UT_WString>& names, size_t index, int32_t first,
                           int32_t count) override;
    bool HasDrawingCells() const override { return true; }
    uint32_t CreateDrawing(const UT_WString& name) override;
    uint32_t CreateNewDrawing() override;
    uint32_t FindDrawingId(const UT_WString& name) const override;
    void SetCells(uint32_t id, int32_t first, int32_t count) override;
    void SetCell(uint32_t id, int32_t frame) override { SetCells(id, frame, 1); }
    void SetRunLengths(int32_t first, int32_t count, int32_t length, int32_t& outFirst,
                       int32_t& outLast) override;
    int32_t GetRunLength(int32_t& frame) const override;
    void CollectRunLengths(int32_t& frame, int32_t last, std::vector<int32_t>& out) const override;
    // The drawing shown at `frame`; AS_kInvalidId on a blank frame or outside the exposure.
    uint32_t DrawingIdAt(int32_t frame) const;
    // The records of `count` frames from `first`; frames outside the exposure read blank.
    std::vector<AS_CellRecord> CellRecords(int32_t first, int32_t count) const;
    // Writes records from `first` on, growing the exposure with blanks as needed.
    void PutCellRecords(int32_t first, const std::vector<AS_CellRecord>& records);

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
