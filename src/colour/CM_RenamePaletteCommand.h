#pragma once

#include "colour/CM_BaseCommand.h"
#include "core/UT_String.h"

// Gives a palette a new name. Sends kind 4. Its inverse is itself with the old name.
class CM_RenamePaletteCommand : public CM_BaseCommand {
public:
    static constexpr const char16_t* kName = u"Rename Palette";

    CM_RenamePaletteCommand(CM_PaletteList& list, UT_UniqueId paletteId, UT_WString name);

    // Null when the list has no palette of that id.
    std::unique_ptr<UT_Command> Execute() override;

private:
    UT_UniqueId paletteId_;
    UT_WString name_;
};
