#pragma once

#include "animationset/AS_CellIterator.h"
#include "animationset/AS_DopeSheetObservable.h"
#include "core/OB_Observable.h"

#include <cstdint>

// What moved the application's current cell.
struct AS_CellIteratorObserverData {
    enum Code : uint32_t {
        // A plain move of the position.
        kMoved = 0,
        // One frame of playback: views move their cursors and redraw, nothing more.
        kPlaybackFrame = 2,
        // A step by the user (next, previous, first or last frame).
        kUserStep = 3,
        // Playback ended.
        kPlaybackEnded = 4,
    };
    uint32_t code = kMoved;
    int32_t value = -1;
};

class AS_CellIteratorObserverInterface {
public:
    virtual ~AS_CellIteratorObserverInterface() = default;
    // The current cell moved; `sender` is whoever moved it, or null.
    virtual void CellIteratorChanged(const void* sender, const AS_CellIteratorObserverData& data) = 0;
};

// The application's current cell: one process-wide cell iterator that every view shares,
// observable by the views, and itself a permanent observer of every set's notification
// proxy so that it is set right before any view hears of a change. The current set points
// it at its current scene and at the order of its mode.
class AS_CellIteratorObservable
    : public AS_CellIterator,
      public AS_DopeSheetObserverInterface,
      public OB_Observable<AS_CellIteratorObserverInterface, AS_CellIteratorObserverData,
                           &AS_CellIteratorObserverInterface::CellIteratorChanged> {
public:
    // Made on first use, which start-up makes early; lives to the end of the process.
    static AS_CellIteratorObservable& Instance();
    // Back to no scene, no observers, and first among the proxy's permanent observers again:
    // the state of a process that just started. For tests.
    static void ResetForTests();

    ~AS_CellIteratorObservable() override;
    AS_CellIteratorObservable(const AS_CellIteratorObservable&) = delete;
    AS_CellIteratorObservable& operator=(const AS_CellIteratorObservable&) = delete;

    // Stands on the first cell of `scene` in `order`, unless it stands in them already.
    // Null for both when no set is current.
    void PointAt(CDopeSheetObj* scene, AS_CompositionOrder* order);
    // Tells the observers, all but `sender`, that the position moved.
    void NotifyMove(const void* sender, uint32_t code = AS_CellIteratorObserverData::kMoved);

    // Keeps the position within the levels that the order still has after an element or
    // row change; follows the scene's length with a whole-scene selection.
    void DopeSheetChanged(const void* sender, const AS_DopeSheetUpdateData& data) override;

private:
    AS_CellIteratorObservable();
    void KeepWithinLevels();
};
