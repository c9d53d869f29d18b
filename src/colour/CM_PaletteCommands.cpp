// The undoable changes of a palette list: entries, palettes and styles.

#include "colour/CM_AddEntryCommand.h"
#include "colour/CM_AddPaletteCommand.h"
#include "colour/CM_EditEntryCommand.h"
#include "colour/CM_MoveEntryCommand.h"
#include "colour/CM_PaletteList.h"
#include "colour/CM_RemoveEntryCommand.h"
#include "colour/CM_RemovePaletteCommand.h"
#include "colour/CM_RemoveStyleCommand.h"
#include "colour/CM_RenameEntryCommand.h"
#include "colour/CM_RenamePaletteCommand.h"
#include "colour/CM_RenameStyleCommand.h"
#include "colour/CM_RestorePaletteCommand.h"
#include "colour/CM_SwitchStyleCommand.h"
#include "colour/CM_Texture.h"
#include "colour/CM_Tint.h"
#include "colour/CM_TintCommand.h"

#include <algorithm>
#include <limits>

namespace {

uint32_t Clamped(size_t bytes) {
    return static_cast<uint32_t>(std::min<size_t>(bytes, std::numeric_limits<uint32_t>::max()));
}

size_t SizeOfStops(const std::vector<CM_GradientStops>& values) {
    size_t bytes = values.size() * sizeof(CM_GradientStops);
    for (const CM_GradientStops& stops : values)
        bytes += stops.size() * sizeof(CM_GradientData);
    return bytes;
}

} // namespace

// The base.

void CM_BaseCommand::Notify(uint32_t kind, UT_UniqueId colorId, UT_UniqueId paletteId) const {
    list_->NotifyChange(kind, colorId, paletteId);
}

uint32_t CM_BaseCommand::SizeOf(const CM_BaseColorObj& entry) {
    size_t bytes = sizeof(CM_Texture) + entry.GetName().size() * sizeof(char16_t);
    if (const auto* color = dynamic_cast<const CM_Color*>(&entry))
        bytes += SizeOfStops(color->Values());
    return Clamped(bytes);
}

uint32_t CM_BaseCommand::SizeOf(const CM_Palette& palette) {
    size_t bytes = sizeof(CM_Palette) + palette.GetName().size() * sizeof(char16_t);
    for (const CM_PaletteStyle& style : palette.GetStyles())
        bytes += sizeof(CM_PaletteStyle) + style.name.size() * sizeof(char16_t);
    for (size_t i = 0; i < palette.GetEntryCount(); ++i)
        bytes += SizeOf(*palette.GetEntry(i));
    return Clamped(bytes);
}

// Adding and removing entries.

CM_AddEntryCommand::CM_AddEntryCommand(CM_PaletteList& list, UT_UniqueId paletteId, size_t position,
                                       std::unique_ptr<CM_BaseColorObj> entry)
    : CM_BaseCommand(list), paletteId_(paletteId), position_(position), entry_(std::move(entry)) {}

std::unique_ptr<UT_Command> CM_AddEntryCommand::Execute() {
    CM_Palette* palette = List()->FindPalette(paletteId_);
    // The reserved ids and the id of no colour never name an entry of a palette.
    if (!palette || !entry_ || entry_->GetId() == kCM_NullColorId || List()->Lookup(entry_->GetId()))
        return nullptr;
    const UT_UniqueId id = entry_->GetId();
    palette->InsertEntry(std::move(entry_), position_);
    Notify(CM_PaletteListData::kEntriesAdded, id, paletteId_);
    return std::make_unique<CM_RemoveEntryCommand>(*List(), id);
}

uint32_t CM_AddEntryCommand::Size() const {
    return entry_ ? SizeOf(*entry_) : CM_BaseCommand::Size();
}

CM_RemoveEntryCommand::CM_RemoveEntryCommand(CM_PaletteList& list, UT_UniqueId colorId)
    : CM_BaseCommand(list), colorId_(colorId) {}

std::unique_ptr<UT_Command> CM_RemoveEntryCommand::Execute() {
    const CM_PaletteList::EntryPlace place = List()->FindEntry(colorId_);
    if (!place.palette)
        return nullptr;
    const UT_UniqueId paletteId = place.palette->GetId();
    std::unique_ptr<CM_BaseColorObj> entry = place.palette->TakeEntry(static_cast<size_t>(place.index));
    Notify(CM_PaletteListData::kEntryRemoved, colorId_, paletteId);
    return std::make_unique<CM_AddEntryCommand>(*List(), paletteId, static_cast<size_t>(place.index),
                                                std::move(entry));
}

// Editing entries.

CM_EditEntryCommand::CM_EditEntryCommand(CM_PaletteList& list, std::unique_ptr<CM_BaseColorObj> values)
    : CM_BaseCommand(list), values_(std::move(values)) {}

