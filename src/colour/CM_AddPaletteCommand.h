#pragma once

#include "colour/CM_BaseCommand.h"
#include "colour/CM_Palette.h"
#include "core/UT_String.h"

#include <cstddef>
#include <memory>

// Puts a palette into the list at an index (at the end when past it): a new one, a
// duplicate, or one that a removal took out. A plain addition sends kind 7; a duplicate
// sends kind 5 for its source, then kind 8 for itself. The inverse removes it again. The
// command gives its palette away when it runs, so it runs once.
class CM_AddPaletteCommand : public CM_BaseCommand {
public:
    static constexpr const char16_t* kName = u"Add Palette";
    static constexpr const char16_t* kDuplicateName = u"Duplicate Palette";

    // `duplicateOf`: the id of the palette this one copies, or the null id. `recovered`: the
    // palette takes the role of the list's recovery palette again, if no other has it.
    CM_AddPaletteCommand(CM_PaletteList& list, std::unique_ptr<CM_Palette> palette, size_t index,
                         UT_UniqueId duplicateOf = UT_UniqueId(), bool recovered = false);

    // A new empty palette with one style, to go at `index`.
    static std::unique_ptr<CM_AddPaletteCommand> NewPalette(CM_PaletteList& list, UT_WString name,
                                                            UT_WString styleName, size_t index);
    // A copy of a palette under a new name, with new ids for it and its entries, to go right
    // after the original; null if the list has no palette of that id.
    static std::unique_ptr<CM_AddPaletteCommand> Duplicate(CM_PaletteList& list, UT_UniqueId sourceId,
                                                           UT_WString name);

    // Null when the palette was given away already or its id is in the list already.
    std::unique_ptr<UT_Command> Execute() override;
    uint32_t Size() const override;

    // The id of the palette; the invalid id once it has been given away.
    UT_UniqueId PaletteId() const { return palette_ ? palette_->GetId() : kCM_NoColorId; }

private:
    std::unique_ptr<CM_Palette> palette_;
    size_t index_;
    UT_UniqueId duplicateOf_;
    bool recovered_;
};
