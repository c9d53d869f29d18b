#pragma once

#include "core/UT_FilePath.h"
#include "core/UT_String.h"
#include "render/BM_Bitmap.h"

#include <cstdint>
#include <vector>

// Writes bitmaps as image files, by the file name's extension: TGA through our own codec,
// PNG through FFmpeg's encoder.
class BM_ImageExporter {
public:
    // True if Save knows the extension of the path.
    static bool CanSave(const UT_FilePath& path);
    // On failure `error` says why and no file is left half written by us.
    static bool Save(const UT_FilePath& path, const BM_Bitmap& bitmap, UT_WString& error);
    // The bytes of a PNG file of the bitmap, with its alpha.
    static bool EncodePng(const BM_Bitmap& bitmap, std::vector<uint8_t>& bytes, UT_WString& error);
};
