// The palette commands of the random walk, on the palette list of the set.

#include "RandomCommands.h"
#include "colour/CM_AddEntryCommand.h"
#include "colour/CM_AddPaletteCommand.h"
#include "colour/CM_EditEntryCommand.h"
#include "colour/CM_MoveEntryCommand.h"
#include "colour/CM_PaletteList.h"
#include "colour/CM_RecoverColors.h"
#include "colour/CM_RemoveEntryCommand.h"
#include "colour/CM_RemovePaletteCommand.h"
#include "colour/CM_RemoveStyleCommand.h"
#include "colour/CM_RenameEntryCommand.h"
#include "colour/CM_RenamePaletteCommand.h"
#include "colour/CM_RenameStyleCommand.h"
#include "colour/CM_SwitchStyleCommand.h"
#include "colour/CM_Texture.h"
#include "colour/CM_Tint.h"
#include "colour/CM_TintCommand.h"
#include "core/UT_Format.h"
#include "render/BM_PixelMap.h"

namespace {

using Made = std::optional<RandomCommand>;
using Random = std::mt19937;

uint8_t RandomByte(Random& random) {
    return static_cast<uint8_t>(RandomIn(random, 0, 255));
}

BM_Rgba RandomRgba(Random& random) {
    return {RandomByte(random), RandomByte(random), RandomByte(random), RandomByte(random)};
}

UT_WString RandomName(const char16_t* stem, Random& random) {
    return UT_Fmt(u"%1$S %2$d", UT_WString(stem), UT_Num(RandomIn(random, 1, 99)));
}

CM_Palette* RandomPalette(CM_PaletteList& list, Random& random) {
    if (list.GetPaletteCount() == 0)
        return nullptr;
    return list.GetPalette(RandomIn(random, 0, static_cast<uint32_t>(list.GetPaletteCount() - 1)));
}

// An entry of a random palette that has any.
CM_BaseColorObj* RandomEntry(CM_PaletteList& list, Random& random) {
    CM_Palette* palette = RandomPalette(list, random);
    if (!palette || palette->GetEntryCount() == 0)
        return nullptr;
    return palette->GetEntry(RandomIn(random, 0, static_cast<uint32_t>(palette->GetEntryCount() - 1)));
}

uint32_t RandomStyle(const CM_Palette& palette, Random& random) {
    return RandomIn(random, 0, static_cast<uint32_t>(palette.GetStyleCount() - 1));
}

// A few images that textures of several palettes and styles share, as they do after a
// palette is duplicated.
std::vector<std::shared_ptr<CM_ShareTextureData>> MakeImages() {
    std::vector<std::shared_ptr<CM_ShareTextureData>> images;
    for (uint8_t shade : {40, 160, 250}) {
        auto pixels = std::make_unique<BM_PixelMap<BM_PixelRgba32>>(3, 2);
        for (uint32_t y = 0; y < 2; ++y)
            for (uint32_t x = 0; x < 3; ++x)
                pixels->SetPixel(x, y, BM_PixelRgba32::Make(shade, uint8_t(x * 80), uint8_t(y * 120), 255));
        images.push_back(std::make_shared<CM_ShareTextureData>(std::move(pixels)));
    }
    return images;
}

CM_Tint RandomTint(Random& random) {
    const auto offset = [&random](int range) {
        return static_cast<int>(RandomIn(random, 0, 2 * range)) - range;
    };
    const auto percent = static_cast<float>(RandomIn(random, 0, 100));
    switch (RandomIn(random, 0, 2)) {
    case 0:
        return CM_Tint::OffsetRgb(offset(255), offset(255), offset(255), offset(255), percent);
    case 1:
        return CM_Tint::OffsetHsv(offset(360), offset(100) * 0.01, offset(100) * 0.01, offset(255), percent);
    default:
        return CM_Tint::Blend(RandomRgba(random), percent);
    }
}

} // namespace

