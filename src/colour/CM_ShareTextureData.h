#pragma once

#include "core/CPersistentObjBase.h"
#include "core/UT_FilePath.h"
#include "render/BM_PixelMap.h"
#include "render/BM_QMTBitmap.h"

#include <cstdint>
#include <memory>

// The image of a texture, shared by every style and entry that shows it (type 125).
// Held through std::shared_ptr, as the archive's table of shared references hands it out.
class CM_ShareTextureData : public CPersistentObjBase {
public:
    static constexpr uint32_t kThumbnailSize = 16;
    static constexpr uint32_t kPreviewSize = 64;
    static constexpr uint32_t kPlaceholderSize = 32;

    // An empty image with empty small bitmaps.
    CM_ShareTextureData();
    // The image of a file, or the checker placeholder if the file cannot be read.
    explicit CM_ShareTextureData(const UT_FilePath& path);
    // Takes the image.
    explicit CM_ShareTextureData(std::unique_ptr<BM_Bitmap> image);
    CM_ShareTextureData(const CM_ShareTextureData&) = delete;
    CM_ShareTextureData& operator=(const CM_ShareTextureData&) = delete;
    ~CM_ShareTextureData() override = default;

    // The image's bare body; the small bitmaps are rebuilt.
    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;

    const BM_QMTBitmap& Image() const { return image_; }
    BM_QMTBitmap& Image() { return image_; }
    void SetImage(std::unique_ptr<BM_Bitmap> image);
    const BM_PixelMap<BM_PixelRgba32>& Thumbnail() const { return thumbnail_; }
    const BM_PixelMap<BM_PixelRgba32>& Preview() const { return preview_; }
    // True if every pixel of the image is opaque.
    bool IsOpaque() const { return opaque_; }
    uint32_t GetCacheId() const { return cacheId_; }
    void SetCacheId(uint32_t id) { cacheId_ = id; }

    // 32 x 32 pixels: opaque red in the top-left and bottom-right squares of 16 x 16,
    // transparent white in the other two.
    static std::unique_ptr<BM_PixelMap<BM_PixelRgba32>> MakePlaceholder();

private:
    // Remakes the thumbnail, the preview and the opacity from the image.
    void Rebuild();

    BM_QMTBitmap image_;
    BM_PixelMap<BM_PixelRgba32> thumbnail_;
    BM_PixelMap<BM_PixelRgba32> preview_;
    bool opaque_ = true;
    uint32_t cacheId_ = 0;
};
