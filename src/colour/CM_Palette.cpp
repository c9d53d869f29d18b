#include "colour/CM_Palette.h"

#include "colour/CM_PaletteList.h"
#include "colour/detail/CM_IntroSort.h"
#include "core/DB_Archive.h"

#include <algorithm>

CM_Palette::CM_Palette() : id_(kCM_NoColorId), styles_{{0, u"Default"}} {}

CM_Palette::CM_Palette(UT_WString name, UT_WString styleName)
    : name_(std::move(name)), id_(UT_UniqueId::Generate()), styles_{{0, std::move(styleName)}} {}

CM_Palette::~CM_Palette() {
    Detach();
}

void CM_Palette::Read(DB_Archive& archive) {
    UT_WString name = archive.ReadWideString();
    const UT_UniqueId id = archive.ReadUniqueId();
    const uint32_t current = archive.ReadU32();
    const uint32_t styleCount = archive.ReadCount(8);
    if (styleCount == 0)
        archive.ThrowUnexpected();
    std::vector<CM_PaletteStyle> styles(styleCount);
    for (CM_PaletteStyle& style : styles) {
        style.id = archive.ReadU32();
        archive.ReadWideString(style.name);
    }
    const uint32_t entryCount = archive.ReadCount(2);
    std::vector<std::unique_ptr<CM_BaseColorObj>> entries;
    entries.reserve(entryCount);
    for (uint32_t i = 0; i < entryCount; ++i)
        entries.push_back(archive.ReadNewAs<CM_BaseColorObj>());

    CM_PaletteList* list = list_;
    Detach();
    name_ = std::move(name);
    id_ = id;
    styles_ = std::move(styles);
    currentStyle_ = std::min<uint32_t>(current, styleCount - 1);
    entries_ = std::move(entries);
    for (auto& entry : entries_)
        Conform(*entry);
    if (list)
        AttachTo(list);
}

void CM_Palette::Write(DB_Archive& archive) {
    archive.WriteWideString(name_);
    archive.WriteUniqueId(id_);
    archive.WriteU32(currentStyle_);
    archive.WriteCount(styles_.size());
    for (const CM_PaletteStyle& style : styles_) {
        archive.WriteU32(style.id);
        archive.WriteWideString(style.name);
    }
    archive.WriteCount(entries_.size());
    for (const auto& entry : entries_)
        if (!archive.WriteTyped(*entry))
            archive.ThrowUnexpected();
}

void CM_Palette::SetName(UT_WString name) {
    name_ = std::move(name);
    Touch();
}

void CM_Palette::Conform(CM_BaseColorObj& entry) const {
    const auto styles = static_cast<uint32_t>(styles_.size());
    while (entry.GetStyleCount() < styles)
        entry.AppendStyleFrom(entry.GetCurrentStyle());
    while (entry.GetStyleCount() > styles)
        entry.RemoveStyle(entry.GetStyleCount() - 1);
    entry.SetCurrentStyle(currentStyle_);
}

void CM_Palette::Touch() {
    if (list_)
        list_->MarkModified();
}

CM_BaseColorObj* CM_Palette::AddEntry(std::unique_ptr<CM_BaseColorObj> entry) {
    return InsertEntry(std::move(entry), entries_.size());
}

CM_BaseColorObj* CM_Palette::InsertEntry(std::unique_ptr<CM_BaseColorObj> entry, size_t before) {
    if (!entry)
        return nullptr;
    Conform(*entry);
    CM_BaseColorObj* raw = entry.get();
    entries_.insert(entries_.begin() + std::min(before, entries_.size()), std::move(entry));
    if (list_) {
        list_->Enter(*raw);
        list_->MarkModified();
    }
    return raw;
}

bool CM_Palette::RemoveEntry(size_t position) {
    return TakeEntry(position) != nullptr;
}

std::unique_ptr<CM_BaseColorObj> CM_Palette::TakeEntry(size_t position) {
    if (position >= entries_.size())
        return nullptr;
    std::unique_ptr<CM_BaseColorObj> entry = std::move(entries_[position]);
    entries_.erase(entries_.begin() + position);
    if (list_) {
        list_->Leave(*entry);
        list_->MarkModified();
    }
    return entry;
}

