#pragma once

#include "colour/CM_BaseCommand.h"

// Takes an entry out of its palette; every colour that used it resolves to "NoColor" until
// the entry comes back. Sends kind 1. The inverse holds the entry and puts it back at its
// position.
class CM_RemoveEntryCommand : public CM_BaseCommand {
public:
    static constexpr const char16_t* kName = u"Delete Color";

    CM_RemoveEntryCommand(CM_PaletteList& list, UT_UniqueId colorId);

    // Null when no palette holds the id.
    std::unique_ptr<UT_Command> Execute() override;

    UT_UniqueId ColorId() const { return colorId_; }

private:
    UT_UniqueId colorId_;
};
