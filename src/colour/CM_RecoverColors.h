#pragma once

#include "colour/CM_BaseColorObj.h"
#include "colour/CM_BaseCommand.h"
#include "core/CPersistentObjBase.h"
#include "core/UT_UniqueId.h"

#include <memory>
#include <vector>

class CM_PaletteList;

// Adds recovered entries to the recovery palette of a list, or takes them out again
// (type 123). Executing it in one direction returns the command of the other, so it is
// its own undo. Taking out the last entries removes the palette too.
class CM_RecoverColors : public CM_BaseCommand, public CPersistentObjBase {
public:
    enum Direction : bool { kRemove = false, kAdd = true };

    CM_RecoverColors() = default;
    CM_RecoverColors(CM_PaletteList* list, UT_UniqueId paletteId,
                     std::vector<std::unique_ptr<CM_BaseColorObj>> entries, Direction direction);

    // The entries: a u32 count and typed objects. The list comes from the archive's context.
    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;

    // Performs the change and returns the command that reverses it, or null if the list
    // is gone or nothing could be done.
    std::unique_ptr<UT_Command> Execute() override;
    uint32_t Size() const override;

    Direction GetDirection() const { return direction_; }
    UT_UniqueId GetPaletteId() const { return paletteId_; }
    const std::vector<std::unique_ptr<CM_BaseColorObj>>& GetEntries() const { return entries_; }

    static constexpr const char16_t* kName = u"Color Recovery";

private:
    UT_UniqueId paletteId_;
    std::vector<std::unique_ptr<CM_BaseColorObj>> entries_;
    Direction direction_ = kAdd;
};
