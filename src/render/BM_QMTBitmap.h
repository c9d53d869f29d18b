#pragma once

#include "core/CPersistentObjBase.h"
#include "core/UT_FilePath.h"
#include "core/UT_String.h"
#include "render/BM_Bitmap.h"

#include <cstdint>
#include <memory>

// Told when the bitmap of a BM_QMTBitmap changes; textures made from it are dropped then.
class BM_QMTBitmapHook {
public:
    virtual ~BM_QMTBitmapHook() = default;
    virtual void OnBitmapChanged() {}
};

// The persistent wrapper through which a bitmap lives in a document (type 401).
class BM_QMTBitmap : public CPersistentObjBase {
public:
    BM_QMTBitmap() = default;
    BM_QMTBitmap(const BM_QMTBitmap&) = delete;
    BM_QMTBitmap& operator=(const BM_QMTBitmap&) = delete;
    ~BM_QMTBitmap() override = default;

    void Read(DB_Archive& archive) override { Load(archive); }
    void Write(DB_Archive& archive) override { Store(archive); }
    // Reads a record; a size of 0 leaves the object as it was.
    virtual void Load(DB_Archive& archive);
    // Writes a record: 24-bit maps as they are, 32-bit maps as they are, anything else
    // converted to BM_PixelRgba32 first.
    virtual void Store(DB_Archive& archive);
    // Tells the hook.
    virtual void OnChanged();

    // Takes ownership of the new bitmap (which may be null), then calls OnChanged.
    void SetBitmap(std::unique_ptr<BM_Bitmap> bitmap);
    BM_Bitmap* GetBitmap() const { return bitmap_.get(); }
    uint32_t GetWidth() const { return bitmap_ ? bitmap_->Width() : 0; }
    uint32_t GetHeight() const { return bitmap_ ? bitmap_->Height() : 0; }
    // 24 and 32 for those depths, 16 for 16 bits, 8 for an 8-bit map other than gray,
    // 0 for BM_PixelGray8, -1 for anything else (and for no bitmap).
    int32_t GetDepth() const;

    void SetHook(std::unique_ptr<BM_QMTBitmapHook> hook) { hook_ = std::move(hook); }
    BM_QMTBitmapHook* GetHook() const { return hook_.get(); }

    // Loads an image file into a BM_PixelRgba32 map: TGA through our codec, any other
    // type through the platform's decoders. On failure the object is unchanged and
    // `error` says why.
    bool LoadFromFile(const UT_FilePath& path, UT_WString* error = nullptr);
    // Saves the bitmap by the file name's extension: a 32-bit TGA file, or a PNG file.
    bool SaveToFile(const UT_FilePath& path, UT_WString* error = nullptr) const;

private:
    std::unique_ptr<BM_Bitmap> bitmap_;
    std::unique_ptr<BM_QMTBitmapHook> hook_;
};

// Registers BM_QMTBitmap (401) with the type registry. Safe to call twice.
void PixelsRegisterTypes();
