#pragma once

#include "core/UT_StreamCommand.h"
#include "core/UT_UniqueId.h"

#include <cstdint>

class CM_BaseColorObj;
class CM_Palette;
class CM_PaletteList;

// Base of the undoable changes of a palette list. A command names its palettes and
// entries by id and finds them again when it runs, changes them through the operations of
// the model, tells the list's observers what happened and returns its inverse. The list is
// also the context of the command's snapshot archive.
class CM_BaseCommand : public UT_StreamCommand {
public:
    CM_PaletteList* List() const { return list_; }

protected:
    // A command read from a stream: the list comes with the archive.
    CM_BaseCommand() = default;
    explicit CM_BaseCommand(CM_PaletteList& list) : UT_StreamCommand(&list), list_(&list) {}

    void SetList(CM_PaletteList* list) { list_ = list; }
    // Sends a change of `kind` to the observers of the list.
    void Notify(uint32_t kind, UT_UniqueId colorId, UT_UniqueId paletteId) const;

    // The memory that a held entry or palette keeps, roughly, for the history's size limit.
    // Texture images are shared with the model and not counted.
    static uint32_t SizeOf(const CM_BaseColorObj& entry);
    static uint32_t SizeOf(const CM_Palette& palette);

private:
    CM_PaletteList* list_ = nullptr;
};
