#include "animationset/AS_DopeSheetNotifProxy.h"

#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"

#include <algorithm>
#include <cassert>

namespace {

std::vector<AS_DopeSheetObserverInterface*>& Permanent() {
    static std::vector<AS_DopeSheetObserverInterface*> observers;
    return observers;
}

bool IsPermanent(const AS_DopeSheetObserverInterface* observer) {
    const auto& observers = Permanent();
    return std::find(observers.begin(), observers.end(), observer) != observers.end();
}

} // namespace

void AS_DopeSheetNotifProxy::Notify(const void* sender, const AS_DopeSheetUpdateData& data) {
    assert(AS_CodeBelongsTo(data.category, data.code));
    if (AS_CategoryTouchesOrders(data.category)) {
        CDopeSheetObj* scene = data.scene ? data.scene : set_.CurrentScene();
        if (scene)
            scene->MarkDirty();
    }
    // A permanent observer may go away while it is told (the application closes).
    const std::vector<AS_DopeSheetObserverInterface*> permanent = Permanent();
    for (AS_DopeSheetObserverInterface* observer : permanent) {
        if (observer != sender && IsPermanent(observer))
            observer->DopeSheetChanged(sender, data);
    }
    AS_DopeSheetObservable::Notify(sender, data);
}

void AS_DopeSheetNotifProxy::AddPermanentObserver(AS_DopeSheetObserverInterface* observer) {
    if (observer && !IsPermanent(observer))
        Permanent().push_back(observer);
}

void AS_DopeSheetNotifProxy::RemovePermanentObserver(AS_DopeSheetObserverInterface* observer) {
    std::erase(Permanent(), observer);
}

const std::vector<AS_DopeSheetObserverInterface*>& AS_DopeSheetNotifProxy::PermanentObservers() {
    return Permanent();
}

void AS_DopeSheetNotifProxy::ResetPermanentObservers() {
    Permanent().clear();
}
