#pragma once

#include "animationset/AS_DopeSheetLevelObj.h"

#include <cstdint>
#include <memory>
#include <vector>

class AS_CellIterator;
class CDopeSheetObj;

// What part of the set a change touched. Observers switch on it first, then on the code.
enum class AS_DopeSheetCategory : uint32_t {
    kScene = 0,
    kElement = 1,
    kCell = 2,
    kExposure = 3,
    kCompositionOrder = 4,
    kPlacement = 5,
    kAnimationProperties = 6,
    kProjectState = 7,
    // Not sent by any change yet; treated like the element to placement categories.
    kReserved = 8,
};

// What happened, within the category. The codes form one numbering over all categories.
enum AS_DopeSheetCode : uint32_t {
    // Scene.
    kSceneAdded = 0,
    kSceneAboutToBeDeleted = 1,
    kSceneDeleted = 2,
    // The name or background colour of a scene changed.
    kScenePropertiesChanged = 3,
    kSceneReordered = 4,
    kSceneActivated = 5,
    kSceneVisibilityChanged = 6,
    // Element.
    kElementChanged = 7,
    kElementRemoved = 8,
    kElementRenamed = 9,
    kElementNoteChanged = 10,
    kElementLipSyncChanged = 11,
    // 12 and 13 carry the element ids, and the cells where there are any.
    kElementsAdded = 12,
    kElementsCreated = 13,
    // Sent before the removal, with the ids.
    kElementsAboutToBeRemoved = 14,
    // Cell, with the cell reference: 15 to 21.
    kCellFirst = 15,
    kDrawingLockChanged = 20,
    kCellLast = 21,
    // Exposure.
    kCellsChanged = 22,
    kCellsRemoved = 23,
    kCellNoteChanged = 24,
    // Composition order.
    kCompositionOrderChanged = 25,
    // Placement and motion: 26 to 33.
    kPlacementValuesChanged = 26,
    kProportionalScaling = 28,
    kPlacementLast = 33,
    // Animation properties and project state carry no detail.
    kNoDetail = 37,
};

// True when the code belongs to the category; the reserved category takes any code.
bool AS_CodeBelongsTo(AS_DopeSheetCategory category, uint32_t code);
// True for the categories after which both composition orders of the scene must be
// rebuilt: element, cell, exposure, composition order, placement and the reserved one.
bool AS_CategoryTouchesOrders(AS_DopeSheetCategory category);

// A cell as scene, element and frame index; each part is AS_kInvalidId when unset.
struct AS_CellRef {
    uint32_t scene = AS_kInvalidId;
    uint32_t element = AS_kInvalidId;
    uint32_t index = AS_kInvalidId;
    bool IsSet() const { return scene != AS_kInvalidId; }
    bool operator==(const AS_CellRef&) const = default;
};

// The record of one model change, sent to every observer of the set.
struct AS_DopeSheetUpdateData {
    // The scene the change happened in, or null for the current scene.
    CDopeSheetObj* scene = nullptr;
    // The element of element, cell and placement changes.
    AS_DopeSheetLevelObj* element = nullptr;
    // The second object of the change where there is one (a drawing), or its id.
    const void* object = nullptr;
    uint32_t objectId = AS_kInvalidId;
    // A frame or a count, by code.
    uint32_t value = 0;
    AS_CellRef cell;
    // Elements concerned, by id.
    std::vector<uint32_t> elements;
    // Cells concerned.
    std::vector<AS_CellRef> cells;
    // The position that goes with the change, when there is one.
    std::shared_ptr<const AS_CellIterator> iterator;
    uint32_t code = kNoDetail;
    AS_DopeSheetCategory category = AS_DopeSheetCategory::kProjectState;

    AS_DopeSheetUpdateData() = default;
    AS_DopeSheetUpdateData(AS_DopeSheetCategory category, uint32_t code, CDopeSheetObj* scene = nullptr)
        : scene(scene), code(code), category(category) {}
};
