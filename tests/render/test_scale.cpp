// Scaling: the box average against a slow reference, the resampler on hand-computed
// pixels, and the choice between them.

#include "render/BM_Convert.h"
#include "render/BM_PixelMap.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

// Where each destination index ends in the source, by the 9-bit stepping rule.
std::vector<uint32_t> RuleEnds(uint32_t from, uint32_t to) {
    const float ratio = float(from) / float(to);
    const auto stepInt = uint32_t(ratio);
    const auto stepFrac = uint32_t((ratio - float(stepInt)) * 512.0f + 0.5f);
    std::vector<uint32_t> ends(to);
    for (uint32_t k = 0; k < to; ++k)
        ends[k] = std::min<uint32_t>(uint32_t((uint64_t((stepInt << 9) + stepFrac) * (k + 1)) >> 9), from);
    ends[to - 1] = from;
    return ends;
}

// The box average pixel by pixel, one rectangle of the source at a time.
BM_PixelMap<BM_PixelRgba32> SlowBox(const BM_PixelMap<BM_PixelRgba32>& src, uint32_t w, uint32_t h) {
    BM_PixelMap<BM_PixelRgba32> out(w, h);
    const auto cols = RuleEnds(src.Width(), w), rows = RuleEnds(src.Height(), h);
    for (uint32_t dy = 0; dy < h; ++dy) {
        const uint32_t y0 = dy ? rows[dy - 1] : 0;
        for (uint32_t dx = 0; dx < w; ++dx) {
            const uint32_t x0 = dx ? cols[dx - 1] : 0;
            uint64_t sum[4] = {0, 0, 0, 0}, n = 0;
            for (uint32_t y = y0; y < rows[dy]; ++y)
                for (uint32_t x = x0; x < cols[dx]; ++x, ++n) {
                    const BM_PixelRgba32 p = src.GetPixel(x, y);
                    sum[0] += p.r, sum[1] += p.g, sum[2] += p.b, sum[3] += p.a;
                }
            out.SetPixel(dx, dy,
                         BM_PixelRgba32::Make(uint8_t(sum[0] / n), uint8_t(sum[1] / n), uint8_t(sum[2] / n),
                                              uint8_t(sum[3] / n)));
        }
    }
    return out;
}

BM_PixelMap<BM_PixelRgba32> RandomRgba(uint32_t w, uint32_t h, std::mt19937& rng) {
    BM_PixelMap<BM_PixelRgba32> map(w, h);
    for (uint32_t i = 0; i < map.Size(); ++i)
        map.Data()[i] = uint8_t(rng());
    return map;
}

std::vector<uint8_t> Bytes(const BM_Bitmap& map) {
    return {map.Data(), map.Data() + map.Size()};
}

TEST(Scale, BoxAverageMatchesSlowReference) {
    std::mt19937 rng(77);
    for (int round = 0; round < 60; ++round) {
        const uint32_t w = 1 + rng() % 90, h = 1 + rng() % 40;
        const uint32_t nw = 1 + rng() % w, nh = 1 + rng() % h;
        SCOPED_TRACE(testing::Message() << w << "x" << h << " to " << nw << "x" << nh);
        const auto src = RandomRgba(w, h, rng);
        BM_PixelMap<BM_PixelRgba32> fast;
        ASSERT_TRUE(BM_Scale(src, nw, nh, fast));
        ASSERT_EQ(Bytes(fast), Bytes(SlowBox(src, nw, nh)));
    }
}

TEST(Scale, BoxAverageOfFiveColumnsIntoThree) {
    // Ratio 5/3: boundaries 1, 3, 5.
    BM_PixelMap<BM_PixelRgb24> src(5, 1);
    const uint8_t values[5] = {10, 20, 31, 100, 201};
    for (uint32_t x = 0; x < 5; ++x)
        src.SetPixel(x, 0, BM_PixelRgb24::FromRgba({values[x], 0, 0, 255}));
    BM_PixelMap<BM_PixelBgra32> dst;
    ASSERT_TRUE(BM_Scale(src, 3, 1, dst));
    EXPECT_EQ(dst.GetPixel(0, 0).r, 10);
    EXPECT_EQ(dst.GetPixel(1, 0).r, 25);  // (20 + 31) / 2
    EXPECT_EQ(dst.GetPixel(2, 0).r, 150); // (100 + 201) / 2
    EXPECT_EQ(dst.GetPixel(2, 0).a, 255);
}

