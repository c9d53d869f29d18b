#include "colour/CM_RecoverColors.h"

#include "colour/CM_PaletteList.h"
#include "core/DB_Archive.h"

CM_RecoverColors::CM_RecoverColors(CM_PaletteList* list, UT_UniqueId paletteId,
                                   std::vector<std::unique_ptr<CM_BaseColorObj>> entries, Direction direction)
    : paletteId_(paletteId), entries_(std::move(entries)), direction_(direction) {
    SetList(list);
}

void CM_RecoverColors::Read(DB_Archive& archive) {
    SetList(static_cast<CM_PaletteList*>(archive.Context()));
    const uint32_t count = archive.ReadCount(2);
    std::vector<std::unique_ptr<CM_BaseColorObj>> entries;
    entries.reserve(count);
    for (uint32_t i = 0; i < count; ++i)
        entries.push_back(archive.ReadNewAs<CM_BaseColorObj>());
    entries_ = std::move(entries);
}

void CM_RecoverColors::Write(DB_Archive& archive) {
    archive.WriteCount(entries_.size());
    for (const auto& entry : entries_)
        if (!archive.WriteTyped(*entry))
            archive.ThrowUnexpected();
}

std::unique_ptr<UT_Command> CM_RecoverColors::Execute() {
    CM_PaletteList* list = List();
    if (!list)
        return nullptr;
    std::vector<std::unique_ptr<CM_BaseColorObj>> moved;
    if (direction_ == kAdd) {
        CM_Palette* palette = list->FindPalette(paletteId_);
        if (!palette)
            palette = list->EnsureRecoveredPalette(paletteId_);
        for (auto& entry : entries_) {
            moved.push_back(entry->Duplicate());
            palette->AddEntry(std::move(entry));
        }
        entries_.clear();
        list->NotifyChange(CM_PaletteListData::kEntriesAdded, UT_UniqueId(), paletteId_);
        return std::make_unique<CM_RecoverColors>(list, paletteId_, std::move(moved), kRemove);
    }
    CM_Palette* palette = list->FindPalette(paletteId_);
    if (!palette)
        return nullptr;
    for (const auto& entry : entries_) {
        const int index = palette->Find(entry->GetId());
        if (index >= 0)
            moved.push_back(palette->TakeEntry(size_t(index)));
    }
    if (palette->GetEntryCount() == 0) {
        list->RemovePalette(paletteId_);
        list->NotifyChange(CM_PaletteListData::kPaletteRemoved, UT_UniqueId(), paletteId_);
    } else {
        list->NotifyChange(CM_PaletteListData::kEntriesAdded, UT_UniqueId(), paletteId_);
    }
    return std::make_unique<CM_RecoverColors>(list, paletteId_, std::move(moved), kAdd);
}

uint32_t CM_RecoverColors::Size() const {
    uint32_t bytes = CM_BaseCommand::Size();
    for (const auto& entry : entries_)
        bytes += SizeOf(*entry);
    return bytes;
}
