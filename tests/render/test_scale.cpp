// Scaling: the box average against a slow reference, the resampler on hand-computed
// pixels, and the choice between them.

#include "render/BM_Convert.h"
#include "render/BM_PixelMap.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

// Where each destination index ends in the source, by the 9-bit stepping rule; every
// destination index keeps at least one source index, and the last takes the rest.
std::vector<uint32_t> RuleEnds(uint32_t from, uint32_t to) {
    const float ratio = float(from) / float(to);
    const auto stepInt = uint32_t(ratio);
    const auto stepFrac = uint32_t((ratio - float(stepInt)) * 512.0f + 0.5f);
    std::vector<uint32_t> ends(to);
    for (uint32_t k = 0; k < to; ++k) {
        const uint64_t end = (uint64_t((stepInt << 9) + stepFrac) * (k + 1)) >> 9;
        ends[k] = uint32_t(std::min<uint64_t>(end, from - (to - 1 - k)));
    }
    ends[to - 1] = from;
    return ends;
}

// The box average pixel by pixel, one rectangle of the source at a time, with a plain
// division: the reference for the fast paths.
template <class D, class S> BM_PixelMap<D> SlowBox(const BM_PixelMap<S>& src, uint32_t w, uint32_t h) {
    BM_PixelMap<D> out(w, h);
    const auto cols = RuleEnds(src.Width(), w), rows = RuleEnds(src.Height(), h);
    for (uint32_t dy = 0; dy < h; ++dy) {
        const uint32_t y0 = dy ? rows[dy - 1] : 0;
        for (uint32_t dx = 0; dx < w; ++dx) {
            const uint32_t x0 = dx ? cols[dx - 1] : 0;
            uint64_t sum[4] = {0, 0, 0, 0}, n = 0;
            for (uint32_t y = y0; y < rows[dy]; ++y)
                for (uint32_t x = x0; x < cols[dx]; ++x, ++n) {
                    const BM_Rgba p = src.GetPixel(x, y).ToRgba();
                    sum[0] += p.r, sum[1] += p.g, sum[2] += p.b, sum[3] += p.a;
                }
            out.SetPixel(dx, dy,
                         D::FromRgba({uint8_t(sum[0] / n), uint8_t(sum[1] / n), uint8_t(sum[2] / n),
                                      uint8_t(sum[3] / n)}));
        }
    }
    return out;
}

template <class P> BM_PixelMap<P> Random(uint32_t w, uint32_t h, std::mt19937& rng) {
    BM_PixelMap<P> map(w, h);
    for (uint32_t i = 0; i < map.Size(); ++i)
        map.Data()[i] = uint8_t(rng());
    return map;
}

BM_PixelMap<BM_PixelRgba32> RandomRgba(uint32_t w, uint32_t h, std::mt19937& rng) {
    return Random<BM_PixelRgba32>(w, h, rng);
}

std::vector<uint8_t> Bytes(const BM_Bitmap& map) {
    return {map.Data(), map.Data() + map.Size()};
}

// One source type into both destinations, against the reference.
template <class S> void CheckBox(uint32_t w, uint32_t h, uint32_t nw, uint32_t nh, std::mt19937& rng) {
    SCOPED_TRACE(testing::Message() << "type " << int(S::kType) << ", " << w << "x" << h << " to " << nw
                                    << "x" << nh);
    const auto src = Random<S>(w, h, rng);
    BM_PixelMap<BM_PixelRgba32> rgba;
    ASSERT_TRUE(BM_Scale(src, nw, nh, rgba));
    ASSERT_EQ(Bytes(rgba), Bytes(SlowBox<BM_PixelRgba32>(src, nw, nh)));
    // A destination of the right size already is written over, whatever it held.
    BM_PixelMap<BM_PixelBgra32> bgra = Random<BM_PixelBgra32>(nw, nh, rng);
    ASSERT_TRUE(BM_Scale(src, nw, nh, bgra));
    ASSERT_EQ(Bytes(bgra), Bytes(SlowBox<BM_PixelBgra32>(src, nw, nh)));
}

template <class S> void CheckBoxShapes(std::mt19937& rng) {
    struct Shape {
        uint32_t w, h, nw, nh;
    };
    const Shape shapes[] = {
        {64, 8, 32, 4},   // halving: pairs of pixels, boxes of a power of two
        {70, 9, 35, 3},   // even boundaries, odd bands
        {37, 40, 37, 39}, // one-pixel boxes beside two-pixel ones
        {103, 21, 25, 5}, // boxes of four or five columns
        {120, 7, 30, 7},  // four columns, one row
        {97, 13, 13, 2},  // irregular widths, an odd row length
        {8, 400, 4, 2},   // paired bands past 16-bit sums of pairs
        {9, 600, 3, 2},   // bands past 16-bit sums
        {130, 130, 2, 2}, // boxes of 4225 pixels: divided as such
        {23, 5, 1, 1},    // one box
        {1, 50, 1, 7},    // one column
    };
    for (const Shape& shape : shapes)
        CheckBox<S>(shape.w, shape.h, shape.nw, shape.nh, rng);
    for (int round = 0; round < 25; ++round) {
        const uint32_t w = 1 + rng() % 90, h = 1 + rng() % 40;
        CheckBox<S>(w, h, 1 + rng() % w, 1 + rng() % h, rng);
    }
}

TEST(Scale, BoxAverageMatchesSlowReferenceForEverySource) {
    std::mt19937 rng(77);
    CheckBoxShapes<BM_PixelRgba32>(rng);
    CheckBoxShapes<BM_PixelBgra32>(rng);
    CheckBoxShapes<BM_PixelRgb24>(rng);
    CheckBoxShapes<BM_PixelBgr24>(rng);
}

// A box of more than 2^32 / 255 pixels needs 64-bit sums: two boxes of 2100 x 4100.
TEST(Scale, BoxAverageOfAHugeBox) {
    std::mt19937 rng(78);
    BM_PixelMap<BM_PixelRgb24> src(4200, 4100);
    uint64_t sums[2][3] = {};
    for (uint32_t y = 0; y < src.Height(); ++y) {
        uint8_t* row = src.Row(y);
        for (uint32_t x = 0; x < src.Width(); ++x) {
            const uint32_t v = rng();
            for (uint32_t c = 0; c < 3; ++c) {
                row[3 * x + c] = uint8_t(v >> (8 * c));
                sums[x < 2100 ? 0 : 1][c] += row[3 * x + c];
            }
        }
    }
    BM_PixelMap<BM_PixelBgra32> dst;
    ASSERT_TRUE(BM_Scale(src, 2, 1, dst));
    const uint64_t n = 2100ull * 4100;
    for (uint32_t x = 0; x < 2; ++x)
        EXPECT_EQ(dst.GetPixel(x, 0),
                  BM_PixelBgra32::FromRgba(
                      {uint8_t(sums[x][0] / n), uint8_t(sums[x][1] / n), uint8_t(sums[x][2] / n), 255}))
            << x;
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
