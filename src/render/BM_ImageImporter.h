#pragma once

#include "core/UT_FilePath.h"
#include "core/UT_String.h"
#include "render/BM_PixelMap.h"

// Reads image files into BM_PixelRgba32 maps, top row first: TGA through our own codec,
// everything else (PNG, JPEG, BMP, TIFF, GIF, PSD, WebP, ...) through FFmpeg's decoders.
class BM_ImageImporter {
public:
    // On failure `out` is unchanged and `error` says why.
    static bool Load(const UT_FilePath& path, BM_PixelMap<BM_PixelRgba32>& out, UT_WString& error);
    // The FFmpeg path alone: the first picture of the file.
    static bool LoadWithDecoders(const UT_FilePath& path, BM_PixelMap<BM_PixelRgba32>& out,
                                 UT_WString& error);
};