std::unique_ptr<CM_EditEntryCommand> CM_EditEntryCommand::SolidColor(CM_PaletteList& list,
                                                                     UT_UniqueId colorId, BM_Rgba colour) {
    const CM_PaletteList::EntryPlace place = list.FindEntry(colorId);
    const auto* color =
        place.palette ? dynamic_cast<const CM_Color*>(place.palette->GetEntry(size_t(place.index))) : nullptr;
    if (!color)
        return nullptr;
    std::unique_ptr<CM_BaseColorObj> copy = color->Duplicate();
    auto& values = static_cast<CM_Color&>(*copy);
    values.SetGradientKind(CM_Color::kSolid);
    values.Stops().clear();
    values.AddStop({0.0, colour, 0});
    return std::make_unique<CM_EditEntryCommand>(list, std::move(copy));
}

std::unique_ptr<UT_Command> CM_EditEntryCommand::Execute() {
    const CM_PaletteList::EntryPlace place = List()->FindEntry(values_->GetId());
    if (!place.palette)
        return nullptr;
    CM_BaseColorObj& entry = *place.palette->GetEntry(static_cast<size_t>(place.index));
    if (entry.GetClass() != values_->GetClass() || values_->GetStyleCount() != place.palette->GetStyleCount())
        return nullptr;
    auto inverse = std::make_unique<CM_EditEntryCommand>(*List(), entry.Duplicate());
    if (auto* color = dynamic_cast<CM_Color*>(&entry))
        color->CopyAllFrom(static_cast<const CM_Color&>(*values_));
    else
        static_cast<CM_Texture&>(entry).SetValues(static_cast<const CM_Texture&>(*values_).Values());
    Notify(CM_PaletteListData::kEntryEdited, entry.GetId(), place.palette->GetId());
    return inverse;
}

uint32_t CM_EditEntryCommand::Size() const {
    return SizeOf(*values_);
}

CM_RenameEntryCommand::CM_RenameEntryCommand(CM_PaletteList& list, UT_UniqueId colorId, UT_WString name)
    : CM_BaseCommand(list), colorId_(colorId), name_(std::move(name)) {}

std::unique_ptr<UT_Command> CM_RenameEntryCommand::Execute() {
    const CM_PaletteList::EntryPlace place = List()->FindEntry(colorId_);
    if (!place.palette)
        return nullptr;
    CM_BaseColorObj& entry = *place.palette->GetEntry(static_cast<size_t>(place.index));
    auto inverse = std::make_unique<CM_RenameEntryCommand>(*List(), colorId_, entry.GetName());
    entry.SetName(name_);
    Notify(CM_PaletteListData::kEntryRenamed, colorId_, place.palette->GetId());
    return inverse;
}

CM_MoveEntryCommand::CM_MoveEntryCommand(CM_PaletteList& list, UT_UniqueId colorId, size_t to)
    : CM_BaseCommand(list), colorId_(colorId), to_(to) {}

std::unique_ptr<UT_Command> CM_MoveEntryCommand::Execute() {
    const CM_PaletteList::EntryPlace place = List()->FindEntry(colorId_);
    const auto from = static_cast<size_t>(place.index);
    if (!place.palette || !place.palette->MoveEntry(from, to_))
        return nullptr;
    Notify(CM_PaletteListData::kEntryMoved, colorId_, place.palette->GetId());
    return std::make_unique<CM_MoveEntryCommand>(*List(), colorId_, from);
}

// Palettes.

CM_AddPaletteCommand::CM_AddPaletteCommand(CM_PaletteList& list, std::unique_ptr<CM_Palette> palette,
                                           size_t index, UT_UniqueId duplicateOf, bool recovered)
    : CM_BaseCommand(list), palette_(std::move(palette)), index_(index), duplicateOf_(duplicateOf),
      recovered_(recovered) {}

std::unique_ptr<CM_AddPaletteCommand> CM_AddPaletteCommand::NewPalette(CM_PaletteList& list, UT_WString name,
                                                                       UT_WString styleName, size_t index) {
    return std::make_unique<CM_AddPaletteCommand>(
        list, std::make_unique<CM_Palette>(std::move(name), std::move(styleName)), index);
}

std::unique_ptr<CM_AddPaletteCommand> CM_AddPaletteCommand::Duplicate(CM_PaletteList& list,
                                                                      UT_UniqueId sourceId, UT_WString name) {
    const int index = list.IndexOfPalette(sourceId);
    if (index < 0)
        return nullptr;
    auto copy = std::make_unique<CM_Palette>(std::move(name), u"Default");
    copy->CopyFrom(*list.GetPalette(static_cast<size_t>(index)));
    return std::make_unique<CM_AddPaletteCommand>(list, std::move(copy), static_cast<size_t>(index) + 1,
                                                  sourceId);
}

