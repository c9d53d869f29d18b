#pragma once

#include "colour/CM_BaseCommand.h"

#include <cstddef>

// Moves an entry inside its palette so that it ends at position `to`, as a drag in the
// palette's list does. Sends kind 0. The inverse moves it back.
class CM_MoveEntryCommand : public CM_BaseCommand {
public:
    static constexpr const char16_t* kName = u"Move Color";

    CM_MoveEntryCommand(CM_PaletteList& list, UT_UniqueId colorId, size_t to);

    // Null when no palette holds the id or `to` lies past its last entry.
    std::unique_ptr<UT_Command> Execute() override;

private:
    UT_UniqueId colorId_;
    size_t to_;
};
