#include "animationset/AS_DopeSheetUpdateData.h"

bool AS_CodeBelongsTo(AS_DopeSheetCategory category, uint32_t code) {
    switch (category) {
    case AS_DopeSheetCategory::kScene:
        return code <= kSceneVisibilityChanged;
    case AS_DopeSheetCategory::kElement:
        return code >= kElementChanged && code <= kElementsAboutToBeRemoved;
    case AS_DopeSheetCategory::kCell:
        return code >= kCellFirst && code <= kCellLast;
    case AS_DopeSheetCategory::kExposure:
        return code >= kCellsChanged && code <= kCellNoteChanged;
    case AS_DopeSheetCategory::kCompositionOrder:
        return code == kCompositionOrderChanged;
    case AS_DopeSheetCategory::kPlacement:
        return code >= kPlacementValuesChanged && code <= kPlacementLast;
    case AS_DopeSheetCategory::kAnimationProperties:
    case AS_DopeSheetCategory::kProjectState:
        return code == kNoDetail;
    case AS_DopeSheetCategory::kReserved:
        return true;
    }
    return false;
}

bool AS_CategoryTouchesOrders(AS_DopeSheetCategory category) {
    switch (category) {
    case AS_DopeSheetCategory::kElement:
    case AS_DopeSheetCategory::kCell:
    case AS_DopeSheetCategory::kExposure:
    case AS_DopeSheetCategory::kCompositionOrder:
    case AS_DopeSheetCategory::kPlacement:
    case AS_DopeSheetCategory::kReserved:
        return true;
    case AS_DopeSheetCategory::kScene:
    case AS_DopeSheetCategory::kAnimationProperties:
    case AS_DopeSheetCategory::kProjectState:
        return false;
    }
    return false;
}
