#include "render/BM_PixelTypes.h"

#include "render/BM_PixelMap.h"

#include <algorithm>

BM_Rgba BM_HsvToRgb(uint8_t h, uint8_t s, uint8_t v, uint8_t a) {
    if (s == 0)
        return {v, v, v, a};
    const int h3 = h * 3;
    const int sextant = h3 >> 7;
    const int frac = h3 & 0x7F;
    const int S = s, V = v;
    const auto p = static_cast<uint8_t>(((255 - S) * V) / 255);
    const auto q = static_cast<uint8_t>(((255 - ((2 * frac) * S) / 255) * V) / 255);
    const auto t = static_cast<uint8_t>(((255 - ((255 - 2 * frac) * S) / 255) * V) / 255);
    switch (sextant) {
    case 0:
        return {v, t, p, a};
    case 1:
        return {q, v, p, a};
    case 2:
        return {p, v, t, a};
    case 3:
        return {p, q, v, a};
    case 4:
        return {t, p, v, a};
    default:
        return {v, p, q, a};
    }
}

void BM_RgbToHsv(uint8_t r, uint8_t g, uint8_t b, uint8_t& h, uint8_t& s, uint8_t& v) {
    const int maxC = std::max({r, g, b});
    const int minC = std::min({r, g, b});
    const int delta = maxC - minC;
    v = static_cast<uint8_t>(maxC);
    if (delta == 0) {
        h = 0;
        s = 0;
        return;
    }
    s = static_cast<uint8_t>((delta * 255 + maxC / 2) / maxC);
    // Each sextant has one channel at the maximum, one at the minimum and one moving
    // between them, rising in the even sextants and falling in the odd ones. Its place
    // within the sextant is frac/127.5, as in BM_HsvToRgb.
    int sextant, mid;
    if (maxC == r && minC == b)
        sextant = 0, mid = g;
    else if (maxC == g && minC == b)
        sextant = 1, mid = r;
    else if (maxC == g && minC == r)
        sextant = 2, mid = b;
    else if (maxC == b && minC == r)
        sextant = 3, mid = g;
    else if (maxC == b && minC == g)
        sextant = 4, mid = r;
    else
        sextant = 5, mid = b;
    const int along = (sextant & 1) ? maxC - mid : mid - minC;
    const int frac = (along * 255 + delta) / (2 * delta);
    h = static_cast<uint8_t>(((sextant * 128 + frac + 1) / 3) & 0xFF);
}

std::unique_ptr<BM_Bitmap> BM_MakePixelMap(BM_PixelType type, uint32_t width, uint32_t height) {
    switch (type) {
    case BM_PixelType::Bgra32:
        return std::make_unique<BM_PixelMap<BM_PixelBgra32>>(width, height);
    case BM_PixelType::Rgba32:
        return std::make_unique<BM_PixelMap<BM_PixelRgba32>>(width, height);
    case BM_PixelType::Argb32:
        return std::make_unique<BM_PixelMap<BM_PixelArgb32>>(width, height);
    case BM_PixelType::Hsva32:
        return std::make_unique<BM_PixelMap<BM_PixelHsva32>>(width, height);
    case BM_PixelType::Bgr24:
        return std::make_unique<BM_PixelMap<BM_PixelBgr24>>(width, height);
    case BM_PixelType::Rgb24:
        return std::make_unique<BM_PixelMap<BM_PixelRgb24>>(width, height);
    case BM_PixelType::Hsv24:
        return std::make_unique<BM_PixelMap<BM_PixelHsv24>>(width, height);
    case BM_PixelType::Argb16:
        return std::make_unique<BM_PixelMap<BM_PixelArgb16>>(width, height);
    case BM_PixelType::Bgra16:
        return std::make_unique<BM_PixelMap<BM_PixelBgra16>>(width, height);
    case BM_PixelType::Pixel8:
        return std::make_unique<BM_PixelMap<BM_Pixel8>>(width, height);
    case BM_PixelType::Gray8:
        return std::make_unique<BM_PixelMap<BM_PixelGray8>>(width, height);
    case BM_PixelType::Pixel4:
        return std::make_unique<BM_PixelMap<BM_Pixel4>>(width, height);
    case BM_PixelType::Pixel2:
        return std::make_unique<BM_PixelMap<BM_Pixel2>>(width, height);
    case BM_PixelType::Pixel1:
        return std::make_unique<BM_PixelMap<BM_Pixel1>>(width, height);
    }
    return nullptr;
}
