#pragma once

#include "render/BM_Bitmap.h"

#include <cstdint>

// Converts `src` into the pixel type of `dst`, giving `dst` the size of `src` first.
// Returns false, leaving `dst` as it was, when the destination type is one that is
// never written (BM_Pixel4, BM_Pixel2, BM_Pixel1).
bool BM_Convert(BM_Bitmap& dst, const BM_Bitmap& src);

// Scales `src` to the new size into `dst`, converting to the type of `dst` on the way:
// a box average when no dimension grows, a separable resampler otherwise.
bool BM_Scale(const BM_Bitmap& src, uint32_t newWidth, uint32_t newHeight, BM_Bitmap& dst);

// Copies a rectangle between two maps of the same type, BM_PixelBgra32 or BM_PixelRgba32.
// The rectangle is cut to what both maps hold. Returns false for other pixel types or a
// type mismatch.
bool BM_Blit(BM_Bitmap& dst, int32_t x, int32_t y, int32_t width, int32_t height, const BM_Bitmap& src,
             int32_t srcX, int32_t srcY);
