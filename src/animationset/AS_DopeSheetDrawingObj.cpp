#include "animationset/AS_DopeSheetDrawingObj.h"

#include "core/DB_Archive.h"
#include "core/UT_Format.h"
#include "core/UT_MessageHandler.h"
#include "vector/GR_BitmapDrawingObj.h"

namespace {

bool g_loadMessageSilenced = false;

} // namespace

UT_WString AS_DopeSheetDrawingObj::BaseName() const {
    if (!creator_)
        return name_;
    return creator_->GetElementName() + u"-" + name_;
}

GR_DrawingObj* AS_DopeSheetDrawingObj::GetDrawing() {
    if (!drawing_ && hasFile_ && creator_) {
        std::unique_ptr<GR_DrawingObj> drawing = creator_->CreateDrawing();
        if (creator_->LoadDrawing(*drawing, BaseName())) {
            drawing->SetModified(false);
            drawing_ = std::move(drawing);
        } else {
            if (dynamic_cast<GR_BitmapDrawingObj*>(drawing.get())) {
                UT_MessageHandler::Post(UT_MessageHandler::kWarning,
                                        UT_Fmt(u"Unable to load the image file %1$S", BaseName()));
            } else if (!g_loadMessageSilenced) {
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

void AS_DopeSheetDrawingObj::SetDrawing(std::unique_ptr<GR_DrawingObj> drawing) {
    drawing_ = std::move(drawing);
    if (drawing_)
        drawing_->SetModified(true);
}

void AS_DopeSheetDrawingObj::LoadForEdit() {
    if (GR_DrawingObj* drawing = GetDrawing())
        drawing->SetModified(true);
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
        drawing_->SetModified(false);
}

void AS_DopeSheetDrawingObj::Release() {
    drawing_.reset();
    hasFile_ = false;
}

void AS_DopeSheetDrawingObj::DropIfUnmodified() {
    if (drawing_ && !drawing_->IsModified() && hasFile_)
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
    // The drawing travels in a nested archive; the next save of the project writes its file.
    DB_Archive nested(archive);
    hasFile_ = false;
    if (!nested.ReadBool())
        return;
    std::unique_ptr<GR_DrawingObj> drawing = nested.ReadNewAs<GR_DrawingObj>();
    drawing->SetModified(true);
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
            drawing_->SetModified(true);
        if (drawing_ && drawing_->IsModified() && creator_ && creator_->SaveDrawing(*drawing_, BaseName())) {
            drawing_->SetModified(false);
            hasFile_ = true;
        }
        archive.WriteBool(hasFile_);
        if (loadedForConversion)
            drawing_.reset();
        return;
    }
    DB_Archive nested(archive);
    GR_DrawingObj* drawing = GetDrawing();
    nested.WriteBool(drawing != nullptr);
    if (drawing)
        nested.WriteTyped(*drawing);
}
