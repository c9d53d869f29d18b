#include "vector/GR_BitmapDrawingObj.h"

#include "core/DB_Archive.h"

void GR_BitmapDrawingObj::Read(DB_Archive& archive) {
    if (archive.Version() < 32)
        archive.ReadU32();
    bitmap_.reset();
    if (archive.ReadBool()) {
        auto bitmap = std::make_unique<BM_QMTBitmap>();
        bitmap->Read(archive);
        bitmap_ = std::move(bitmap);
    }
    RenewStamp();
}

void GR_BitmapDrawingObj::Write(DB_Archive& archive) {
    archive.WriteBool(bitmap_ != nullptr);
    if (bitmap_)
        bitmap_->Write(archive);
}

GR_Box2d GR_BitmapDrawingObj::GetBounds() {
    GR_Box2d box;
    if (bitmap_ && bitmap_->GetBitmap()) {
        box.Add({0.0, 0.0});
        box.Add({static_cast<double>(bitmap_->GetWidth()), static_cast<double>(bitmap_->GetHeight())});
    }
    return box;
}

void GR_BitmapDrawingObj::SetBitmap(std::unique_ptr<BM_QMTBitmap> bitmap) {
    bitmap_ = std::move(bitmap);
    MarkChanged();
}
