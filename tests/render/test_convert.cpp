// Conversion between the pixel types: hand-computed pixels, every pair against a
// reference written from the byte layouts, lossless round trips.

#include "render/BM_Convert.h"
#include "render/BM_PixelMap.h"

#include <array>
#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

constexpr int kTypeCount = int(BM_PixelType::Pixel1) + 1;
constexpr int kDestinationCount = int(BM_PixelType::Gray8) + 1;

uint32_t Bits(BM_PixelType t) {
    switch (t) {
    case BM_PixelType::Bgra32:
    case BM_PixelType::Rgba32:
    case BM_PixelType::Argb32:
    case BM_PixelType::Hsva32:
        return 32;
    case BM_PixelType::Bgr24:
    case BM_PixelType::Rgb24:
    case BM_PixelType::Hsv24:
        return 24;
    case BM_PixelType::Argb16:
    case BM_PixelType::Bgra16:
        return 16;
    case BM_PixelType::Pixel8:
    case BM_PixelType::Gray8:
        return 8;
    case BM_PixelType::Pixel4:
        return 4;
    case BM_PixelType::Pixel2:
        return 2;
    case BM_PixelType::Pixel1:
        return 1;
    }
    return 0;
}

bool IsHsv(BM_PixelType t) {
    return t == BM_PixelType::Hsva32 || t == BM_PixelType::Hsv24;
}

// HSV to RGB written out from the sextant table.
BM_Rgba RefHsv(int h, int s, int v, int a) {
    if (s == 0)
        return {uint8_t(v), uint8_t(v), uint8_t(v), uint8_t(a)};
    const int h3 = h * 3, frac = h3 & 0x7F;
    const int p = ((255 - s) * v) / 255;
    const int q = ((255 - ((2 * frac) * s) / 255) * v) / 255;
    const int t = ((255 - ((255 - 2 * frac) * s) / 255) * v) / 255;
    const int table[6][3] = {{v, t, p}, {q, v, p}, {p, v, t}, {p, q, v}, {t, p, v}, {v, p, q}};
    const int* c = table[h3 >> 7];
    return {uint8_t(c[0]), uint8_t(c[1]), uint8_t(c[2]), uint8_t(a)};
}

// Reads pixel x of a row by the memory layout of its type.
BM_Rgba RefDecode(BM_PixelType t, const uint8_t* row, uint32_t x) {
    const uint8_t* p = row + ((Bits(t) * x) >> 3);
    const auto u8 = [](int v) { return uint8_t(v); };
    switch (t) {
    case BM_PixelType::Bgra32:
        return {p[2], p[1], p[0], p[3]};
    case BM_PixelType::Rgba32:
        return {p[0], p[1], p[2], p[3]};
    case BM_PixelType::Argb32:
        return {p[1], p[2], p[3], p[0]};
    case BM_PixelType::Hsva32:
        return RefHsv(p[0], p[1], p[2], p[3]);
    case BM_PixelType::Bgr24:
        return {p[2], p[1], p[0], 255};
    case BM_PixelType::Rgb24:
        return {p[0], p[1], p[2], 255};
    case BM_PixelType::Hsv24:
        return RefHsv(p[0], p[1], p[2], 255);
    case BM_PixelType::Argb16: {
        const int w = p[0] | (p[1] << 8);
        return {u8(((w >> 11) & 31) << 3), u8(((w >> 6) & 31) << 3), u8(((w >> 1) & 31) << 3),
                u8(w & 1 ? 255 : 0)};
    }
    case BM_PixelType::Bgra16: {
        const int w = p[0] | (p[1] << 8);
        return {u8(((w >> 10) & 31) << 3), u8(((w >> 5) & 31) << 3), u8((w & 31) << 3),
                u8(w & 0x8000 ? 255 : 0)};
    }
    case BM_PixelType::Pixel8:
        return {u8(p[0] << 6), u8((p[0] & 0x1C) << 3), u8(p[0] & 0xE0), 255};
    case BM_PixelType::Gray8:
        return {p[0], p[0], p[0], 255};
    case BM_PixelType::Pixel4: {
        const uint8_t g = u8(((x & 1) ? p[0] & 0x0F : p[0] >> 4) << 4);
        return {g, g, g, 255};
    }
    case BM_PixelType::Pixel2: {
        const uint8_t g = u8(((p[0] >> (6 - 2 * (x & 3))) & 3) << 6);
        return {g, g, g, 255};
    }
    case BM_PixelType::Pixel1: {
        const uint8_t g = (p[0] >> (7 - (x & 7))) & 1 ? 255 : 0;
        return {g, g, g, 255};
    }
    }
    return {};
}

