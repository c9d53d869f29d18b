#pragma once

#include "core/UT_FilePath.h"
#include "core/UT_String.h"
#include "render/BM_PixelMap.h"

#include <cstddef>
#include <cstdint>
#include <vector>

// Truevision TGA, the format of the project's bitmap files. Writes uncompressed
// true-colour images of 32 bits (8 of them alpha) with the origin at the top left.
// Reads true-colour and gray images, plain or run-length encoded (types 2, 3, 10, 11),
// of 15, 16, 24 or 32 bits (8 or 16 for gray), with either vertical or horizontal origin.
class BM_TgaCodec {
public:
    // On failure `out` is unchanged and `error` says why.
    static bool Decode(const uint8_t* data, size_t size, BM_PixelMap<BM_PixelRgba32>& out, UT_WString& error);
    static bool Load(const UT_FilePath& path, BM_PixelMap<BM_PixelRgba32>& out, UT_WString& error);

    // The file bytes of any bitmap; false if it is larger than TGA allows (65535 pixels a side).
    static bool Encode(const BM_Bitmap& bitmap, std::vector<uint8_t>& bytes, UT_WString& error);
    static bool Save(const UT_FilePath& path, const BM_Bitmap& bitmap, UT_WString& error);

    // True if the bytes start like a TGA file of a type that Decode reads.
    static bool LooksLikeTga(const uint8_t* data, size_t size);
};
