#pragma once

#include "colour/CM_BaseColorObj.h"
#include "colour/CM_BaseCommand.h"

#include <cstddef>
#include <memory>

// Puts an entry into a palette before a position (at the end when past it), with the id it
// carries: a new colour of the interface, or one that a removal took out. Sends kind 6.
// The inverse removes it again. The command gives its entry away when it runs, so it runs
// once; its inverse holds the entry from then on.
class CM_AddEntryCommand : public CM_BaseCommand {
public:
    static constexpr const char16_t* kName = u"Add Color";

    CM_AddEntryCommand(CM_PaletteList& list, UT_UniqueId paletteId, size_t position,
                       std::unique_ptr<CM_BaseColorObj> entry);

    // Null when the palette is gone, the entry was given away already, or its id is in the
    // list already.
    std::unique_ptr<UT_Command> Execute() override;
    uint32_t Size() const override;

    UT_UniqueId PaletteId() const { return paletteId_; }
    // The id of the entry; the invalid id once it has been given away.
    UT_UniqueId EntryId() const { return entry_ ? entry_->GetId() : kCM_NoColorId; }

private:
    UT_UniqueId paletteId_;
    size_t position_;
    std::unique_ptr<CM_BaseColorObj> entry_;
};
