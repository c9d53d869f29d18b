#pragma once

#include "colour/CM_BaseCommand.h"
#include "core/UT_String.h"

#include <cstdint>

// Gives a style of a palette a new name. Sends kind 10. Its inverse is itself with the old
// name.
class CM_RenameStyleCommand : public CM_BaseCommand {
public:
    static constexpr const char16_t* kName = u"Rename Flavor";

    CM_RenameStyleCommand(CM_PaletteList& list, UT_UniqueId paletteId, uint32_t style, UT_WString name);

    // Null when the palette is gone or has no such style.
    std::unique_ptr<UT_Command> Execute() override;

private:
    UT_UniqueId paletteId_;
    uint32_t style_;
    UT_WString name_;
};
