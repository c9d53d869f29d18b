#include "animationset/AS_CellIteratorObservable.h"

#include "animationset/AS_CompositionOrder.h"
#include "animationset/AS_DopeSheetNotifProxy.h"

#include <algorithm>

AS_CellIteratorObservable& AS_CellIteratorObservable::Instance() {
    static AS_CellIteratorObservable instance;
    return instance;
}

AS_CellIteratorObservable::AS_CellIteratorObservable() {
    AS_DopeSheetNotifProxy::AddPermanentObserver(this);
}

AS_CellIteratorObservable::~AS_CellIteratorObservable() {
    AS_DopeSheetNotifProxy::RemovePermanentObserver(this);
}

void AS_CellIteratorObservable::ResetForTests() {
    AS_CellIteratorObservable& instance = Instance();
    static_cast<AS_CellIterator&>(instance) = AS_CellIterator();
    while (instance.ObserverCount() > 0)
        instance.Detach(instance.Observers().front());
    AS_DopeSheetNotifProxy::RemovePermanentObserver(&instance);
    std::vector<AS_DopeSheetObserverInterface*> others = AS_DopeSheetNotifProxy::PermanentObservers();
    for (AS_DopeSheetObserverInterface* other : others)
        AS_DopeSheetNotifProxy::RemovePermanentObserver(other);
    AS_DopeSheetNotifProxy::AddPermanentObserver(&instance);
    for (AS_DopeSheetObserverInterface* other : others)
        AS_DopeSheetNotifProxy::AddPermanentObserver(other);
}

void AS_CellIteratorObservable::PointAt(CDopeSheetObj* scene, AS_CompositionOrder* order) {
    if (scene == Scene() && order == Order())
        return;
    SetScene(scene, order);
}

void AS_CellIteratorObservable::NotifyMove(const void* sender, uint32_t code) {
    AS_CellIteratorObserverData data;
    data.code = code;
    Notify(sender, data);
}

void AS_CellIteratorObservable::KeepWithinLevels() {
    const int32_t count = LevelCount();
    const bool selectionFits = IsSelectionEmpty() || SelectedLevels().back() < count;
    if (LevelIndex() < count && selectionFits)
        return;
    if (count == 0) {
        ClearSelection();
        SetCell({Frame(), -1});
        return;
    }
    // The selection's first cell, on a level that still exists, alone.
    AS_CellPosition cell = Cell();
    if (!IsSelectionEmpty())
        cell = {SelectedFrames().front().first, SelectedLevels().front()};
    cell.level = std::clamp(cell.level, 0, count - 1);
    SetCell(cell);
    SelectCurrentCell();
}

void AS_CellIteratorObservable::DopeSheetChanged(const void*, const AS_DopeSheetUpdateData& data) {
    if (!Order())
        return;
    switch (data.category) {
    case AS_DopeSheetCategory::kElement:
    // Rows that are hidden or moved change the level count as elements do.
    case AS_DopeSheetCategory::kCompositionOrder:
        KeepWithinLevels();
        break;
    case AS_DopeSheetCategory::kExposure:
        if (Flag() && (!data.scene || data.scene == Scene())) {
            const AS_CellPosition cell = Cell();
            SelectAll(true);
            SetCell(cell);
        }
        break;
    default:
        break;
    }
}
