#pragma once

#include <cstdint>
#include <cstring>

// The pixel types of the bitmaps. Each type knows its depth, its row stride and how to
// move one pixel between a row of memory and a plain RGBA value. Conversion loops are
// instantiated per pair of types from these inline operations, so a row is converted
// without any per-pixel dispatch.

enum class BM_PixelType : uint8_t {
    Bgra32,
    Rgba32,
    Argb32,
    Hsva32,
    Bgr24,
    Rgb24,
    Hsv24,
    Argb16,
    Bgra16,
    Pixel8,
    Gray8,
    Pixel4,
    Pixel2,
    Pixel1,
};

// A colour with straight (not premultiplied) alpha; the common currency of conversion.
struct BM_Rgba {
    uint8_t r = 0, g = 0, b = 0, a = 0;
    constexpr bool operator==(const BM_Rgba&) const = default;
};

namespace BM_Stride {
// Rows of four bytes a pixel need no rounding; every other row is padded to four bytes.
constexpr uint64_t Unpadded(uint64_t width, uint32_t bits) {
    return (width * bits + 7) >> 3;
}
constexpr uint64_t Padded(uint64_t width, uint32_t bits) {
    return (Unpadded(width, bits) + 3) & ~uint64_t(3);
}
} // namespace BM_Stride

// Integer HSV with all channels in 0..255; a hue byte covers six sextants.
BM_Rgba BM_HsvToRgb(uint8_t h, uint8_t s, uint8_t v, uint8_t a);
// The inverse of BM_HsvToRgb, up to the rounding of the hue and the saturation.
void BM_RgbToHsv(uint8_t r, uint8_t g, uint8_t b, uint8_t& h, uint8_t& s, uint8_t& v);

namespace BM_Detail {
inline uint16_t LoadU16(const uint8_t* p) {
    return static_cast<uint16_t>(p[0] | (p[1] << 8));
}
inline void StoreU16(uint8_t* p, uint16_t v) {
    p[0] = static_cast<uint8_t>(v);
    p[1] = static_cast<uint8_t>(v >> 8);
}
} // namespace BM_Detail

// Types of whole bytes share Get and Put through this base.
template <class P, uint32_t Bytes> struct BM_BytePixel {
    static P Get(const uint8_t* row, uint32_t x) {
        P p;
        std::memcpy(&p, row + size_t(x) * Bytes, Bytes);
        return p;
    }
    static void Put(uint8_t* row, uint32_t x, const P& p) { std::memcpy(row + size_t(x) * Bytes, &p, Bytes); }
};

struct BM_PixelBgra32 : BM_BytePixel<BM_PixelBgra32, 4> {
    uint8_t b = 0, g = 0, r = 0, a = 0;
    static constexpr BM_PixelType kType = BM_PixelType::Bgra32;
    static constexpr uint32_t kBits = 32;
    static constexpr uint64_t Stride(uint64_t w) { return BM_Stride::Unpadded(w, kBits); }
    BM_Rgba ToRgba() const { return {r, g, b, a}; }
    static BM_PixelBgra32 FromRgba(BM_Rgba c) { return Make(c.b, c.g, c.r, c.a); }
    static BM_PixelBgra32 Make(uint8_t b, uint8_t g, uint8_t r, uint8_t a) {
        BM_PixelBgra32 p;
        p.b = b, p.g = g, p.r = r, p.a = a;
        return p;
    }
    bool operator==(const BM_PixelBgra32& o) const { return b == o.b && g == o.g && r == o.r && a == o.a; }
};

