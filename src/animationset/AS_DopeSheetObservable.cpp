#include "animationset/AS_DopeSheetObservable.h"

AS_DopeSheetObservable::~AS_DopeSheetObservable() {
    // Observers that are still attached learn that this observable goes; each may detach
    // itself while being told.
    while (ObserverCount() > 0) {
        AS_DopeSheetObserverInterface* observer = Observers().front();
        Detach(observer);
        observer->DopeSheetObservableGone(this);
    }
}

void AS_DopeSheetObservable::NotifyChange(const void* sender, AS_DopeSheetCategory category, uint32_t code,
                                          CDopeSheetObj* scene) {
    Notify(sender, AS_DopeSheetUpdateData(category, code, scene));
}

void AS_DopeSheetObservable::NotifyScene(const void* sender, uint32_t code, CDopeSheetObj* scene) {
    NotifyChange(sender, AS_DopeSheetCategory::kScene, code, scene);
}

void AS_DopeSheetObservable::NotifyElements(const void* sender, uint32_t code, CDopeSheetObj* scene,
                                            std::vector<uint32_t> elements) {
    AS_DopeSheetUpdateData data(AS_DopeSheetCategory::kElement, code, scene);
    data.elements = std::move(elements);
    Notify(sender, data);
}
