#pragma once

#include "colour/CM_BaseCommand.h"

#include <cstdint>

// Puts another style of a palette in force, in the palette and all its entries. Sends
// kind 12. Its inverse is itself with the style that was in force.
class CM_SwitchStyleCommand : public CM_BaseCommand {
public:
    static constexpr const char16_t* kName = u"Change Flavor";

    CM_SwitchStyleCommand(CM_PaletteList& list, UT_UniqueId paletteId, uint32_t style);

    // Null when the palette is gone or has no such style.
    std::unique_ptr<UT_Command> Execute() override;

private:
    UT_UniqueId paletteId_;
    uint32_t style_;
};
