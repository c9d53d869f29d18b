#pragma once

#include "colour/CM_BaseCommand.h"
#include "colour/CM_Color.h"
#include "core/UT_String.h"

#include <cstdint>
#include <optional>
#include <vector>

class CM_Tint;

// Installs the tinted values of a palette, one list of stops per entry by position (empty
// for a texture, which a tint leaves alone), into a style and puts that style in force.
// Sends kind 13. Into an existing style, the inverse is the same command with the values it
// replaced and the style that was in force before. Into a new style, made as a copy of the
// source style, the inverse puts back the palette as it was and sends kind 11.
class CM_TintCommand : public CM_BaseCommand {
public:
    static constexpr const char16_t* kName = u"Tint Flavor";

    // Into the existing style `style`, leaving `inForce` in force.
    CM_TintCommand(CM_PaletteList& list, UT_UniqueId paletteId, uint32_t style,
                   std::vector<CM_GradientStops> values, uint32_t inForce);
    // Into a new style of that name, appended after copying the style `from`.
    CM_TintCommand(CM_PaletteList& list, UT_UniqueId paletteId, uint32_t from, UT_WString newStyleName,
                   std::vector<CM_GradientStops> values);

    // The tint of a palette's style `from`, into `into` (an existing style) or, without it,
    // into a new style named `newStyleName`; null if the palette or a style is missing.
    static std::unique_ptr<CM_TintCommand> Make(CM_PaletteList& list, UT_UniqueId paletteId,
                                                const CM_Tint& tint, uint32_t from,
                                                std::optional<uint32_t> into, UT_WString newStyleName = {});

    // Null when the palette is gone, a style is missing, or the values do not match its
    // entries.
    std::unique_ptr<UT_Command> Execute() override;
    uint32_t Size() const override;

private:
    UT_UniqueId paletteId_;
    uint32_t style_;
    uint32_t inForce_;
    std::optional<UT_WString> newStyleName_;
    std::vector<CM_GradientStops> values_;
};
