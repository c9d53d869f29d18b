#pragma once

#include "colour/CM_BaseCommand.h"

// Takes a palette out of the list, with all its entries: the colours that used them resolve
// to "NoColor". Sends kind 9. The inverse holds the palette and puts it back at its index.
class CM_RemovePaletteCommand : public CM_BaseCommand {
public:
    static constexpr const char16_t* kName = u"Delete Palette";

    // `duplicateOf`: for the undo of a duplication, the palette it copied, so that the redo
    // is told as a duplication again.
    CM_RemovePaletteCommand(CM_PaletteList& list, UT_UniqueId paletteId,
                            UT_UniqueId duplicateOf = UT_UniqueId());

    // Null when the list has no palette of that id.
    std::unique_ptr<UT_Command> Execute() override;

    UT_UniqueId PaletteId() const { return paletteId_; }

private:
    UT_UniqueId paletteId_;
    UT_UniqueId duplicateOf_;
};
