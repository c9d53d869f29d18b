#pragma once

#include "colour/CM_BaseCommand.h"

#include <cstdint>

// Removes a style of a palette with the value of every entry in it. Sends kind 11. The
// inverse puts back an exact copy of the palette as it was (CM_RestorePaletteCommand).
class CM_RemoveStyleCommand : public CM_BaseCommand {
public:
    static constexpr const char16_t* kName = u"Delete Flavor";

    CM_RemoveStyleCommand(CM_PaletteList& list, UT_UniqueId paletteId, uint32_t style);

    // Null when the palette is gone, has no such style, or has only that one.
    std::unique_ptr<UT_Command> Execute() override;

private:
    UT_UniqueId paletteId_;
    uint32_t style_;
};