// The bytes a destination type stores for a colour (not for the HSV types).
std::vector<uint8_t> RefEncode(BM_PixelType t, BM_Rgba c) {
    switch (t) {
    case BM_PixelType::Bgra32:
        return {c.b, c.g, c.r, c.a};
    case BM_PixelType::Rgba32:
        return {c.r, c.g, c.b, c.a};
    case BM_PixelType::Argb32:
        return {c.a, c.r, c.g, c.b};
    case BM_PixelType::Bgr24:
        return {c.b, c.g, c.r};
    case BM_PixelType::Rgb24:
        return {c.r, c.g, c.b};
    case BM_PixelType::Argb16: {
        const int w = ((c.r >> 3) << 11) | ((c.g >> 3) << 6) | ((c.b >> 3) << 1) | (c.a >= 128);
        return {uint8_t(w), uint8_t(w >> 8)};
    }
    case BM_PixelType::Bgra16: {
        const int w = ((c.a >= 128) << 15) | ((c.r >> 3) << 10) | ((c.g >> 3) << 5) | (c.b >> 3);
        return {uint8_t(w), uint8_t(w >> 8)};
    }
    case BM_PixelType::Pixel8:
        return {uint8_t((c.b & 0xE0) | ((c.g >> 3) & 0x1C) | (c.r >> 6))};
    case BM_PixelType::Gray8:
        return {uint8_t((77 * c.r + 150 * c.g + 29 * c.b) >> 8)};
    default:
        return {};
    }
}

std::unique_ptr<BM_Bitmap> RandomMap(BM_PixelType t, uint32_t w, uint32_t h, std::mt19937& rng) {
    std::unique_ptr<BM_Bitmap> map = BM_MakePixelMap(t, w, h);
    const size_t rowBytes = (size_t(w) * Bits(t) + 7) >> 3;
    for (uint32_t y = 0; y < h; ++y)
        for (size_t i = 0; i < rowBytes; ++i)
            map->Row(y)[i] = uint8_t(rng());
    return map;
}

std::unique_ptr<BM_Bitmap> MapWithBytes(BM_PixelType t, uint32_t width, std::vector<uint8_t> bytes) {
    std::unique_ptr<BM_Bitmap> map = BM_MakePixelMap(t, width, 1);
    std::copy(bytes.begin(), bytes.end(), map->Data());
    return map;
}

BM_Rgba Bgra(const BM_PixelMap<BM_PixelBgra32>& map, uint32_t x) {
    return map.GetPixel(x, 0).ToRgba();
}

