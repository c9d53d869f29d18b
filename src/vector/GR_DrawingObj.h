#pragma once

#include "core/CPersistentObjBase.h"
#include "vector/GR_Box2d.h"

#include <cstdint>

// What a cell of a drawing element shows: a vector drawing or a bitmap. Every change renews
// the stamp from one process-wide counter and sets the modified mark, which the level reads
// to decide on saving.
class GR_DrawingObj : public CPersistentObjBase {
public:
    GR_DrawingObj();
    ~GR_DrawingObj() override = default;

    virtual GR_Box2d GetBounds() = 0;
    // The bounds carried through a view; a vector drawing gives an empty box.
    virtual GR_Box2d GetDeviceBounds() { return GR_Box2d(); }

    uint64_t GetStamp() const { return stamp_; }
    bool IsModified() const { return modified_; }
    void SetModified(bool modified) { modified_ = modified; }
    // A change: a new stamp and the modified mark.
    void MarkChanged();
    void RenewStamp();

    // The next value of the process-wide revision counter.
    static uint64_t NextStamp();

private:
    uint64_t stamp_;
    bool modified_ = false;
};