TEST(Scale, OtherSourcesAndDestinationsGoThroughConversion) {
    std::mt19937 rng(3);
    const auto rgba = RandomRgba(17, 9, rng);
    BM_PixelMap<BM_PixelArgb16> small16;
    ASSERT_TRUE(BM_Convert(small16, rgba));
    // Source of another type: the same as scaling its conversion.
    BM_PixelMap<BM_PixelRgba32> fromConverted, direct;
    BM_PixelMap<BM_PixelRgba32> widened;
    ASSERT_TRUE(BM_Convert(widened, small16));
    ASSERT_TRUE(BM_Scale(small16, 5, 4, direct));
    ASSERT_TRUE(BM_Scale(widened, 5, 4, fromConverted));
    EXPECT_EQ(Bytes(direct), Bytes(fromConverted));
    // Destination of another type: the conversion of the RGBA result.
    BM_PixelMap<BM_PixelGray8> gray, grayOfRgba;
    ASSERT_TRUE(BM_Scale(rgba, 5, 4, gray));
    BM_PixelMap<BM_PixelRgba32> scaled;
    ASSERT_TRUE(BM_Scale(rgba, 5, 4, scaled));
    ASSERT_TRUE(BM_Convert(grayOfRgba, scaled));
    EXPECT_EQ(Bytes(gray), Bytes(grayOfRgba));
    BM_PixelMap<BM_Pixel1> bits;
    EXPECT_FALSE(BM_Scale(rgba, 5, 4, bits));
}

TEST(Scale, SameSizeIsConversionOnly) {
    std::mt19937 rng(8);
    const auto src = RandomRgba(11, 6, rng);
    BM_PixelMap<BM_PixelBgra32> scaled, converted;
    ASSERT_TRUE(BM_Scale(src, 11, 6, scaled));
    ASSERT_TRUE(BM_Convert(converted, src));
    EXPECT_EQ(Bytes(scaled), Bytes(converted));
}

TEST(Scale, GrowingInterpolatesLinearlyAroundTheCentre) {
    BM_PixelMap<BM_PixelRgba32> src(2, 1);
    src.SetPixel(0, 0, BM_PixelRgba32::Make(0, 0, 0, 255));
    src.SetPixel(1, 0, BM_PixelRgba32::Make(200, 100, 40, 255));
    BM_PixelMap<BM_PixelRgba32> dst;
    ASSERT_TRUE(BM_Scale(src, 4, 1, dst));
    const uint8_t reds[4] = {0, 50, 150, 200};
    const uint8_t greens[4] = {0, 25, 75, 100};
    for (uint32_t x = 0; x < 4; ++x) {
        EXPECT_EQ(dst.GetPixel(x, 0).r, reds[x]) << x;
        EXPECT_EQ(dst.GetPixel(x, 0).g, greens[x]) << x;
        EXPECT_EQ(dst.GetPixel(x, 0).a, 255) << x;
    }
}

TEST(Scale, OneAxisShrinkingAndOneGrowingTakesTheResampler) {
    // 4x1 to 2x2: the box average cannot grow a row, the resampler averages the
    // footprints (10+21)/2 and (100+201)/2 with rounding, then repeats the row.
    BM_PixelMap<BM_PixelRgba32> src(4, 1);
    const uint8_t values[4] = {10, 21, 100, 201};
    for (uint32_t x = 0; x < 4; ++x)
        src.SetPixel(x, 0, BM_PixelRgba32::Make(values[x], 0, 0, 255));
    BM_PixelMap<BM_PixelBgra32> dst;
    ASSERT_TRUE(BM_Scale(src, 2, 2, dst));
    for (uint32_t y = 0; y < 2; ++y) {
        EXPECT_EQ(dst.GetPixel(0, y).r, 16) << y;
        EXPECT_EQ(dst.GetPixel(1, y).r, 151) << y;
        EXPECT_EQ(dst.GetPixel(1, y).a, 255) << y;
    }
}

TEST(Scale, FlatImagesStayFlatAtAnySize) {
    std::mt19937 rng(21);
    for (int round = 0; round < 40; ++round) {
        const uint32_t w = 1 + rng() % 30, h = 1 + rng() % 30, nw = 1 + rng() % 70, nh = 1 + rng() % 70;
        SCOPED_TRACE(testing::Message() << w << "x" << h << " to " << nw << "x" << nh);
        BM_PixelMap<BM_PixelRgba32> src(w, h);
        for (uint32_t y = 0; y < h; ++y)
            for (uint32_t x = 0; x < w; ++x)
                src.SetPixel(x, y, BM_PixelRgba32::Make(37, 142, 250, 99));
        BM_PixelMap<BM_PixelRgba32> dst;
        ASSERT_TRUE(BM_Scale(src, nw, nh, dst));
        ASSERT_EQ(dst.Width(), nw);
        ASSERT_EQ(dst.Height(), nh);
        for (uint32_t y = 0; y < nh; ++y)
            for (uint32_t x = 0; x < nw; ++x)
                ASSERT_EQ(dst.GetPixel(x, y), BM_PixelRgba32::Make(37, 142, 250, 99)) << x << "," << y;
    }
}

TEST(Scale, EmptyImages) {
    BM_PixelMap<BM_PixelRgba32> empty, dst(3, 3);
    EXPECT_TRUE(BM_Scale(empty, 0, 0, dst));
    EXPECT_EQ(dst.Width(), 0u);
    BM_PixelMap<BM_PixelRgba32> one(1, 1);
    EXPECT_TRUE(BM_Scale(one, 0, 5, dst));
    EXPECT_EQ(dst.Size(), 0u);
}

} // namespace
