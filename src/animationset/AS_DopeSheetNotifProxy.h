#pragma once

#include "animationset/AS_DopeSheetObservable.h"

#include <vector>

class CAnimationSetObj;

// Stands between a set and the observers of its changes. Each change first marks the
// composition orders of its scene for rebuilding (for the categories that can move rows
// or frames), then reaches the permanent observers, then the attached ones: the current
// cell and the selection of the application are up to date, and the orders stale, before
// any view repaints.
class AS_DopeSheetNotifProxy : public AS_DopeSheetObservable {
public:
    explicit AS_DopeSheetNotifProxy(CAnimationSetObj& set) : set_(set) {}

    void Notify(const void* sender, const AS_DopeSheetUpdateData& data) override;

    CAnimationSetObj& Set() const { return set_; }

    // The process-wide observers that every proxy calls first, in the order they were
    // added: the application's current cell, then its selection manager. They are made
    // once at start and removed when they die.
    static void AddPermanentObserver(AS_DopeSheetObserverInterface* observer);
    static void RemovePermanentObserver(AS_DopeSheetObserverInterface* observer);
    static const std::vector<AS_DopeSheetObserverInterface*>& PermanentObservers();
    // Forgets every permanent observer, for tests.
    static void ResetPermanentObservers();

private:
    CAnimationSetObj& set_;
};
