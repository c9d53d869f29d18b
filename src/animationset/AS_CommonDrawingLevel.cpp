#include "animationset/AS_CommonDrawingLevel.h"

#include "core/DB_Archive.h"
#include "core/DB_Exception.h"
#include "core/DB_FileContainer.h"
#include "core/UT_FileTransaction.h"
#include "render/BM_TgaCodec.h"
#include "vector/GR_BitmapDrawingObj.h"
#include "vector/GR_VectorDrawingObj.h"

#include <algorithm>
#include <string>

void AS_CommonDrawingLevel::Read(DB_Archive& archive) {
    palettes_ = static_cast<CM_PaletteList*>(archive.Context());
    AS_CommonLevel::Read(archive);
    nextDrawingId_ = archive.ReadU32();
    // An entry takes at least its key, two counts and two flags.
    const uint32_t count = archive.ReadCount(14);
    drawings_.clear();
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t key = archive.ReadId();
        auto entry = std::make_unique<AS_DopeSheetDrawingObj>();
        entry->Read(archive);
        drawings_[key] = std::move(entry);
    }
    for (auto& [key, entry] : drawings_)
        entry->SetCreator(this);
    // A damaged counter would hand out the id of a drawing that exists and overwrite it.
    if (!drawings_.empty() && drawings_.rbegin()->first != AS_kInvalidId)
        nextDrawingId_ = std::max(nextDrawingId_, drawings_.rbegin()->first + 1);
}

void AS_CommonDrawingLevel::Write(DB_Archive& archive) {
    AS_CommonLevel::Write(archive);
    archive.WriteU32(nextDrawingId_);
    archive.WriteCount(drawings_.size());
    for (auto& [key, entry] : drawings_) {
        archive.WriteId(key);
        entry->Write(archive);
    }
}

void AS_CommonDrawingLevel::SetName(const UT_WString& name) {
    if (name == name_)
        return;
    for (auto& [key, entry] : drawings_)
        entry->PrepareElementRename();
    name_ = name;
}

void AS_CommonDrawingLevel::ClearModified() {
    for (auto& [key, entry] : drawings_)
        entry->ClearModified();
}

UT_FilePath AS_CommonDrawingLevel::GetDrawingPath() const {
    return folder_.Append(GetFolderName());
}

UT_FilePath AS_CommonDrawingLevel::GetDrawingPath(const UT_WString& baseName) const {
    return GetDrawingPath().Append(baseName + u"." + GetFileExtension());
}

bool AS_CommonDrawingLevel::FileExists(const UT_WString& baseName) const {
    return GetDrawingPath(baseName).IsFile();
}

UT_FilePath AS_CommonDrawingLevel::TemporaryFileFor(const UT_WString& baseName) const {
    const UT_FilePath folder = GetDrawingPath();
    if (!folder.IsFolder() && folder.CreateFolders() != 0)
        return UT_FilePath();
    return UT_FileTransaction::Get()->AddReplace(GetDrawingPath(baseName));
}

void AS_CommonDrawingLevel::RemoveFile(const UT_WString& baseName) const {
    UT_FileTransaction::Get()->AddDelete(GetDrawingPath(baseName), UT_FileTransaction::kDelete);
}

AS_DopeSheetDrawingObj* AS_CommonDrawingLevel::FindDrawing(uint32_t id) const {
    auto it = drawings_.find(id);
    return it == drawings_.end() ? nullptr : it->second.get();
}

AS_DopeSheetDrawingObj* AS_CommonDrawingLevel::FindDrawingByName(const UT_WString& name) const {
    for (const auto& [key, entry] : drawings_)
        if (entry->GetName() == name)
            return entry.get();
    return nullptr;
}

uint32_t AS_CommonDrawingLevel::AddDrawing(const UT_WString& name) {
    const uint32_t id = nextDrawingId_++;
    AddDrawingWithId(id, name);
    return id;
}

AS_DopeSheetDrawingObj* AS_CommonDrawingLevel::AddDrawingWithId(uint32_t id, const UT_WString& name) {
    auto entry = std::make_unique<AS_DopeSheetDrawingObj>(name, id);
    entry->SetCreator(this);
    AS_DopeSheetDrawingObj* raw = entry.get();
    drawings_[id] = std::move(entry);
    // The counter always stays above every id in the table, so that a new drawing can
    // never take the place of one that exists, whatever order entries arrive in.
    if (id != AS_kInvalidId && id >= nextDrawingId_)
        nextDrawingId_ = id + 1;
    return raw;
}

