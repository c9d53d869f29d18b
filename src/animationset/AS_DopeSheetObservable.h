#pragma once

#include "animationset/AS_DopeSheetUpdateData.h"
#include "core/OB_Observable.h"

// What a view or any other follower of the model implements to hear of its changes.
class AS_DopeSheetObserverInterface {
public:
    virtual ~AS_DopeSheetObserverInterface() = default;
    // The observable this observer is attached to is being destroyed (the set closes):
    // the observer must forget it and not detach from it any more.
    virtual void DopeSheetObservableGone(const void* observable) { (void)observable; }
    // One change of the model; `sender` is whoever made it, or null.
    virtual void DopeSheetChanged(const void* sender, const AS_DopeSheetUpdateData& data) = 0;
};

// The observable of model changes, with helpers that build the record.
class AS_DopeSheetObservable : public OB_Observable<AS_DopeSheetObserverInterface, AS_DopeSheetUpdateData,
                                                    &AS_DopeSheetObserverInterface::DopeSheetChanged> {
public:
    AS_DopeSheetObservable() = default;
    ~AS_DopeSheetObservable() override;
    AS_DopeSheetObservable(const AS_DopeSheetObservable&) = delete;
    AS_DopeSheetObservable& operator=(const AS_DopeSheetObservable&) = delete;

    // A record of the category and code for `scene` (null: the current scene).
    void NotifyChange(const void* sender, AS_DopeSheetCategory category, uint32_t code,
                      CDopeSheetObj* scene = nullptr);
    void NotifyScene(const void* sender, uint32_t code, CDopeSheetObj* scene);
    // An element change that names the elements by id.
    void NotifyElements(const void* sender, uint32_t code, CDopeSheetObj* scene,
                        std::vector<uint32_t> elements);
};