struct BM_PixelRgba32 : BM_BytePixel<BM_PixelRgba32, 4> {
    uint8_t r = 0, g = 0, b = 0, a = 0;
    static constexpr BM_PixelType kType = BM_PixelType::Rgba32;
    static constexpr uint32_t kBits = 32;
    static constexpr uint64_t Stride(uint64_t w) { return BM_Stride::Unpadded(w, kBits); }
    BM_Rgba ToRgba() const { return {r, g, b, a}; }
    static BM_PixelRgba32 FromRgba(BM_Rgba c) { return Make(c.r, c.g, c.b, c.a); }
    static BM_PixelRgba32 Make(uint8_t r, uint8_t g, uint8_t b, uint8_t a) {
        BM_PixelRgba32 p;
        p.r = r, p.g = g, p.b = b, p.a = a;
        return p;
    }
    bool operator==(const BM_PixelRgba32& o) const { return r == o.r && g == o.g && b == o.b && a == o.a; }
};

struct BM_PixelArgb32 : BM_BytePixel<BM_PixelArgb32, 4> {
    uint8_t a = 0, r = 0, g = 0, b = 0;
    static constexpr BM_PixelType kType = BM_PixelType::Argb32;
    static constexpr uint32_t kBits = 32;
    static constexpr uint64_t Stride(uint64_t w) { return BM_Stride::Unpadded(w, kBits); }
    BM_Rgba ToRgba() const { return {r, g, b, a}; }
    static BM_PixelArgb32 FromRgba(BM_Rgba c) {
        BM_PixelArgb32 p;
        p.a = c.a, p.r = c.r, p.g = c.g, p.b = c.b;
        return p;
    }
};

struct BM_PixelHsva32 : BM_BytePixel<BM_PixelHsva32, 4> {
    uint8_t h = 0, s = 0, v = 0, a = 0;
    static constexpr BM_PixelType kType = BM_PixelType::Hsva32;
    static constexpr uint32_t kBits = 32;
    static constexpr uint64_t Stride(uint64_t w) { return BM_Stride::Unpadded(w, kBits); }
    BM_Rgba ToRgba() const { return BM_HsvToRgb(h, s, v, a); }
    static BM_PixelHsva32 FromRgba(BM_Rgba c) {
        BM_PixelHsva32 p;
        BM_RgbToHsv(c.r, c.g, c.b, p.h, p.s, p.v);
        p.a = c.a;
        return p;
    }
};

struct BM_PixelBgr24 : BM_BytePixel<BM_PixelBgr24, 3> {
    uint8_t b = 0, g = 0, r = 0;
    static constexpr BM_PixelType kType = BM_PixelType::Bgr24;
    static constexpr uint32_t kBits = 24;
    static constexpr uint64_t Stride(uint64_t w) { return BM_Stride::Padded(w, kBits); }
    BM_Rgba ToRgba() const { return {r, g, b, 255}; }
    static BM_PixelBgr24 FromRgba(BM_Rgba c) {
        BM_PixelBgr24 p;
        p.b = c.b, p.g = c.g, p.r = c.r;
        return p;
    }
};

struct BM_PixelRgb24 : BM_BytePixel<BM_PixelRgb24, 3> {
    uint8_t r = 0, g = 0, b = 0;
    static constexpr BM_PixelType kType = BM_PixelType::Rgb24;
    static constexpr uint32_t kBits = 24;
    static constexpr uint64_t Stride(uint64_t w) { return BM_Stride::Padded(w, kBits); }
    BM_Rgba ToRgba() const { return {r, g, b, 255}; }
    static BM_PixelRgb24 FromRgba(BM_Rgba c) {
        BM_PixelRgb24 p;
        p.r = c.r, p.g = c.g, p.b = c.b;
        return p;
    }
};

struct BM_PixelHsv24 : BM_BytePixel<BM_PixelHsv24, 3> {
    uint8_t h = 0, s = 0, v = 0;
    static constexpr BM_PixelType kType = BM_PixelType::Hsv24;
    static constexpr uint32_t kBits = 24;
    static constexpr uint64_t Stride(uint64_t w) { return BM_Stride::Padded(w, kBits); }
    BM_Rgba ToRgba() const { return BM_HsvToRgb(h, s, v, 255); }
    static BM_PixelHsv24 FromRgba(BM_Rgba c) {
        BM_PixelHsv24 p;
        BM_RgbToHsv(c.r, c.g, c.b, p.h, p.s, p.v);
        return p;
    }
};

