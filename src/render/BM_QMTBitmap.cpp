#include "render/BM_QMTBitmap.h"

#include "core/CPersistentType.h"
#include "core/DB_Archive.h"
#include "core/DB_Exception.h"
#include "render/BM_Convert.h"
#include "render/BM_ImageExporter.h"
#include "render/BM_ImageImporter.h"
#include "render/BM_PixelMap.h"

#include <algorithm>
#include <cstdint>
#include <vector>

namespace {

// The map that a record of the given depth code holds, as it was in memory when stored.
std::unique_ptr<BM_Bitmap> MapForDepth(int32_t depth, uint32_t width, uint32_t height) {
    switch (depth) {
    case 24:
        return std::make_unique<BM_PixelMap<BM_PixelRgb24>>(width, height);
    case 16:
        return std::make_unique<BM_PixelMap<BM_PixelArgb16>>(width, height);
    case 8:
        return std::make_unique<BM_PixelMap<BM_Pixel8>>(width, height);
    case 0:
        return std::make_unique<BM_PixelMap<BM_PixelGray8>>(width, height);
    default:
        return std::make_unique<BM_PixelMap<BM_PixelRgba32>>(width, height);
    }
}

uint64_t RecordBytes(int32_t depth, uint32_t width, uint32_t height) {
    switch (depth) {
    case 24:
        return BM_PixelRgb24::Stride(width) * height;
    case 16:
        return BM_PixelArgb16::Stride(width) * height;
    case 8:
    case 0:
        return BM_PixelGray8::Stride(width) * height;
    default:
        return BM_PixelRgba32::Stride(width) * height;
    }
}

} // namespace

void BM_QMTBitmap::Load(DB_Archive& archive) {
    const uint32_t size = archive.ReadU32();
    if (size < 1)
        return;
    const int32_t width = archive.ReadI32();
    const int32_t height = archive.ReadI32();
    const int32_t depth = archive.ReadI32();
    // The pixels and the reserved byte must be there, and must cover the map that the
    // header describes, before anything is allocated.
    archive.RequireBytes(uint64_t(size) + 1);
    if (width < 0 || height < 0 || RecordBytes(depth, uint32_t(width), uint32_t(height)) > size)
        archive.ThrowUnexpected();
    // Every record ends as a 24 or 32-bit map: one that could not be held in memory is
    // damage, even when it has no rows at all.
    const uint64_t rgbaStride = BM_PixelRgba32::Stride(uint32_t(width));
    if (rgbaStride > UINT32_MAX || rgbaStride * uint64_t(height) > UINT32_MAX)
        archive.ThrowUnexpected();
    std::unique_ptr<BM_Bitmap> map = MapForDepth(depth, uint32_t(width), uint32_t(height));
    archive.ReadRaw(map->Data(), map->Size());
    // A record may hold more than its map: the rest is skipped.
    std::vector<uint8_t> rest(std::min<uint32_t>(size - map->Size(), 1u << 16));
    for (uint32_t left = size - map->Size(); left > 0;) {
        const uint32_t chunk = std::min<uint32_t>(left, uint32_t(rest.size()));
        archive.ReadRaw(rest.data(), chunk);
        left -= chunk;
    }
    archive.ReadU8();
    // Depths other than 24 and 32 come back as RGBA.
    if (depth != 24 && map->GetPixelType() != BM_PixelType::Rgba32) {
        auto rgba = std::make_unique<BM_PixelMap<BM_PixelRgba32>>();
        BM_Convert(*rgba, *map);
        map = std::move(rgba);
    }
    bitmap_ = std::move(map);
    OnChanged();
}

void BM_QMTBitmap::Store(DB_Archive& archive) {
    if (!bitmap_ || bitmap_->Size() == 0) {
        archive.WriteU32(0);
        return;
    }
    const BM_Bitmap* source = bitmap_.get();
    BM_PixelMap<BM_PixelRgba32> converted;
    const uint32_t bits = source->GetBitsPerPixel();
    if (bits != 24 && bits != 32) {
        BM_Convert(converted, *source);
        source = &converted;
    }
    archive.WriteU32(source->Size());
    archive.WriteI32(static_cast<int32_t>(source->Width()));
    archive.WriteI32(static_cast<int32_t>(source->Height()));
    archive.WriteI32(static_cast<int32_t>(source->GetBitsPerPixel()));
    archive.WriteRaw(source->Data(), source->Size());
    archive.WriteU8(0);
}

void BM_QMTBitmap::OnChanged() {
    if (hook_)
        hook_->OnBitmapChanged();
}

void BM_QMTBitmap::SetBitmap(std::unique_ptr<BM_Bitmap> bitmap) {
    bitmap_ = std::move(bitmap);
    OnChanged();
}

int32_t BM_QMTBitmap::GetDepth() const {
    if (!bitmap_)
        return -1;
    switch (bitmap_->GetBitsPerPixel()) {
    case 32:
        return 32;
    case 24:
        return 24;
    case 16:
        return 16;
    case 8:
        return bitmap_->GetPixelType() == BM_PixelType::Gray8 ? 0 : 8;
    default:
        return -1;
    }
}

bool BM_QMTBitmap::LoadFromFile(const UT_FilePath& path, UT_WString* error) {
    auto map = std::make_unique<BM_PixelMap<BM_PixelRgba32>>();
    UT_WString message;
    if (!BM_ImageImporter::Load(path, *map, message)) {
        if (error)
            *error = message;
        return false;
    }
    SetBitmap(std::move(map));
    return true;
}

bool BM_QMTBitmap::SaveToFile(const UT_FilePath& path, UT_WString* error) const {
    UT_WString message;
    if (!bitmap_) {
        message = u"There is no image to save.";
    } else if (BM_ImageExporter::Save(path, *bitmap_, message)) {
        return true;
    }
    if (error)
        *error = message;
    return false;
}

void PixelsRegisterTypes() {
    CPersistentTypeRegistry::Instance().Register<BM_QMTBitmap>(401, "BM_QMTBitmap");
}