void AS_CommonDrawingLevel::RemoveDrawing(uint32_t id) {
    drawings_.erase(id);
}

std::vector<UT_WString> AS_CommonDrawingLevel::GetDrawingNames() const {
    std::vector<UT_WString> names;
    for (const auto& [key, entry] : drawings_)
        names.push_back(entry->GetName());
    return names;
}

UT_WString AS_CommonDrawingLevel::MakeNewDrawingName() const {
    uint64_t highest = 0;
    for (const auto& [key, entry] : drawings_) {
        uint64_t value = 0;
        for (char16_t c : entry->GetName()) {
            if (c < u'0' || c > u'9')
                break;
            // Names of absurd length saturate rather than wrap.
            value = std::min<uint64_t>(value * 10 + static_cast<uint64_t>(c - u'0'), UINT32_MAX);
        }
        highest = std::max(highest, value);
    }
    const std::string text = std::to_string(highest + 1);
    return UT_WString(text.begin(), text.end());
}

std::vector<uint32_t> AS_CommonDrawingLevel::GetDrawingIds() const {
    std::vector<uint32_t> ids;
    for (const auto& [key, entry] : drawings_)
        ids.push_back(key);
    return ids;
}

void AS_CommonDrawingLevel::ReleaseDrawings() {
    for (auto& [key, entry] : drawings_)
        entry->Release();
}

void AS_CommonDrawingLevel::ReleaseUnmodified() {
    for (auto& [key, entry] : drawings_)
        entry->DropIfUnmodified();
}

void AS_CommonDrawingLevel::RemoveDrawingFiles() {
    for (auto& [key, entry] : drawings_)
        if (entry->HasFile())
            entry->RemoveFile();
}

std::unique_ptr<GR_DrawingObj> AS_CommonVectorDrawingLevel::CreateDrawing() const {
    return std::make_unique<GR_VectorDrawingObj>();
}

bool AS_CommonVectorDrawingLevel::LoadDrawing(GR_DrawingObj& drawing, const UT_WString& baseName) const {
    const UT_FilePath path = GetDrawingPath(baseName);
    if (!path.IsFile())
        return false;
    try {
        DB_FileContainer::LoadTyped(path, drawing, DB_FileContainer::kVectorDrawing, GetPaletteList());
    } catch (const DB_Exception&) {
        return false;
    }
    return true;
}

bool AS_CommonVectorDrawingLevel::SaveDrawing(GR_DrawingObj& drawing, const UT_WString& baseName) const {
    const UT_FilePath temporary = TemporaryFileFor(baseName);
    if (temporary.IsEmpty())
        return false;
    try {
        DB_FileContainer::SaveTyped(temporary, drawing, DB_FileContainer::kVectorDrawing, GetPaletteList());
    } catch (const DB_Exception&) {
        return false;
    }
    return true;
}

std::unique_ptr<GR_DrawingObj> AS_CommonBitmapDrawingLevel::CreateDrawing() const {
    return std::make_unique<GR_BitmapDrawingObj>();
}

bool AS_CommonBitmapDrawingLevel::LoadDrawing(GR_DrawingObj& drawing, const UT_WString& baseName) const {
    auto* image = dynamic_cast<GR_BitmapDrawingObj*>(&drawing);
    auto bitmap = std::make_unique<BM_QMTBitmap>();
    if (!image || !bitmap->LoadFromFile(GetDrawingPath(baseName)))
        return false;
    image->SetBitmap(std::move(bitmap));
    return true;
}

bool AS_CommonBitmapDrawingLevel::SaveDrawing(GR_DrawingObj& drawing, const UT_WString& baseName) const {
    const auto* image = dynamic_cast<GR_BitmapDrawingObj*>(&drawing);
    if (!image || !image->GetBitmap() || !image->GetBitmap()->GetBitmap())
        return false;
    const UT_FilePath temporary = TemporaryFileFor(baseName);
    UT_WString error;
    return !temporary.IsEmpty() && BM_TgaCodec::Save(temporary, *image->GetBitmap()->GetBitmap(), error);
}