std::unique_ptr<UT_Command> CM_AddPaletteCommand::Execute() {
    CM_PaletteList& list = *List();
    if (!palette_ || list.FindPalette(palette_->GetId()))
        return nullptr;
    const UT_UniqueId id = palette_->GetId();
    list.InsertPalette(std::move(palette_), index_);
    if (recovered_)
        list.EnsureRecoveredPalette(id);
    if (duplicateOf_ != UT_UniqueId()) {
        Notify(CM_PaletteListData::kPaletteDuplicatedSource, UT_UniqueId(), duplicateOf_);
        Notify(CM_PaletteListData::kPaletteDuplicated, UT_UniqueId(), id);
    } else {
        Notify(CM_PaletteListData::kPaletteAdded, UT_UniqueId(), id);
    }
    return std::make_unique<CM_RemovePaletteCommand>(list, id, duplicateOf_);
}

uint32_t CM_AddPaletteCommand::Size() const {
    return palette_ ? SizeOf(*palette_) : CM_BaseCommand::Size();
}

CM_RemovePaletteCommand::CM_RemovePaletteCommand(CM_PaletteList& list, UT_UniqueId paletteId,
                                                 UT_UniqueId duplicateOf)
    : CM_BaseCommand(list), paletteId_(paletteId), duplicateOf_(duplicateOf) {}

std::unique_ptr<UT_Command> CM_RemovePaletteCommand::Execute() {
    CM_PaletteList& list = *List();
    const int index = list.IndexOfPalette(paletteId_);
    if (index < 0)
        return nullptr;
    const CM_Palette* recovered = list.GetRecoveredPalette();
    const bool wasRecovered = recovered && recovered->GetId() == paletteId_;
    std::unique_ptr<CM_Palette> palette = list.TakePalette(paletteId_);
    Notify(CM_PaletteListData::kPaletteRemoved, UT_UniqueId(), paletteId_);
    return std::make_unique<CM_AddPaletteCommand>(list, std::move(palette), static_cast<size_t>(index),
                                                  duplicateOf_, wasRecovered);
}

CM_RenamePaletteCommand::CM_RenamePaletteCommand(CM_PaletteList& list, UT_UniqueId paletteId, UT_WString name)
    : CM_BaseCommand(list), paletteId_(paletteId), name_(std::move(name)) {}

std::unique_ptr<UT_Command> CM_RenamePaletteCommand::Execute() {
    CM_Palette* palette = List()->FindPalette(paletteId_);
    if (!palette)
        return nullptr;
    auto inverse = std::make_unique<CM_RenamePaletteCommand>(*List(), paletteId_, palette->GetName());
    palette->SetName(name_);
    Notify(CM_PaletteListData::kPaletteRenamed, UT_UniqueId(), paletteId_);
    return inverse;
}

CM_RestorePaletteCommand::CM_RestorePaletteCommand(CM_PaletteList& list, std::unique_ptr<CM_Palette> state,
                                                   uint32_t kind, uint32_t reverseKind)
    : CM_BaseCommand(list), state_(std::move(state)), kind_(kind), reverseKind_(reverseKind) {}

std::unique_ptr<UT_Command> CM_RestorePaletteCommand::Execute() {
    CM_PaletteList& list = *List();
    if (!state_)
        return nullptr;
    const UT_UniqueId id = state_->GetId();
    const int index = list.IndexOfPalette(id);
    if (index < 0)
        return nullptr;
    const CM_Palette* recovered = list.GetRecoveredPalette();
    const bool wasRecovered = recovered && recovered->GetId() == id;
    std::unique_ptr<CM_Palette> replaced = list.TakePalette(id);
    list.InsertPalette(std::move(state_), static_cast<size_t>(index));
    if (wasRecovered)
        list.EnsureRecoveredPalette(id);
    Notify(kind_, UT_UniqueId(), id);
    return std::make_unique<CM_RestorePaletteCommand>(list, std::move(replaced), reverseKind_, kind_);
}

uint32_t CM_RestorePaletteCommand::Size() const {
    return state_ ? SizeOf(*state_) : CM_BaseCommand::Size();
}

// Styles.

CM_SwitchStyleCommand::CM_SwitchStyleCommand(CM_PaletteList& list, UT_UniqueId paletteId, uint32_t style)
    : CM_BaseCommand(list), paletteId_(paletteId), style_(style) {}

std::unique_ptr<UT_Command> CM_SwitchStyleCommand::Execute() {
    CM_Palette* palette = List()->FindPalette(paletteId_);
    if (!palette)
        return nullptr;
    const uint32_t previous = palette->GetCurrentStyle();
    if (!palette->SetCurrentStyle(style_))
        return nullptr;
    Notify(CM_PaletteListData::kStyleSwitched, UT_UniqueId(), paletteId_);
    return std::make_unique<CM_SwitchStyleCommand>(*List(), paletteId_, previous);
}

