#pragma once

#include "core/UT_String.h"

#include <cstdint>
#include <vector>

class AS_CompositionOrder;
class AS_DopeSheetDrawingObj;
class AS_DopeSheetLevelObj;
class AS_DrawingLevelObj;
class AS_MediaLinkLevelObj;
class AS_SoundLevel;
class CDopeSheetObj;

// A cell of the grid: a frame and a level index (a shown row of a composition order).
struct AS_CellPosition {
    int32_t frame = 0;
    int32_t level = 0;
    bool operator==(const AS_CellPosition&) const = default;
};

// The frames selected in one level: `count` frames from `first`.
struct AS_FrameRange {
    int32_t first = 0;
    int32_t count = 0;
    int32_t Last() const { return first + count - 1; }
    bool Contains(int32_t frame) const { return frame >= first && frame <= Last(); }
    bool operator==(const AS_FrameRange&) const = default;
};

// A drawing as the commands name it: the scene, the element's common half and the drawing.
struct AS_DrawingKey {
    uint32_t scene = 0xFFFFFFFFu;
    uint32_t common = 0xFFFFFFFFu;
    uint32_t drawing = 0xFFFFFFFFu;
    bool operator==(const AS_DrawingKey&) const = default;
};

// A position and a selection in the grid of frames and levels of one scene, over one of
// its composition orders. The selection is one frame range per selected level, levels
// ascending; the position is a cell, which may lie outside the selection. Moves give true
// when the position changed. Without a scene or order every query gives the empty answer.
class AS_CellIterator {
public:
    AS_CellIterator() = default;
    virtual ~AS_CellIterator() = default;
    AS_CellIterator(const AS_CellIterator&) = default;
    AS_CellIterator& operator=(const AS_CellIterator&) = default;

    // Set up.
    // Takes the scene and order, selects the rectangle from `from` to `to` and stands at `current`.
    void Set(CDopeSheetObj* scene, AS_CompositionOrder* order, AS_CellPosition from, AS_CellPosition to,
             AS_CellPosition current);
    // The scene with the first cell selected and current; level -1 and nothing selected when
    // the order has no level.
    void SetScene(CDopeSheetObj* scene, AS_CompositionOrder* order);
    // Every level index between the two cells' (those the order has), each with the frames
    // between the two cells' frames.
    void SetSelection(AS_CellPosition from, AS_CellPosition to);
    void ClearSelection();
    // Adds a level with its frames to the selection, keeping the levels ascending; a level
    // already selected takes the new frames.
    void SelectLevel(int32_t level, AS_FrameRange frames);
    void SelectCurrentCell();
    // Every level of the order from frame 0 to the scene's last frame; the position goes to
    // the first cell of the selection, or its last.
    void SelectAll(bool atStart);
    void SetCell(AS_CellPosition cell);
    void SetFrame(int32_t frame);

    // Move.
    bool GoToSelectionStart();
    bool GoToSelectionEnd();
    // One frame on, or back, within the current level's selected frames.
    bool NextFrameInRange();
    bool PrevFrameInRange();
    bool NextFrame();
    bool GoToRangeStart();
    bool GoToRangeEnd();
    // To the next, or previous, selected level, keeping the frame; false past the end.
    bool NextSelectedLevel();
    bool PrevSelectedLevel();
    bool NextSelectedLevelAtStart();
    bool PrevSelectedLevelAtStart();
    bool FirstSelectedLevel();
    bool LastSelectedLevel();
    // By one level of the order, selected or not.
    bool NextLevel();
    bool PrevLevel();
    bool SetLevelZero();
    // To the next frame, within the selection, that shows another drawing than the current
    // one; false on a level without drawings or when there is none.
    bool NextDrawing();
    // Back to the start of the previous run of another drawing.
    bool PrevDrawing();

    // Query.
    AS_DopeSheetLevelObj* GetLevel() const;
    uint32_t GetLevelId() const;
    uint32_t GetCommonId() const;
    AS_DrawingLevelObj* GetDrawingLevel() const;
    AS_SoundLevel* GetSoundLevel() const;
    AS_MediaLinkLevelObj* GetMediaLevel() const;
    bool IsSingleCell() const;
    bool IsSelectionEmpty() const { return levels_.empty(); }
    bool IsInSelection() const;
    bool IsAtLastFrame() const;
    // The highest end frame of the order's levels; 0 when there is none.
    int32_t GetSceneLastFrame() const;
    uint32_t GetTotalDuration() const;
    // Bounds of the selected frames; -1 when nothing is selected.
    int32_t GetFirstSelectedFrame() const;
    int32_t GetLastSelectedFrame() const;
    // True when a selected level shows a drawing within its selected frames.
    bool SelectionHasCells() const;
    AS_DopeSheetDrawingObj* GetDrawing() const;
    // False on a blank cell or a level without drawings.
    bool GetDrawingKey(AS_DrawingKey& key) const;
    // The element's name and the drawing's ("Arm-12"), the element's alone on a blank cell,
    // "NoLevel" off any drawing level.
    UT_WString GetCellLabel() const;
    // The number of levels of the order; 0 without one.
    int32_t LevelCount() const;

    // Change: a new drawing in the current cell of a drawing level, or null.
    AS_DopeSheetDrawingObj* CreateDrawingAtCell();

    CDopeSheetObj* Scene() const { return scene_; }
    AS_CompositionOrder* Order() const { return order_; }
    int32_t Frame() const { return frame_; }
    int32_t LevelIndex() const { return level_; }
    AS_CellPosition Cell() const { return {frame_, level_}; }
    const std::vector<int32_t>& SelectedLevels() const { return levels_; }
    const std::vector<AS_FrameRange>& SelectedFrames() const { return frames_; }
    // Index of the current level among the selected ones; -1 when it is not selected.
    int32_t SelectionPosition() const { return position_; }
    // Set by SelectAll and cleared by any other change of the selection: the selection is
    // the whole scene, and follows its length as the exposure changes.
    bool Flag() const { return flag_; }

protected:
    // Moves the position; true when it changed.
    bool MoveTo(int32_t frame, int32_t level);

private:
    void UpdatePosition();
    // The current level's selected frames, or null when it is not selected.
    const AS_FrameRange* CurrentRange() const;
    bool GoToSelected(int32_t index);

    AS_CompositionOrder* order_ = nullptr;
    CDopeSheetObj* scene_ = nullptr;
    std::vector<int32_t> levels_;
    std::vector<AS_FrameRange> frames_;
    int32_t position_ = -1;
    int32_t frame_ = 0;
    int32_t level_ = 0;
    bool flag_ = false;
};
