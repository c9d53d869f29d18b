#include "colour/CM_PaletteList.h"

#include "colour/CM_RecoverColors.h"
#include "colour/CM_ShareTextureData.h"
#include "colour/CM_Texture.h"
#include "colour/CM_Tint.h"
#include "core/CPersistentType.h"
#include "core/DB_Archive.h"
#include "core/UT_Format.h"

#include <array>

namespace {

constexpr size_t kDefaultColourCount = 120;

// The first colours of the default palette, then twelve hues in nine shades each.
std::array<BM_Rgba, kDefaultColourCount> DefaultColours() {
    std::array<BM_Rgba, kDefaultColourCount> colours = {{
        {0, 0, 0, 255},
        {255, 0, 0, 255},
        {0, 255, 0, 255},
        {0, 0, 255, 255},
        {243, 212, 181, 255},
        {243, 194, 145, 255},
        {255, 255, 255, 255},
        {255, 255, 0, 255},
        {0, 255, 255, 255},
        {255, 0, 255, 255},
        {230, 200, 170, 255},
        {217, 174, 130, 255},
    }};
    constexpr double kSaturation[9] = {1.0, 0.75, 0.5, 0.25, 1.0, 0.75, 0.5, 1.0, 0.5};
    constexpr double kValue[9] = {1.0, 1.0, 1.0, 1.0, 0.75, 0.75, 0.75, 0.5, 0.5};
    for (size_t i = 12; i < kDefaultColourCount; ++i) {
        const size_t n = i - 12;
        const CM_Hsv hsv{double(n % 12) * 30.0, kSaturation[n / 12], kValue[n / 12]};
        colours[i] = CM_Tint::HsvToRgb(hsv, 255);
    }
    return colours;
}

std::unique_ptr<CM_Color> MakeReserved(const char16_t* name, UT_UniqueId id, BM_Rgba colour) {
    auto entry = std::make_unique<CM_Color>(name, id);
    entry->AddStop({0.0, colour, 0});
    return entry;
}

} // namespace

CM_PaletteList::CM_PaletteList(bool undoable) : undoable_(undoable) {
    reserved_.push_back(MakeReserved(u"NoColor", kCM_NoColorId, {255, 0, 0, 255}));
    reserved_.push_back(MakeReserved(u"EraserColor", kCM_EraserColorId, {255, 255, 255, 255}));
    for (auto& entry : reserved_)
        idMap_[entry->GetId()] = entry.get();
}

CM_PaletteList::~CM_PaletteList() {
    Clear();
}

void CM_PaletteList::Clear() {
    for (auto& palette : palettes_)
        palette->Detach();
    palettes_.clear();
    recoveredPalette_ = nullptr;
}

void CM_PaletteList::Read(DB_Archive& archive) {
    // A palette body holds at least a name, an id, its current style and two counts.
    const uint32_t count = archive.ReadCount(4 + 8 + 4 + 4 + 4);
    std::vector<std::unique_ptr<CM_Palette>> palettes;
    palettes.reserve(count);
    for (uint32_t i = 0; i < count; ++i) {
        auto palette = std::make_unique<CM_Palette>();
        palette->Read(archive);
        palettes.push_back(std::move(palette));
    }
    Clear();
    palettes_ = std::move(palettes);
    for (auto& palette : palettes_)
        palette->AttachTo(this);
}

void CM_PaletteList::Write(DB_Archive& archive) {
    archive.WriteCount(palettes_.size());
    for (auto& palette : palettes_)
        palette->Write(archive);
}

CM_Palette* CM_PaletteList::FindPalette(UT_UniqueId id) const {
    const int index = IndexOfPalette(id);
    return index < 0 ? nullptr : palettes_[size_t(index)].get();
}

int CM_PaletteList::IndexOfPalette(UT_UniqueId id) const {
    for (size_t i = 0; i < palettes_.size(); ++i)
        if (palettes_[i]->GetId() == id)
            return static_cast<int>(i);
    return -1;
}

CM_Palette* CM_PaletteList::AddPalette(UT_WString name, UT_WString styleName) {
    auto palette = std::make_unique<CM_Palette>(std::move(name), std::move(styleName));
    CM_Palette* raw = palette.get();
    InsertPalette(std::move(palette), palettes_.size());
    return raw;
}

CM_Palette* CM_PaletteList::AddDefaultPalette() {
    auto palette = std::make_unique<CM_Palette>(u"Default", u"Default");
    const auto colours = DefaultColours();
    for (size_t i = 0; i < colours.size(); ++i)
        palette->AddEntry(CM_Color::MakeSolid(UT_Fmt(u"Color %1$d", UT_Num(int64_t(i + 1))), colours[i]));
    CM_Palette* raw = palette.get();
    InsertPalette(std::move(palette), palettes_.size());
    return raw;
}

bool CM_PaletteList::InsertPalette(std::unique_ptr<CM_Palette> palette, size_t index) {
    if (!palette || FindPalette(palette->GetId()))
        return false;
    CM_Palette* raw = palette.get();
    palettes_.insert(palettes_.begin() + std::min(index, palettes_.size()), std::move(palette));
    raw->AttachTo(this);
    MarkModified();
    return true;
}

bool CM_PaletteList::RemovePalette(UT_UniqueId id) {
    return TakePalette(id) != nullptr;
}

std::unique_ptr<CM_Palette> CM_PaletteList::TakePalette(UT_UniqueId id) {
    const int index = IndexOfPalette(id);
    if (index < 0)
        return nullptr;
    std::unique_ptr<CM_Palette> palette = std::move(palettes_[size_t(index)]);
    palettes_.erase(palettes_.begin() + index);
    palette->Detach();
    if (palette.get() == recoveredPalette_)
        recoveredPalette_ = nullptr;
    MarkModified();
    return palette;
}