// One little-endian 16-bit word: bits 15..11 R, 10..6 G, 5..1 B, bit 0 A.
struct BM_PixelArgb16 {
    uint16_t value = 0;
    static constexpr BM_PixelType kType = BM_PixelType::Argb16;
    static constexpr uint32_t kBits = 16;
    static constexpr uint64_t Stride(uint64_t w) { return BM_Stride::Padded(w, kBits); }
    static BM_PixelArgb16 Get(const uint8_t* row, uint32_t x) {
        return {BM_Detail::LoadU16(row + size_t(x) * 2)};
    }
    static void Put(uint8_t* row, uint32_t x, BM_PixelArgb16 p) {
        BM_Detail::StoreU16(row + size_t(x) * 2, p.value);
    }
    BM_Rgba ToRgba() const {
        return {static_cast<uint8_t>(((value >> 11) & 0x1F) << 3),
                static_cast<uint8_t>(((value >> 6) & 0x1F) << 3),
                static_cast<uint8_t>(((value >> 1) & 0x1F) << 3),
                static_cast<uint8_t>((value & 1) ? 255 : 0)};
    }
    static BM_PixelArgb16 FromRgba(BM_Rgba c) {
        return {static_cast<uint16_t>(((c.r >> 3) << 11) | ((c.g >> 3) << 6) | ((c.b >> 3) << 1) |
                                      (c.a >= 128 ? 1 : 0))};
    }
};

// One little-endian 16-bit word: bit 15 A, bits 14..10 R, 9..5 G, 4..0 B.
struct BM_PixelBgra16 {
    uint16_t value = 0;
    static constexpr BM_PixelType kType = BM_PixelType::Bgra16;
    static constexpr uint32_t kBits = 16;
    static constexpr uint64_t Stride(uint64_t w) { return BM_Stride::Padded(w, kBits); }
    static BM_PixelBgra16 Get(const uint8_t* row, uint32_t x) {
        return {BM_Detail::LoadU16(row + size_t(x) * 2)};
    }
    static void Put(uint8_t* row, uint32_t x, BM_PixelBgra16 p) {
        BM_Detail::StoreU16(row + size_t(x) * 2, p.value);
    }
    BM_Rgba ToRgba() const {
        return {static_cast<uint8_t>(((value >> 10) & 0x1F) << 3),
                static_cast<uint8_t>(((value >> 5) & 0x1F) << 3), static_cast<uint8_t>((value & 0x1F) << 3),
                static_cast<uint8_t>((value & 0x8000) ? 255 : 0)};
    }
    static BM_PixelBgra16 FromRgba(BM_Rgba c) {
        return {static_cast<uint16_t>((c.a >= 128 ? 0x8000 : 0) | ((c.r >> 3) << 10) | ((c.g >> 3) << 5) |
                                      (c.b >> 3))};
    }
};

// A packed colour: bits 7..5 B, 4..2 G, 1..0 R.
struct BM_Pixel8 {
    uint8_t value = 0;
    static constexpr BM_PixelType kType = BM_PixelType::Pixel8;
    static constexpr uint32_t kBits = 8;
    static constexpr uint64_t Stride(uint64_t w) { return BM_Stride::Padded(w, kBits); }
    static BM_Pixel8 Get(const uint8_t* row, uint32_t x) { return {row[x]}; }
    static void Put(uint8_t* row, uint32_t x, BM_Pixel8 p) { row[x] = p.value; }
    BM_Rgba ToRgba() const {
        return {static_cast<uint8_t>(value << 6), static_cast<uint8_t>((value & 0x1C) << 3),
                static_cast<uint8_t>(value & 0xE0), 255};
    }
    static BM_Pixel8 FromRgba(BM_Rgba c) {
        return {static_cast<uint8_t>((c.b & 0xE0) | ((c.g >> 3) & 0x1C) | (c.r >> 6))};
    }
};

