#pragma once

#include "colour/CM_BaseCommand.h"
#include "colour/CM_Palette.h"

#include <cstdint>
#include <memory>

// Replaces a palette of the list with a copy of it as it was, at the same index: the undo of
// the changes that reshape a palette's styles. Entries keep their ids, and textures share
// their images with the rest of the list as before. Sends the kind it is given; its inverse
// holds the palette it replaced and sends `reverseKind`.
class CM_RestorePaletteCommand : public CM_BaseCommand {
public:
    CM_RestorePaletteCommand(CM_PaletteList& list, std::unique_ptr<CM_Palette> state, uint32_t kind,
                             uint32_t reverseKind);

    // Null when the list has no palette with the copy's id, or the copy was used already.
    std::unique_ptr<UT_Command> Execute() override;
    uint32_t Size() const override;

private:
    std::unique_ptr<CM_Palette> state_;
    uint32_t kind_;
    uint32_t reverseKind_;
};
