#include "animationset/AS_DopeSheetDrawingObj.h"

#include "core/DB_Archive.h"
#include "core/DB_FileContainer.h"
#include "core/DB_MemFile.h"
#include "core/UT_Format.h"
#include "core/UT_MessageHandler.h"

#include <cstring>

namespace {

// The file kind of vector drawings and the size of its version-51 header.
constexpr uint32_t kDrawingFileKind = 1;
constexpr size_t kHeaderSize = 33;
bool g_loadMessageSilenced = false;

// The typed object that a version-51 drawing file holds behind its header, or an empty
// view when the bytes are not such a file.
bool TypedObjectOfFile(const std::vector<uint8_t>& bytes, const uint8_t*& data, size_t& size) {
    static const char kHead[] = "QuilmoorTechnologiesInc \0"
                                "51\0"
                                "\x01\0\0\0"
                                "\0";
    if (bytes.size() <= kHeaderSize || std::memcmp(bytes.data(), kHead, kHeaderSize) != 0)
        return false;
    data = bytes.data() + kHeaderSize;
    size = bytes.size() - kHeaderSize;
    return true;
}

} // namespace

UT_WString AS_DopeSheetDrawingObj::BaseName() const {
    if (!creator_)
        return name_;
    return creator_->GetElementName() + u"-" + name_;
}

AS_DrawingData* AS_DopeSheetDrawingObj::GetDrawing() {
    if (!drawing_ && hasFile_ && creator_) {
        std::unique_ptr<AS_DrawingData> drawing = creator_->CreateDrawing();
        if (creator_->LoadDrawing(*drawing, BaseName())) {
            drawing->modified = false;
            drawing_ = std::move(drawing);
        } else {
            if (!g_loadMessageSilenced) {
                g_loadMessageSilenced = true;
                UT_MessageHandler::Post(
                    UT_MessageHandler::kWarning,
                    UT_Fmt(u"The file %1$S is related to a drawing and could not be found.\nThe file may "
                           u"have been "
                           u"moved, renamed or deleted.\nFurther error messages will be suppressed.",
                           BaseName()));
            }
            hasFile_ = false;
        }
    }
    return drawing_.get();
}

void AS_DopeSheetDrawingObj::SetDrawing(std::unique_ptr<AS_DrawingData> drawing) {
    drawing_ = std::move(drawing);
    if (drawing_)
        drawing_->modified = true;
}

void AS_DopeSheetDrawingObj::LoadForEdit() {
    if (AS_DrawingData* drawing = GetDrawing())
        drawing->modified = true;
}

void AS_DopeSheetDrawingObj::Rename(const UT_WString& newName) {
    if (newName == name_)
        return;
    LoadForEdit();
    name_ = newName;
}

void AS_DopeSheetDrawingObj::PrepareElementRename() {
    LoadForEdit();
}

void AS_DopeSheetDrawingObj::ClearModified() {
    if (drawing_)
        drawing_->modified = false;
}

void AS_DopeSheetDrawingObj::Release() {
    drawing_.reset();
    hasFile_ = false;
}

void AS_DopeSheetDrawingObj::DropIfUnmodified() {
    if (drawing_ && !drawing_->modified && hasFile_)
        drawing_.reset();
}

void AS_DopeSheetDrawingObj::RemoveFile() {
    if (creator_ && creator_->FileExists(BaseName()))
        creator_->RemoveFile(BaseName());
}

void AS_DopeSheetDrawingObj::Read(DB_Archive& archive) {
    if (archive.Version() < 32)
        archive.ReadWideString();
    archive.ReadWideString(name_);
    id_ = archive.ReadId();
    locked_ = archive.ReadBool();
    drawing_.reset();
    if (!archive.IsEmbedded()) {
        hasFile_ = archive.ReadBool();
        return;
    }
    DB_Archive nested(archive);
    hasFile_ = false;
    if (!nested.ReadBool())
        return;
    // Carried as a typed object; kept as the file that the next save writes.
    std::unique_ptr<CPersistentObjBase> object = nested.ReadNew();
    DB_MemFile image;
    DB_Archive writer(&image, false);
    DB_FileContainer::WriteHeader(writer, kDrawingFileKind);
    writer.WriteTyped(*object);
    auto drawing = std::make_unique<AS_DrawingData>();
    drawing->bytes.assign(image.Data(), image.Data() + image.Size());
    drawing->modified = true;
    drawing_ = std::move(drawing);
}

void AS_DopeSheetDrawingObj::Write(DB_Archive& archive) {
    archive.WriteWideString(name_);
    archive.WriteId(id_);
    archive.WriteBool(locked_);
    if (!archive.IsEmbedded()) {
        // A project read from an earlier version rewrites every drawing file in the
        // current form: each drawing is loaded for it and let go again afterwards.
        const bool loadedForConversion = archive.IsConverting() && !drawing_ && GetDrawing();
        if (loadedForConversion)
            drawing_->modified = true;
        if (drawing_ && drawing_->modified && creator_ && creator_->SaveDrawing(*drawing_, BaseName())) {
            drawing_->modified = false;
            hasFile_ = true;
        }
        archive.WriteBool(hasFile_);
        if (loadedForConversion)
            drawing_.reset();
        return;
    }
    DB_Archive nested(archive);
    const uint8_t* data = nullptr;
    size_t size = 0;
    const AS_DrawingData* drawing = GetDrawing();
    const bool present = drawing && TypedObjectOfFile(drawing->bytes, data, size);
    nested.WriteBool(present);
    if (present)
        nested.WriteRaw(data, size);
}