TEST(Convert, HandComputedSourcesTowardsBgra32) {
    struct Case {
        BM_PixelType type;
        uint32_t width;
        std::vector<uint8_t> bytes;
        std::vector<BM_Rgba> expected;
    };
    const std::vector<Case> cases = {
        {BM_PixelType::Rgba32, 1, {200, 100, 50, 128}, {{200, 100, 50, 128}}},
        {BM_PixelType::Argb32, 1, {128, 200, 100, 50}, {{200, 100, 50, 128}}},
        {BM_PixelType::Bgr24, 1, {50, 100, 200}, {{200, 100, 50, 255}}},
        {BM_PixelType::Rgb24, 1, {200, 100, 50}, {{200, 100, 50, 255}}},
        {BM_PixelType::Argb16, 2, {0x0D, 0xCB, 0x0C, 0xCB}, {{200, 96, 48, 255}, {200, 96, 48, 0}}},
        {BM_PixelType::Bgra16, 2, {0x86, 0xE5, 0x86, 0x65}, {{200, 96, 48, 255}, {200, 96, 48, 0}}},
        {BM_PixelType::Pixel8, 1, {0x2F}, {{192, 96, 32, 255}}},
        {BM_PixelType::Gray8, 1, {77}, {{77, 77, 77, 255}}},
        {BM_PixelType::Pixel4,
         3,
         {0xA5, 0xF0},
         {{160, 160, 160, 255}, {80, 80, 80, 255}, {240, 240, 240, 255}}},
        {BM_PixelType::Pixel2,
         4,
         {0xE4},
         {{192, 192, 192, 255}, {128, 128, 128, 255}, {64, 64, 64, 255}, {0, 0, 0, 255}}},
        {BM_PixelType::Pixel1, 3, {0xA0}, {{255, 255, 255, 255}, {0, 0, 0, 255}, {255, 255, 255, 255}}},
        {BM_PixelType::Hsva32,
         4,
         {43, 255, 255, 9, 0, 0, 77, 10, 128, 255, 255, 11, 200, 128, 100, 12},
         {{253, 255, 0, 9}, {77, 77, 77, 10}, {0, 255, 255, 11}, {84, 49, 100, 12}}},
        {BM_PixelType::Hsv24, 1, {200, 128, 100}, {{84, 49, 100, 255}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(int(c.type));
        auto src = MapWithBytes(c.type, c.width, c.bytes);
        BM_PixelMap<BM_PixelBgra32> dst;
        ASSERT_TRUE(BM_Convert(dst, *src));
        ASSERT_EQ(dst.Width(), c.width);
        for (uint32_t x = 0; x < c.width; ++x)
            EXPECT_EQ(Bgra(dst, x), c.expected[x]) << "pixel " << x;
    }
}

TEST(Convert, HandComputedDestinationsFromRgba32) {
    BM_PixelMap<BM_PixelRgba32> src(1, 1);
    src.SetPixel(0, 0, BM_PixelRgba32::Make(200, 100, 50, 128));
    const std::vector<std::pair<BM_PixelType, std::vector<uint8_t>>> cases = {
        {BM_PixelType::Bgra32, {50, 100, 200, 128}},
        {BM_PixelType::Argb32, {128, 200, 100, 50}},
        {BM_PixelType::Bgr24, {50, 100, 200}},
        {BM_PixelType::Rgb24, {200, 100, 50}},
        {BM_PixelType::Argb16, {0x0D, 0xCB}},
        {BM_PixelType::Bgra16, {0x86, 0xE5}},
        {BM_PixelType::Pixel8, {0x2F}},
        {BM_PixelType::Gray8, {124}},
    };
    for (const auto& [type, bytes] : cases) {
        SCOPED_TRACE(int(type));
        auto dst = BM_MakePixelMap(type);
        ASSERT_TRUE(BM_Convert(*dst, src));
        EXPECT_EQ(std::vector<uint8_t>(dst->Data(), dst->Data() + bytes.size()), bytes);
        // Row padding stays zero.
        for (uint32_t i = uint32_t(bytes.size()); i < dst->GetStride(); ++i)
            EXPECT_EQ(dst->Data()[i], 0);
    }
}

TEST(Convert, EveryPairMatchesTheLayoutReference) {
    std::mt19937 rng(1234);
    for (int s = 0; s < kTypeCount; ++s) {
        for (int d = 0; d < kDestinationCount; ++d) {
            const auto st = BM_PixelType(s), dt = BM_PixelType(d);
            SCOPED_TRACE(testing::Message() << "source " << s << " destination " << d);
            const uint32_t w = 13 + uint32_t(rng() % 7), h = 3;
            auto src = RandomMap(st, w, h, rng);
            auto dst = BM_MakePixelMap(dt, 2, 9);
            ASSERT_TRUE(BM_Convert(*dst, *src));
            ASSERT_EQ(dst->Width(), w);
            ASSERT_EQ(dst->Height(), h);
            for (uint32_t y = 0; y < h; ++y) {
                for (uint32_t x = 0; x < w; ++x) {
                    const BM_Rgba in = RefDecode(st, src->Row(y), x);
                    if (IsHsv(dt)) {
                        // The way back into HSV is close, not exact.
                        const BM_Rgba out = RefDecode(dt, dst->Row(y), x);
                        ASSERT_LE(std::abs(out.r - in.r), 4) << x << "," << y;
                        ASSERT_LE(std::abs(out.g - in.g), 4) << x << "," << y;
                        ASSERT_LE(std::abs(out.b - in.b), 4) << x << "," << y;
                        ASSERT_EQ(out.a, dt == BM_PixelType::Hsv24 ? 255 : in.a);
                        continue;
                    }
                    const std::vector<uint8_t> expected = RefEncode(dt, in);
                    const uint8_t* at = dst->Row(y) + x * expected.size();
                    ASSERT_EQ(std::vector<uint8_t>(at, at + expected.size()), expected) << x << "," << y;
                }
            }
        }
    }
}

TEST(Convert, LosslessRoundTrips) {
    std::mt19937 rng(99);
    const std::vector<std::pair<BM_PixelType, BM_PixelType>> pairs = {
        {BM_PixelType::Bgra32, BM_PixelType::Rgba32}, {BM_PixelType::Rgba32, BM_PixelType::Argb32},
        {BM_PixelType::Bgr24, BM_PixelType::Rgb24},   {BM_PixelType::Rgb24, BM_PixelType::Bgra32},
        {BM_PixelType::Argb16, BM_PixelType::Bgra32}, {BM_PixelType::Argb16, BM_PixelType::Bgra16},
        {BM_PixelType::Pixel8, BM_PixelType::Rgba32}, {BM_PixelType::Gray8, BM_PixelType::Bgr24},
    };
    for (const auto& [a, b] : pairs) {
        SCOPED_TRACE(testing::Message() << int(a) << " via " << int(b));
        auto original = RandomMap(a, 21, 4, rng);
        auto middle = BM_MakePixelMap(b);
        auto back = BM_MakePixelMap(a);
        ASSERT_TRUE(BM_Convert(*middle, *original));
        ASSERT_TRUE(BM_Convert(*back, *middle));
        ASSERT_EQ(back->Size(), original->Size());
        EXPECT_EQ(std::vector<uint8_t>(back->Data(), back->Data() + back->Size()),
                  std::vector<uint8_t>(original->Data(), original->Data() + original->Size()));
    }
}

// The same pixel type in another class, like a map over a system bitmap.
class SystemBgr24 : public BM_PixelMap<BM_PixelBgr24> {
public:
    using BM_PixelMap::BM_PixelMap;
};

TEST(Convert, SameTypeCopiesAndFailures) {
    std::mt19937 rng(5);
    auto src = RandomMap(BM_PixelType::Bgr24, 7, 3, rng);
    SystemBgr24 system;
    ASSERT_TRUE(BM_Convert(system, *src));
    EXPECT_EQ(system.Size(), src->Size());
    for (uint32_t y = 0; y < 3; ++y)
        EXPECT_EQ(std::vector<uint8_t>(system.Row(y), system.Row(y) + 21),
                  std::vector<uint8_t>(src->Row(y), src->Row(y) + 21));

    BM_PixelMap<BM_Pixel1> bits(4, 4);
    EXPECT_FALSE(BM_Convert(bits, *src));
    EXPECT_EQ(bits.Width(), 4u); // left as it was

    BM_PixelMap<BM_PixelRgba32> emptySource;
    BM_PixelMap<BM_PixelGray8> gray(3, 3);
    EXPECT_TRUE(BM_Convert(gray, emptySource));
    EXPECT_EQ(gray.Width(), 0u);
    EXPECT_EQ(gray.Data(), nullptr);
}

TEST(Convert, HsvTypesKeepGraysAndRed) {
    // Integer HSV cannot hold every hue exactly; grays and pure red come back unchanged.
    BM_PixelMap<BM_PixelRgba32> src(4, 1);
    const BM_Rgba colours[4] = {{255, 0, 0, 1}, {0, 0, 0, 5}, {90, 90, 90, 6}, {255, 255, 255, 7}};
    for (uint32_t x = 0; x < 4; ++x)
        src.SetPixel(x, 0, BM_PixelRgba32::FromRgba(colours[x]));
    BM_PixelMap<BM_PixelHsva32> hsv;
    BM_PixelMap<BM_PixelRgba32> back;
    ASSERT_TRUE(BM_Convert(hsv, src));
    ASSERT_TRUE(BM_Convert(back, hsv));
    for (uint32_t x = 0; x < 4; ++x)
        EXPECT_EQ(back.GetPixel(x, 0).ToRgba(), colours[x]) << x;
    EXPECT_EQ(hsv.GetPixel(0, 0).h, 0);
    EXPECT_EQ(hsv.GetPixel(0, 0).s, 255);
    EXPECT_EQ(hsv.GetPixel(2, 0).s, 0);
    EXPECT_EQ(hsv.GetPixel(2, 0).v, 90);
}

TEST(Blit, CopiesTheRectangleBothMapsHold) {
    BM_PixelMap<BM_PixelRgba32> src(4, 4), dst(3, 3);
    for (uint32_t y = 0; y < 4; ++y)
        for (uint32_t x = 0; x < 4; ++x)
            src.SetPixel(x, y, BM_PixelRgba32::Make(uint8_t(x), uint8_t(y), 7, 255));
    ASSERT_TRUE(BM_Blit(dst, 1, 1, 10, 10, src, 2, 1));
    // Cut to 2x2: right of x=1 in dst, and rows below y=1.
    EXPECT_EQ(dst.GetPixel(0, 0).a, 0);
    EXPECT_EQ(dst.GetPixel(1, 1), BM_PixelRgba32::Make(2, 1, 7, 255));
    EXPECT_EQ(dst.GetPixel(2, 2), BM_PixelRgba32::Make(3, 2, 7, 255));
    EXPECT_EQ(dst.GetPixel(0, 2).a, 0);

    BM_PixelMap<BM_PixelBgra32> other(3, 3);
    EXPECT_FALSE(BM_Blit(other, 0, 0, 1, 1, src, 0, 0));
    BM_PixelMap<BM_PixelRgb24> rgb(3, 3);
    EXPECT_FALSE(BM_Blit(rgb, 0, 0, 1, 1, rgb, 0, 0));
}

} // namespace
