// Strides, allocation and ownership of the pixel maps.

#include "render/BM_PixelMap.h"

#include <gtest/gtest.h>

namespace {

template <class P> uint32_t StrideOf(uint32_t width) {
    return BM_PixelMap<P>(width, 1).GetStride();
}

TEST(PixelMap, StridesFollowTheRuleOfEachType) {
    // One pixel: four bytes in every full type.
    EXPECT_EQ(StrideOf<BM_PixelBgra32>(1), 4u);
    EXPECT_EQ(StrideOf<BM_PixelRgba32>(1), 4u);
    EXPECT_EQ(StrideOf<BM_PixelArgb32>(1), 4u);
    EXPECT_EQ(StrideOf<BM_PixelBgr24>(1), 4u);
    EXPECT_EQ(StrideOf<BM_PixelRgb24>(1), 4u);
    EXPECT_EQ(StrideOf<BM_PixelArgb16>(1), 4u);
    EXPECT_EQ(StrideOf<BM_Pixel8>(1), 4u);
    EXPECT_EQ(StrideOf<BM_PixelGray8>(1), 4u);
    EXPECT_EQ(StrideOf<BM_Pixel2>(1), 4u);
    EXPECT_EQ(StrideOf<BM_Pixel1>(1), 4u);
    // 24 bits: 3 pixels take 9 bytes, padded to 12.
    EXPECT_EQ(StrideOf<BM_PixelRgb24>(3), 12u);
    EXPECT_EQ(StrideOf<BM_PixelBgr24>(4), 12u);
    EXPECT_EQ(StrideOf<BM_PixelBgr24>(5), 16u);
    // 32 bits are never padded further.
    EXPECT_EQ(StrideOf<BM_PixelRgba32>(3), 12u);
    EXPECT_EQ(StrideOf<BM_PixelArgb16>(3), 8u);
    EXPECT_EQ(StrideOf<BM_PixelGray8>(5), 8u);
    EXPECT_EQ(StrideOf<BM_Pixel2>(17), 8u);
    EXPECT_EQ(StrideOf<BM_Pixel1>(32), 4u);
    EXPECT_EQ(StrideOf<BM_Pixel1>(33), 8u);
}

TEST(PixelMap, NewMapsAreZeroAndSizedByStride) {
    BM_PixelMap<BM_PixelRgb24> map(3, 5);
    EXPECT_EQ(map.Size(), 12u * 5u);
    EXPECT_TRUE(map.OwnsData());
    for (uint32_t i = 0; i < map.Size(); ++i)
        ASSERT_EQ(map.Data()[i], 0) << i;
    EXPECT_EQ(map.GetBitsPerPixel(), 24u);
    EXPECT_EQ(map.PixelAt(2, 1), map.Data() + 12 + 6);

    BM_PixelMap<BM_PixelRgba32> empty;
    EXPECT_EQ(empty.Data(), nullptr);
    EXPECT_EQ(empty.Size(), 0u);
    BM_PixelMap<BM_PixelRgba32> noRows(7, 0);
    EXPECT_EQ(noRows.Data(), nullptr);
    EXPECT_EQ(noRows.GetStride(), 28u);
}

TEST(PixelMap, PackedPixelsSitFromTheHighBitDown) {
    BM_PixelMap<BM_Pixel1> bits(10, 1);
    bits.SetPixel(0, 0, {1});
    bits.SetPixel(9, 0, {1});
    EXPECT_EQ(bits.Data()[0], 0x80);
    EXPECT_EQ(bits.Data()[1], 0x40);
    EXPECT_EQ(bits.GetPixel(9, 0).value, 1);
    EXPECT_EQ(bits.GetPixel(8, 0).value, 0);

    BM_PixelMap<BM_Pixel2> twos(5, 1);
    twos.SetPixel(0, 0, {3});
    twos.SetPixel(3, 0, {1});
    twos.SetPixel(4, 0, {2});
    EXPECT_EQ(twos.Data()[0], 0xC1);
    EXPECT_EQ(twos.Data()[1], 0x80);

    // The 16-bit word is little-endian: R in bits 15..11.
    BM_PixelMap<BM_PixelArgb16> words(1, 1);
    words.SetPixel(0, 0, {0xF801});
    EXPECT_EQ(words.Data()[0], 0x01);
    EXPECT_EQ(words.Data()[1], 0xF8);
}

TEST(PixelMap, ResizeDropsPixelsAndRecomputesStride) {
    BM_PixelMap<BM_PixelBgr24> map(2, 2);
    map.SetPixel(0, 0, BM_PixelBgr24::FromRgba({1, 2, 3, 255}));
    map.Resize(5, 3);
    EXPECT_EQ(map.GetStride(), 16u);
    EXPECT_EQ(map.Size(), 48u);
    EXPECT_EQ(map.Data()[0], 0);
    map.Resize(0, 0);
    EXPECT_EQ(map.Data(), nullptr);
    EXPECT_TRUE(map.OwnsData());
}

TEST(PixelMap, ForeignMemoryIsAdoptedWithoutCopy) {
    uint8_t memory[8 * 2] = {};
    memory[4] = 9;
    {
        BM_PixelMap<BM_PixelRgba32> map;
        map.SetData(memory, 2, 2, false);
        EXPECT_EQ(map.Data(), memory);
        EXPECT_EQ(map.GetStride(), 8u);
        EXPECT_EQ(map.GetPixel(1, 0).r, 9);
        map.SetPixel(0, 1, BM_PixelRgba32::Make(5, 6, 7, 8));
        const BM_ImageView view = map.View();
        EXPECT_EQ(view.data, memory);
        EXPECT_EQ(view.bytesPerLine, 8u);
        EXPECT_EQ(view.type, BM_PixelType::Rgba32);
    }
    // Not owned: still ours, with the pixel written through the map.
    EXPECT_EQ(memory[8], 5);
    EXPECT_EQ(memory[11], 8);
}

TEST(PixelMap, AssignAndCloneCopyDeeply) {
    BM_PixelMap<BM_PixelBgra32> a(3, 2);
    a.SetPixel(2, 1, BM_PixelBgra32::Make(1, 2, 3, 4));
    a.Assign(a);
    EXPECT_EQ(a.GetPixel(2, 1), BM_PixelBgra32::Make(1, 2, 3, 4));

    std::unique_ptr<BM_Bitmap> clone = a.Clone();
    auto* typed = dynamic_cast<BM_PixelMap<BM_PixelBgra32>*>(clone.get());
    ASSERT_NE(typed, nullptr);
    EXPECT_NE(typed->Data(), a.Data());
    EXPECT_EQ(typed->GetStride(), a.GetStride());
    EXPECT_EQ(typed->GetPixel(2, 1), BM_PixelBgra32::Make(1, 2, 3, 4));
    a.SetPixel(2, 1, BM_PixelBgra32::Make(0, 0, 0, 0));
    EXPECT_EQ(typed->GetPixel(2, 1).a, 4);

    a.Reset();
    EXPECT_EQ(a.Width(), 0u);
    EXPECT_EQ(a.Data(), nullptr);
    EXPECT_TRUE(a.OwnsData());
}

TEST(PixelMap, FactoryMakesEachType) {
    for (int t = 0; t <= int(BM_PixelType::Pixel1); ++t) {
        const auto type = BM_PixelType(t);
        std::unique_ptr<BM_Bitmap> map = BM_MakePixelMap(type, 3, 2);
        ASSERT_NE(map, nullptr);
        EXPECT_EQ(map->GetPixelType(), type);
        EXPECT_EQ(map->Size(), map->GetStride() * 2u);
    }
}

} // namespace
