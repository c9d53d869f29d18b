#include "colour/CM_ShareTextureData.h"

#include "render/BM_Convert.h"

CM_ShareTextureData::CM_ShareTextureData() {
    Rebuild();
}

CM_ShareTextureData::CM_ShareTextureData(const UT_FilePath& path) {
    if (!image_.LoadFromFile(path))
        image_.SetBitmap(MakePlaceholder());
    Rebuild();
}

CM_ShareTextureData::CM_ShareTextureData(std::unique_ptr<BM_Bitmap> image) {
    SetImage(std::move(image));
}

void CM_ShareTextureData::SetImage(std::unique_ptr<BM_Bitmap> image) {
    image_.SetBitmap(std::move(image));
    Rebuild();
}

void CM_ShareTextureData::Read(DB_Archive& archive) {
    image_.Read(archive);
    Rebuild();
}

void CM_ShareTextureData::Write(DB_Archive& archive) {
    image_.Write(archive);
}

std::unique_ptr<BM_PixelMap<BM_PixelRgba32>> CM_ShareTextureData::MakePlaceholder() {
    auto map = std::make_unique<BM_PixelMap<BM_PixelRgba32>>(kPlaceholderSize, kPlaceholderSize);
    const uint32_t half = kPlaceholderSize / 2;
    for (uint32_t y = 0; y < kPlaceholderSize; ++y)
        for (uint32_t x = 0; x < kPlaceholderSize; ++x) {
            const bool red = (x < half) == (y < half);
            map->SetPixel(
                x, y, red ? BM_PixelRgba32::Make(255, 0, 0, 255) : BM_PixelRgba32::Make(255, 255, 255, 0));
        }
    return map;
}

void CM_ShareTextureData::Rebuild() {
    const BM_Bitmap* image = image_.GetBitmap();
    opaque_ = true;
    if (!image || image->IsEmpty()) {
        thumbnail_.Resize(kThumbnailSize, kThumbnailSize);
        preview_.Resize(kPreviewSize, kPreviewSize);
        return;
    }
    BM_Scale(*image, kThumbnailSize, kThumbnailSize, thumbnail_);
    BM_Scale(*image, kPreviewSize, kPreviewSize, preview_);
    if (image->GetPixelType() == BM_PixelType::Rgba32) {
        const auto& rgba = static_cast<const BM_PixelMap<BM_PixelRgba32>&>(*image);
        for (uint32_t y = 0; y < rgba.Height() && opaque_; ++y)
            for (uint32_t x = 0; x < rgba.Width(); ++x)
                if (rgba.GetPixel(x, y).a != 255) {
                    opaque_ = false;
                    break;
                }
    } else if (image->GetBitsPerPixel() == 32) {
        opaque_ = false;
    }
}