std::vector<RandomCommandKind> PaletteCommandKinds() {
    const auto images =
        std::make_shared<const std::vector<std::shared_ptr<CM_ShareTextureData>>>(MakeImages());
    const auto randomImage = [images](Random& random) {
        return (*images)[RandomIn(random, 0, static_cast<uint32_t>(images->size() - 1))];
    };
    return {
        {"add palette", 1,
         [](CAnimationSetObj& set, Random& random) -> Made {
             CM_PaletteList& list = set.PaletteList();
             const auto index = RandomIn(random, 0, static_cast<uint32_t>(list.GetPaletteCount()));
             return RandomCommand{
                 CM_AddPaletteCommand::NewPalette(list, RandomName(u"Palette", random), u"Default", index),
                 CM_AddPaletteCommand::kName};
         }},
        {"remove palette", 1,
         [](CAnimationSetObj& set, Random& random) -> Made {
             CM_Palette* palette = RandomPalette(set.PaletteList(), random);
             if (!palette)
                 return std::nullopt;
             return RandomCommand{
                 std::make_unique<CM_RemovePaletteCommand>(set.PaletteList(), palette->GetId()),
                 CM_RemovePaletteCommand::kName};
         }},
        {"duplicate palette", 1,
         [](CAnimationSetObj& set, Random& random) -> Made {
             CM_Palette* palette = RandomPalette(set.PaletteList(), random);
             if (!palette)
                 return std::nullopt;
             return RandomCommand{CM_AddPaletteCommand::Duplicate(set.PaletteList(), palette->GetId(),
                                                                  RandomName(u"Copy", random)),
                                  CM_AddPaletteCommand::kDuplicateName};
         }},
        {"rename palette", 1,
         [](CAnimationSetObj& set, Random& random) -> Made {
             CM_Palette* palette = RandomPalette(set.PaletteList(), random);
             if (!palette)
                 return std::nullopt;
             return RandomCommand{std::make_unique<CM_RenamePaletteCommand>(
                                      set.PaletteList(), palette->GetId(), RandomName(u"Palette", random)),
                                  CM_RenamePaletteCommand::kName};
         }},
        {"add colour", 2,
         [](CAnimationSetObj& set, Random& random) -> Made {
             CM_Palette* palette = RandomPalette(set.PaletteList(), random);
             if (!palette)
                 return std::nullopt;
             const auto position = RandomIn(random, 0, static_cast<uint32_t>(palette->GetEntryCount() + 1));
             return RandomCommand{std::make_unique<CM_AddEntryCommand>(
                                      set.PaletteList(), palette->GetId(), position,
                                      CM_Color::MakeSolid(RandomName(u"Colour", random), RandomRgba(random))),
                                  CM_AddEntryCommand::kName};
         }},
        {"add texture", 1,
         [randomImage](CAnimationSetObj& set, Random& random) -> Made {
             CM_Palette* palette = RandomPalette(set.PaletteList(), random);
             if (!palette)
                 return std::nullopt;
             auto texture = std::make_unique<CM_Texture>(RandomName(u"Texture", random));
             texture->SetTextureData(randomImage(random));
             return RandomCommand{std::make_unique<CM_AddEntryCommand>(set.PaletteList(), palette->GetId(),
                                                                       palette->GetEntryCount(),
                                                                       std::move(texture)),
                                  CM_AddEntryCommand::kName};
         }},
        {"remove colour", 2,
         [](CAnimationSetObj& set, Random& random) -> Made {
             const CM_BaseColorObj* entry = RandomEntry(set.PaletteList(), random);
             if (!entry)
                 return std::nullopt;
             return RandomCommand{std::make_unique<CM_RemoveEntryCommand>(set.PaletteList(), entry->GetId()),
                                  CM_RemoveEntryCommand::kName};
         }},
        {"edit colour", 2,
         [randomImage](CAnimationSetObj& set, Random& random) -> Made {
             CM_PaletteList& list = set.PaletteList();
             const CM_BaseColorObj* entry = RandomEntry(list, random);
             if (!entry)
                 return std::nullopt;
             std::unique_ptr<CM_BaseColorObj> values = entry->Duplicate();
             if (auto* texture = dynamic_cast<CM_Texture*>(values.get())) {
                 texture->SetTextureData(randomImage(random));
             } else if (RandomIn(random, 0, 1) == 0) {
                 return RandomCommand{
                     CM_EditEntryCommand::SolidColor(list, entry->GetId(), RandomRgba(random)),
                     CM_EditEntryCommand::kName};
             } else {
                 // A gradient of a few stops at positions in tenths, a user's edit of the stops.
                 auto& color = static_cast<CM_Color&>(*values);
                 color.SetGradientKind(RandomIn(random, 1, 2));
                 color.Stops().clear();
                 for (uint32_t n = RandomIn(random, 1, 4); n > 0; --n)
                     color.AddStop({RandomIn(random, 0, 10) * 0.1, RandomRgba(random), 0});
             }
             return RandomCommand{std::make_unique<CM_EditEntryCommand>(list, std::move(values)),
                                  CM_EditEntryCommand::kName};
         }},
        {"rename colour", 1,
         [](CAnimationSetObj& set, Random& random) -> Made {
             const CM_BaseColorObj* entry = RandomEntry(set.PaletteList(), random);
             if (!entry)
                 return std::nullopt;
             return RandomCommand{std::make_unique<CM_RenameEntryCommand>(set.PaletteList(), entry->GetId(),
                                                                          RandomName(u"Colour", random)),
                                  CM_RenameEntryCommand::kName};
         }},
        {"move colour", 2,
         [](CAnimationSetObj& set, Random& random) -> Made {
             CM_PaletteList& list = set.PaletteList();
             const CM_BaseColorObj* entry = RandomEntry(list, random);
             if (!entry)
                 return std::nullopt;
             const CM_Palette& palette = *list.FindEntry(entry->GetId()).palette;
             const auto to = RandomIn(random, 0, static_cast<uint32_t>(palette.GetEntryCount() - 1));
             return RandomCommand{std::make_unique<CM_MoveEntryCommand>(list, entry->GetId(), to),
                                  CM_MoveEntryCommand::kName};
         }},
        {"switch style", 1,
         [](CAnimationSetObj& set, Random& random) -> Made {
             CM_Palette* palette = RandomPalette(set.PaletteList(), random);
             if (!palette)
                 return std::nullopt;
             return RandomCommand{std::make_unique<CM_SwitchStyleCommand>(set.PaletteList(), palette->GetId(),
                                                                          RandomStyle(*palette, random)),
                                  CM_SwitchStyleCommand::kName};
         }},
        {"rename style", 1,
         [](CAnimationSetObj& set, Random& random) -> Made {
             CM_Palette* palette = RandomPalette(set.PaletteList(), random);
             if (!palette)
                 return std::nullopt;
             return RandomCommand{std::make_unique<CM_RenameStyleCommand>(set.PaletteList(), palette->GetId(),
                                                                          RandomStyle(*palette, random),
                                                                          RandomName(u"Flavour", random)),
                                  CM_RenameStyleCommand::kName};
         }},
        {"remove style", 2,
         [](CAnimationSetObj& set, Random& random) -> Made {
             CM_Palette* palette = RandomPalette(set.PaletteList(), random);
             if (!palette || palette->GetStyleCount() < 2)
                 return std::nullopt;
             return RandomCommand{std::make_unique<CM_RemoveStyleCommand>(set.PaletteList(), palette->GetId(),
                                                                          RandomStyle(*palette, random)),
                                  CM_RemoveStyleCommand::kName};
         }},
        {"tint style", 1,
         [](CAnimationSetObj& set, Random& random) -> Made {
             CM_Palette* palette = RandomPalette(set.PaletteList(), random);
             if (!palette)
                 return std::nullopt;
             const uint32_t from = RandomStyle(*palette, random);
             return RandomCommand{CM_TintCommand::Make(set.PaletteList(), palette->GetId(),
                                                       RandomTint(random), from,
                                                       RandomStyle(*palette, random)),
                                  CM_TintCommand::kName};
         }},
        {"tint into a new style", 1,
         [](CAnimationSetObj& set, Random& random) -> Made {
             CM_Palette* palette = RandomPalette(set.PaletteList(), random);
             // Styles only grow here; a few are enough.
             if (!palette || palette->GetStyleCount() > 4)
                 return std::nullopt;
             return RandomCommand{CM_TintCommand::Make(set.PaletteList(), palette->GetId(),
                                                       RandomTint(random), RandomStyle(*palette, random),
                                                       std::nullopt, RandomName(u"Flavour", random)),
                                  CM_TintCommand::kName};
         }},
        {"recover colours", 1,
         [](CAnimationSetObj& set, Random& random) -> Made {
             CM_PaletteList& list = set.PaletteList();
             const CM_Palette* palette = list.GetRecoveredPalette();
             // Taking out the last recovered entries removes the palette, so a recovery palette
             // that is empty before the recovery would not come back empty.
             if (palette && palette->GetEntryCount() == 0)
                 return std::nullopt;
             std::vector<std::unique_ptr<CM_BaseColorObj>> entries;
             for (uint32_t n = RandomIn(random, 1, 2); n > 0; --n)
                 entries.push_back(CM_Color::MakeSolid(RandomName(u"Lost", random), RandomRgba(random)));
             const UT_UniqueId id = palette ? palette->GetId() : UT_UniqueId::Generate();
             return RandomCommand{
                 std::make_unique<CM_RecoverColors>(&list, id, std::move(entries), CM_RecoverColors::kAdd),
                 CM_RecoverColors::kName};
         }},
    };
}
