#pragma once

#include "render/BM_QMTBitmap.h"
#include "vector/GR_DrawingObj.h"

#include <memory>

// A drawing of an image element (type 203): one bitmap, which may be missing.
class GR_BitmapDrawingObj : public GR_DrawingObj {
public:
    GR_BitmapDrawingObj() = default;

    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;
    // The bitmap's rectangle of pixels from the origin; empty without a bitmap.
    GR_Box2d GetBounds() override;

    BM_QMTBitmap* GetBitmap() const { return bitmap_.get(); }
    void SetBitmap(std::unique_ptr<BM_QMTBitmap> bitmap);

private:
    std::unique_ptr<BM_QMTBitmap> bitmap_;
};
