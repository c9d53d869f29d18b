#pragma once

#include "colour/CM_BaseColorObj.h"
#include "colour/CM_BaseCommand.h"
#include "render/BM_PixelTypes.h"

#include <memory>

// Gives an entry the values of every style of another of its class: the stops, gradient
// kind and key counter of a colour, or the images of a texture. Name, id and style in force
// stay. Sends kind 2. The inverse is the same command with the values that were replaced.
class CM_EditEntryCommand : public CM_BaseCommand {
public:
    static constexpr const char16_t* kName = u"Edit Color";

    // `values` carries the id of the entry to change.
    CM_EditEntryCommand(CM_PaletteList& list, std::unique_ptr<CM_BaseColorObj> values);

    // The colour of that id made solid in the current style of its palette, the other
    // styles as they are; null if the id is not that of a colour of a palette.
    static std::unique_ptr<CM_EditEntryCommand> SolidColor(CM_PaletteList& list, UT_UniqueId colorId,
                                                           BM_Rgba colour);

    // Null when no palette holds the id, the classes differ, or the values are not one per
    // style of the palette.
    std::unique_ptr<UT_Command> Execute() override;
    uint32_t Size() const override;

    UT_UniqueId ColorId() const { return values_->GetId(); }
    const CM_BaseColorObj& Values() const { return *values_; }

private:
    std::unique_ptr<CM_BaseColorObj> values_;
};