bool CM_PaletteList::SortEntries(UT_UniqueId paletteId) {
    CM_Palette* palette = FindPalette(paletteId);
    if (!palette)
        return false;
    palette->SortEntries();
    NotifyChange(CM_PaletteListData::kEntryMoved, UT_UniqueId(), paletteId);
    return true;
}

CM_Color* CM_PaletteList::AddSolidColor(UT_UniqueId paletteId, UT_WString name, BM_Rgba colour) {
    CM_Palette* palette = FindPalette(paletteId);
    if (!palette)
        return nullptr;
    auto* color = static_cast<CM_Color*>(palette->AddEntry(CM_Color::MakeSolid(std::move(name), colour)));
    NotifyChange(CM_PaletteListData::kEntriesAdded, color->GetId(), paletteId);
    return color;
}

bool CM_PaletteList::SetSolidColor(UT_UniqueId colorId, BM_Rgba colour) {
    const EntryPlace place = FindEntry(colorId);
    if (!place.palette)
        return false;
    auto* color = dynamic_cast<CM_Color*>(place.palette->GetEntry(size_t(place.index)));
    if (!color)
        return false;
    color->SetGradientKind(CM_Color::kSolid);
    color->Stops().clear();
    color->AddStop({0.0, colour, 0});
    NotifyChange(CM_PaletteListData::kEntryEdited, colorId, place.palette->GetId());
    return true;
}

CM_PaletteList::EntryPlace CM_PaletteList::FindEntry(UT_UniqueId id) const {
    for (const auto& palette : palettes_) {
        const int index = palette->Find(id);
        if (index >= 0)
            return {palette.get(), index};
    }
    return {};
}

CM_BaseColorObj* CM_PaletteList::Lookup(UT_UniqueId id) const {
    const auto it = idMap_.find(id);
    return it == idMap_.end() ? nullptr : it->second;
}

CM_BaseColorObj* CM_PaletteList::Resolve(UT_UniqueId id) const {
    if (CM_BaseColorObj* entry = Lookup(id))
        return entry;
    return idMap_.at(kCM_NoColorId);
}

CM_Palette* CM_PaletteList::EnsureRecoveredPalette(UT_UniqueId id) {
    if (recoveredPalette_)
        return recoveredPalette_;
    if (id != UT_UniqueId())
        if (CM_Palette* existing = FindPalette(id))
            return recoveredPalette_ = existing;
    auto palette = std::make_unique<CM_Palette>(u"Recovered", u"Default");
    if (id != UT_UniqueId())
        palette->SetId(id);
    CM_Palette* raw = palette.get();
    InsertPalette(std::move(palette), palettes_.size());
    recoveredPalette_ = raw;
    return raw;
}

size_t CM_PaletteList::Recover(const std::map<UT_UniqueId, const CM_BaseColorObj*>& colours) {
    if (!recover_)
        return 0;
    std::vector<std::unique_ptr<CM_BaseColorObj>> added;
    CM_Palette* palette = nullptr;
    size_t count = 0;
    for (const auto& [id, copy] : colours) {
        if (!copy || Lookup(id))
            continue;
        if (!palette)
            palette = EnsureRecoveredPalette();
        std::unique_ptr<CM_BaseColorObj> entry = copy->DuplicateCurrentStyle();
        entry->SetCurrentStyle(0);
        if (copy->GetId() == kCM_NoColorId) {
            entry->SetId(id);
            entry->SetName(copy->GetClass() == CM_BaseColorObj::kTexture ? u"Deleted texture"
                                                                         : u"Deleted color");
        }
        if (undoable_)
            added.push_back(entry->Duplicate());
        palette->AddEntry(std::move(entry));
        ++count;
    }
    if (count == 0)
        return 0;
    if (undoable_ && commandSink_) {
        auto inverse = std::make_unique<CM_RecoverColors>(this, palette->GetId(), std::move(added),
                                                          CM_RecoverColors::kRemove);
        commandSink_(std::move(inverse), CM_RecoverColors::kName);
    }
    NotifyChange(CM_PaletteListData::kEntriesAdded, UT_UniqueId(), palette->GetId());
    return count;
}

void CM_PaletteList::Notify(const void* sender, const CM_PaletteListData& data) {
    MarkModified();
    CM_PaletteListObservable::Notify(sender, data);
}

void CM_PaletteList::NotifyChange(uint32_t kind, UT_UniqueId colorId, UT_UniqueId paletteId,
                                  const void* sender) {
    Notify(sender, {kind, colorId, paletteId});
}

void CM_PaletteList::Enter(CM_BaseColorObj& entry) {
    const UT_UniqueId id = entry.GetId();
    if (id == kCM_NoColorId || id == kCM_EraserColorId)
        return;
    idMap_[id] = &entry;
}

void CM_PaletteList::Leave(CM_BaseColorObj& entry) {
    const auto it = idMap_.find(entry.GetId());
    if (it != idMap_.end() && it->second == &entry)
        idMap_.erase(it);
}

void ColourRegisterTypes() {
    CPersistentTypeRegistry& registry = CPersistentTypeRegistry::Instance();
    registry.Register<CM_PaletteList>(120, "CM_PaletteList");
    registry.Register<CM_Color>(121, "CM_Color");
    registry.Register<CM_Palette>(122, "CM_Palette");
    registry.Register<CM_RecoverColors>(123, "CM_RecoverColors");
    registry.Register<CM_Texture>(124, "CM_Texture");
    registry.Register<CM_ShareTextureData>(125, "CM_ShareTextureData");
}
