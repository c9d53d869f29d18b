#include "animationset/AS_CommonDrawingLevel.h"

#include "core/DB_Archive.h"
#include "core/DB_FileContainer.h"
#include "core/DB_MemFile.h"
#include "core/UT_FileTransaction.h"

#include <algorithm>
#include <fstream>
#include <iterator>
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

std::unique_ptr<AS_DrawingData> AS_CommonDrawingLevel::CreateDrawing() const {
    return std::make_unique<AS_DrawingData>();
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

bool AS_CommonDrawingLevel::LoadDrawing(AS_DrawingData& drawing, const UT_WString& baseName) const {
    std::ifstream in(GetDrawingPath(baseName).Path(), std::ios::binary);
    if (!in)
        return false;
    std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (in.bad() || !IsValidFile(bytes))
        return false;
    drawing.bytes = std::move(bytes);
    return true;
}

bool AS_CommonDrawingLevel::SaveDrawing(const AS_DrawingData& drawing, const UT_WString& baseName) const {
    const UT_FilePath folder = GetDrawingPath();
    if (!folder.IsFolder() && folder.CreateFolders() != 0)
        return false;
    UT_FileTransaction::Handle transaction = UT_FileTransaction::Get();
    const UT_FilePath temporary = transaction->AddReplace(GetDrawingPath(baseName));
    std::ofstream out(temporary.Path(), std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(drawing.bytes.data()),
              static_cast<std::streamsize>(drawing.bytes.size()));
    out.close();
    return static_cast<bool>(out);
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

bool AS_CommonVectorDrawingLevel::IsValidFile(const std::vector<uint8_t>& bytes) const {
    DB_MemFile file;
    file.Write(bytes.data(), bytes.size());
    file.Rewind();
    DB_Archive archive(&file, false);
    try {
        DB_FileContainer::ReadHeader(archive, 1, u"");
    } catch (const std::exception&) {
        return false;
    }
    return true;
}