bool CM_Palette::MoveEntry(size_t from, size_t to) {
    if (from >= entries_.size() || to >= entries_.size())
        return false;
    auto entry = std::move(entries_[from]);
    entries_.erase(entries_.begin() + from);
    entries_.insert(entries_.begin() + to, std::move(entry));
    Touch();
    return true;
}

int CM_Palette::Find(UT_UniqueId id) const {
    for (size_t i = 0; i < entries_.size(); ++i)
        if (entries_[i]->GetId() == id)
            return static_cast<int>(i);
    return -1;
}

void CM_Palette::SortEntries() {
    CM_IntroSort(entries_.begin(), entries_.end(),
                 [](const std::unique_ptr<CM_BaseColorObj>& a, const std::unique_ptr<CM_BaseColorObj>& b) {
                     return a->GetName() < b->GetName();
                 });
    Touch();
}

bool CM_Palette::SetCurrentStyle(uint32_t index) {
    if (index >= styles_.size())
        return false;
    currentStyle_ = index;
    for (auto& entry : entries_)
        entry->SetCurrentStyle(index);
    Touch();
    return true;
}

uint32_t CM_Palette::AddStyle(UT_WString name) {
    uint32_t id = 0;
    for (const CM_PaletteStyle& style : styles_)
        id = std::max(id, style.id + 1);
    styles_.push_back({id, std::move(name)});
    for (auto& entry : entries_)
        entry->AppendStyleFrom(currentStyle_);
    Touch();
    return static_cast<uint32_t>(styles_.size() - 1);
}

bool CM_Palette::RemoveStyle(uint32_t index) {
    if (styles_.size() < 2 || index >= styles_.size())
        return false;
    styles_.erase(styles_.begin() + index);
    if (currentStyle_ > index || currentStyle_ >= styles_.size())
        --currentStyle_;
    for (auto& entry : entries_) {
        entry->RemoveStyle(index);
        entry->SetCurrentStyle(currentStyle_);
    }
    Touch();
    return true;
}

bool CM_Palette::RenameStyle(uint32_t index, UT_WString name) {
    if (index >= styles_.size())
        return false;
    styles_[index].name = std::move(name);
    Touch();
    return true;
}

bool CM_Palette::HasStyleNamed(std::u16string_view name) const {
    return std::any_of(styles_.begin(), styles_.end(),
                       [name](const CM_PaletteStyle& s) { return s.name == name; });
}

void CM_Palette::CopyFrom(const CM_Palette& other) {
    std::vector<std::unique_ptr<CM_BaseColorObj>> copies;
    copies.reserve(other.entries_.size());
    for (const auto& entry : other.entries_) {
        std::unique_ptr<CM_BaseColorObj> copy = entry->Duplicate();
        copy->SetId(UT_UniqueId::Generate());
        copies.push_back(std::move(copy));
    }
    CM_PaletteList* list = list_;
    Detach();
    styles_ = other.styles_;
    currentStyle_ = other.currentStyle_;
    entries_ = std::move(copies);
    if (list)
        AttachTo(list);
    Touch();
}

std::unique_ptr<CM_Palette> CM_Palette::Clone() const {
    auto copy = std::make_unique<CM_Palette>();
    copy->name_ = name_;
    copy->id_ = id_;
    copy->styles_ = styles_;
    copy->currentStyle_ = currentStyle_;
    copy->entries_.reserve(entries_.size());
    for (const auto& entry : entries_)
        copy->entries_.push_back(entry->Duplicate());
    return copy;
}

void CM_Palette::AttachTo(CM_PaletteList* list) {
    list_ = list;
    for (auto& entry : entries_)
        list_->Enter(*entry);
}

void CM_Palette::Detach() {
    if (!list_)
        return;
    for (auto& entry : entries_)
        list_->Leave(*entry);
    list_ = nullptr;
}
