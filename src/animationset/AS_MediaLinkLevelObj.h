#pragma once

#include "animationset/AS_BaseLevelElement.h"
#include "animationset/AS_MediaObj.h"

#include <memory>
#include <vector>

class AS_MediaManager;

// One run of a media element: frames [start, end) of the scene show the content of a
// template from its frame `offset` on.
struct AS_MediaCell {
    uint32_t start = 0;
    // One past the last frame.
    uint32_t end = AS_kInvalidId;
    uint32_t offset = 0;
    std::shared_ptr<AS_MediaObj> media;
    bool operator==(const AS_MediaCell&) const = default;
};

// A media element: a placement and runs of frames that show templates of the library.
// Its shared half holds the common fields alone; the file format gives that half no type
// of its own, so it travels as the parameter group's shared half, which has exactly
// these fields.
class AS_MediaLinkLevelObj : public AS_BaseLevelElement {
public:
    AS_MediaLinkLevelObj() : AS_BaseLevelElement(kLevelMedia, AS_kInvalidId, nullptr) {}
    AS_MediaLinkLevelObj(uint32_t id, std::shared_ptr<AS_CommonLevel> common)
        : AS_BaseLevelElement(kLevelMedia, id, std::move(common)) {}
    static std::unique_ptr<AS_MediaLinkLevelObj> Create(uint32_t id, const UT_WString& name);

    // From the first frame of the first run to the last frame of the last; 0 without runs.
    uint32_t GetDuration() const override;
    int32_t GetFirstFrame() const override;
    int32_t GetLastFrame() const override;
    std::unique_ptr<AS_DopeSheetLevelObj> Clone(uint32_t newId, bool copyCells) const override;

    // Sorted by start, without overlap.
    const std::vector<AS_MediaCell>& Cells() const { return cells_; }
    // Replaces the runs; false, with nothing changed, unless they are sorted, none ends
    // before it starts, none overlaps the next and each shows a template.
    bool SetCells(std::vector<AS_MediaCell> cells);
    // The run that shows the frame, or -1.
    int CellIndexAt(int32_t frame) const;
    // What the cell at the frame shows: the template's name on the first frame of a run,
    // "| " and the frame of the content counted from 1 on the others; empty without a run.
    UT_WString CellName(int32_t frame) const;
    // Sets the start frame and moves every run by the difference. False, with nothing
    // changed, when a run would start before frame 0.
    bool SetStartFrame(uint32_t frame);
    // The runs take the manager's entries of their templates, and the manager learns of
    // templates it did not know.
    void SetMediaManager(AS_MediaManager* manager);

protected:
    // Any common half: its common fields are all that a media element uses.
    bool AcceptsCommon(const AS_CommonLevel&) const override { return true; }
    void WriteOwn(DB_Archive& archive) override;
    void ReadOwn(DB_Archive& archive) override;

private:
    static bool AreValid(const std::vector<AS_MediaCell>& cells);

    std::vector<AS_MediaCell> cells_;
};
