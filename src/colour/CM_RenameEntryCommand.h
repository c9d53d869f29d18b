#pragma once

#include "colour/CM_BaseCommand.h"
#include "core/UT_String.h"

// Gives an entry a new name. Sends kind 3. Its inverse is itself with the old name.
class CM_RenameEntryCommand : public CM_BaseCommand {
public:
    static constexpr const char16_t* kName = u"Rename Color";

    CM_RenameEntryCommand(CM_PaletteList& list, UT_UniqueId colorId, UT_WString name);

    // Null when no palette holds the id.
    std::unique_ptr<UT_Command> Execute() override;

private:
    UT_UniqueId colorId_;
    UT_WString name_;
};