struct BM_PixelGray8 {
    uint8_t value = 0;
    static constexpr BM_PixelType kType = BM_PixelType::Gray8;
    static constexpr uint32_t kBits = 8;
    static constexpr uint64_t Stride(uint64_t w) { return BM_Stride::Padded(w, kBits); }
    static BM_PixelGray8 Get(const uint8_t* row, uint32_t x) { return {row[x]}; }
    static void Put(uint8_t* row, uint32_t x, BM_PixelGray8 p) { row[x] = p.value; }
    BM_Rgba ToRgba() const { return {value, value, value, 255}; }
    static BM_PixelGray8 FromRgba(BM_Rgba c) {
        return {static_cast<uint8_t>((77 * c.r + 150 * c.g + 29 * c.b) >> 8)};
    }
};

// Gray, two pixels a byte, the first in the high nibble.
struct BM_Pixel4 {
    uint8_t value = 0;
    static constexpr BM_PixelType kType = BM_PixelType::Pixel4;
    static constexpr uint32_t kBits = 4;
    static constexpr uint64_t Stride(uint64_t w) { return BM_Stride::Padded(w, kBits); }
    static BM_Pixel4 Get(const uint8_t* row, uint32_t x) {
        return {static_cast<uint8_t>((row[x >> 1] >> ((x & 1) ? 0 : 4)) & 0x0F)};
    }
    static void Put(uint8_t* row, uint32_t x, BM_Pixel4 p) {
        const int shift = (x & 1) ? 0 : 4;
        row[x >> 1] = static_cast<uint8_t>((row[x >> 1] & ~(0x0F << shift)) | ((p.value & 0x0F) << shift));
    }
    BM_Rgba ToRgba() const {
        const uint8_t g = static_cast<uint8_t>(value << 4);
        return {g, g, g, 255};
    }
};

// Gray, four pixels a byte, the first in the top two bits.
struct BM_Pixel2 {
    uint8_t value = 0;
    static constexpr BM_PixelType kType = BM_PixelType::Pixel2;
    static constexpr uint32_t kBits = 2;
    static constexpr uint64_t Stride(uint64_t w) { return BM_Stride::Padded(w, kBits); }
    static BM_Pixel2 Get(const uint8_t* row, uint32_t x) {
        return {static_cast<uint8_t>((row[x >> 2] >> (6 - 2 * (x & 3))) & 3)};
    }
    static void Put(uint8_t* row, uint32_t x, BM_Pixel2 p) {
        const int shift = 6 - 2 * int(x & 3);
        row[x >> 2] = static_cast<uint8_t>((row[x >> 2] & ~(3 << shift)) | ((p.value & 3) << shift));
    }
    BM_Rgba ToRgba() const {
        const uint8_t g = static_cast<uint8_t>(value << 6);
        return {g, g, g, 255};
    }
};

// Eight pixels a byte, the first in the high bit. A set bit is white.
struct BM_Pixel1 {
    uint8_t value = 0;
    static constexpr BM_PixelType kType = BM_PixelType::Pixel1;
    static constexpr uint32_t kBits = 1;
    static constexpr uint64_t Stride(uint64_t w) { return BM_Stride::Padded(w, kBits); }
    static BM_Pixel1 Get(const uint8_t* row, uint32_t x) {
        return {static_cast<uint8_t>((row[x >> 3] >> (7 - (x & 7))) & 1)};
    }
    static void Put(uint8_t* row, uint32_t x, BM_Pixel1 p) {
        const int shift = 7 - int(x & 7);
        row[x >> 3] = static_cast<uint8_t>((row[x >> 3] & ~(1 << shift)) | ((p.value & 1) << shift));
    }
    BM_Rgba ToRgba() const {
        const uint8_t g = value ? 255 : 0;
        return {g, g, g, 255};
    }
};
