#pragma once

#include "animationset/AS_DopeSheetCellIterator.h"
#include "animationset/AS_DopeSheetLevelObj.h"

#include <cstdint>
#include <optional>
#include <vector>

class CAnimationSetObj;

// A cell selection as a command keeps it: the scene, the elements and the current element by
// id, with their frames, so that it outlives the scene objects, undone deletions and moved
// rows that a cell iterator's pointers and level indices would not.
class DC_CellSelection {
public:
    struct Level {
        uint32_t element = AS_kInvalidId;
        AS_FrameRange frames;
        bool operator==(const Level&) const = default;
    };

    DC_CellSelection() = default;
    // The selection and position of `iterator`; empty when it has no scene.
    explicit DC_CellSelection(const AS_CellIterator& iterator);
    // Frames `first` to `last` of one element of a scene's Drawing order, standing at `first`.
    static DC_CellSelection OfElement(uint32_t sceneId, uint32_t elementId, int32_t first, int32_t last,
                                      bool sceneplanning = false);

    // An iterator over the scene and order in `set`, with the selected elements that still
    // have a shown row; nothing when the scene is gone.
    std::optional<AS_DopeSheetCellIterator> Resolve(const CAnimationSetObj& set) const;

    uint32_t SceneId() const { return sceneId_; }
    bool Sceneplanning() const { return sceneplanning_; }
    const std::vector<Level>& Levels() const { return levels_; }
    int32_t Frame() const { return frame_; }
    uint32_t Element() const { return element_; }
    bool IsEmpty() const { return levels_.empty(); }
    bool operator==(const DC_CellSelection&) const = default;

private:
    uint32_t sceneId_ = AS_kInvalidId;
    bool sceneplanning_ = false;
    std::vector<Level> levels_;
    int32_t frame_ = 0;
    uint32_t element_ = AS_kInvalidId;
    bool flag_ = false;
};