CM_RenameStyleCommand::CM_RenameStyleCommand(CM_PaletteList& list, UT_UniqueId paletteId, uint32_t style,
                                             UT_WString name)
    : CM_BaseCommand(list), paletteId_(paletteId), style_(style), name_(std::move(name)) {}

std::unique_ptr<UT_Command> CM_RenameStyleCommand::Execute() {
    CM_Palette* palette = List()->FindPalette(paletteId_);
    if (!palette || style_ >= palette->GetStyleCount())
        return nullptr;
    auto inverse = std::make_unique<CM_RenameStyleCommand>(*List(), paletteId_, style_,
                                                           palette->GetStyles()[style_].name);
    palette->RenameStyle(style_, name_);
    Notify(CM_PaletteListData::kStyleRenamed, UT_UniqueId(), paletteId_);
    return inverse;
}

CM_RemoveStyleCommand::CM_RemoveStyleCommand(CM_PaletteList& list, UT_UniqueId paletteId, uint32_t style)
    : CM_BaseCommand(list), paletteId_(paletteId), style_(style) {}

std::unique_ptr<UT_Command> CM_RemoveStyleCommand::Execute() {
    CM_Palette* palette = List()->FindPalette(paletteId_);
    if (!palette || palette->GetStyleCount() < 2 || style_ >= palette->GetStyleCount())
        return nullptr;
    // A style that comes back is announced as a tint would announce a style it made.
    auto inverse = std::make_unique<CM_RestorePaletteCommand>(
        *List(), palette->Clone(), CM_PaletteListData::kStyleTinted, CM_PaletteListData::kStyleRemoved);
    palette->RemoveStyle(style_);
    Notify(CM_PaletteListData::kStyleRemoved, UT_UniqueId(), paletteId_);
    return inverse;
}

CM_TintCommand::CM_TintCommand(CM_PaletteList& list, UT_UniqueId paletteId, uint32_t style,
                               std::vector<CM_GradientStops> values, uint32_t inForce)
    : CM_BaseCommand(list), paletteId_(paletteId), style_(style), inForce_(inForce),
      values_(std::move(values)) {}

CM_TintCommand::CM_TintCommand(CM_PaletteList& list, UT_UniqueId paletteId, uint32_t from,
                               UT_WString newStyleName, std::vector<CM_GradientStops> values)
    : CM_BaseCommand(list), paletteId_(paletteId), style_(from), inForce_(0),
      newStyleName_(std::move(newStyleName)), values_(std::move(values)) {}

std::unique_ptr<CM_TintCommand> CM_TintCommand::Make(CM_PaletteList& list, UT_UniqueId paletteId,
                                                     const CM_Tint& tint, uint32_t from,
                                                     std::optional<uint32_t> into, UT_WString newStyleName) {
    const CM_Palette* palette = list.FindPalette(paletteId);
    if (!palette || from >= palette->GetStyleCount() || (into && *into >= palette->GetStyleCount()))
        return nullptr;
    std::vector<CM_GradientStops> values = tint.Compute(*palette, from);
    if (into)
        return std::make_unique<CM_TintCommand>(list, paletteId, *into, std::move(values), *into);
    return std::make_unique<CM_TintCommand>(list, paletteId, from, std::move(newStyleName),
                                            std::move(values));
}

std::unique_ptr<UT_Command> CM_TintCommand::Execute() {
    CM_Palette* palette = List()->FindPalette(paletteId_);
    if (!palette || style_ >= palette->GetStyleCount() || values_.size() != palette->GetEntryCount())
        return nullptr;
    if (!newStyleName_) {
        if (inForce_ >= palette->GetStyleCount())
            return nullptr;
        const uint32_t previousStyle = palette->GetCurrentStyle();
        std::vector<CM_GradientStops> previous = CM_Tint::Install(*palette, style_, values_, inForce_);
        return std::make_unique<CM_TintCommand>(*List(), paletteId_, style_, std::move(previous),
                                                previousStyle);
    }
    auto inverse = std::make_unique<CM_RestorePaletteCommand>(
        *List(), palette->Clone(), CM_PaletteListData::kStyleRemoved, CM_PaletteListData::kStyleTinted);
    // The new style starts as a copy of the source, so that textures keep its images.
    palette->SetCurrentStyle(style_);
    const uint32_t added = palette->AddStyle(*newStyleName_);
    CM_Tint::Install(*palette, added, values_);
    return inverse;
}

uint32_t CM_TintCommand::Size() const {
    return Clamped(SizeOfStops(values_) + sizeof(CM_TintCommand));
}
