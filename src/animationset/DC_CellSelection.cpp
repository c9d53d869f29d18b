#include "animationset/DC_CellSelection.h"

#include "animationset/AS_CompositionOrder.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"

DC_CellSelection::DC_CellSelection(const AS_CellIterator& iterator) {
    const CDopeSheetObj* scene = iterator.Scene();
    const AS_CompositionOrder* order = iterator.Order();
    if (!scene || !order)
        return;
    sceneId_ = scene->SceneId();
    sceneplanning_ = order == &scene->SceneplanningOrder();
    for (size_t i = 0; i < iterator.SelectedLevels().size(); ++i) {
        const AS_DopeSheetLevelObj* level = order->GetLevel(iterator.SelectedLevels()[i]);
        if (level)
            levels_.push_back({level->GetId(), iterator.SelectedFrames()[i]});
    }
    frame_ = iterator.Frame();
    element_ = iterator.GetLevelId();
    flag_ = iterator.Flag();
}

DC_CellSelection DC_CellSelection::OfElement(uint32_t sceneId, uint32_t elementId, int32_t first,
                                             int32_t last, bool sceneplanning) {
    DC_CellSelection selection;
    selection.sceneId_ = sceneId;
    selection.sceneplanning_ = sceneplanning;
    selection.levels_.push_back({elementId, {first, last - first + 1}});
    selection.frame_ = first;
    selection.element_ = elementId;
    return selection;
}

std::optional<AS_DopeSheetCellIterator> DC_CellSelection::Resolve(const CAnimationSetObj& set) const {
    CDopeSheetObj* scene = set.FindScene(sceneId_);
    if (!scene)
        return std::nullopt;
    AS_CompositionOrder* order = sceneplanning_
                                     ? static_cast<AS_CompositionOrder*>(&scene->SceneplanningOrder())
                                     : &scene->DrawingOrder();
    AS_DopeSheetCellIterator iterator;
    iterator.SetScene(scene, order);
    iterator.ClearSelection();
    if (flag_) {
        // The whole scene, as long as it is now.
        iterator.SelectAll(true);
    } else {
        for (const Level& level : levels_) {
            const int index = order->FindShownIndex(level.element);
            if (index >= 0)
                iterator.SelectLevel(index, level.frames);
        }
    }
    int32_t current = order->FindShownIndex(element_);
    if (current < 0)
        current = iterator.IsSelectionEmpty() ? iterator.LevelIndex() : iterator.SelectedLevels().front();
    iterator.SetCell({frame_, current});
    return iterator;
}
