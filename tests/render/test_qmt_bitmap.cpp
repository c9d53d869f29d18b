// The persistent bitmap record: exact bytes, the types that come back, the hook, and
// damaged records.

#include "core/CPersistentType.h"
#include "core/DB_Archive.h"
#include "core/DB_Exception.h"
#include "core/DB_MemFile.h"
#include "render/BM_PixelMap.h"
#include "render/BM_QMTBitmap.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

std::vector<uint8_t> Bytes(const DB_MemFile& file) {
    return {file.Data(), file.Data() + file.Size()};
}

void PutU32(std::vector<uint8_t>& b, uint32_t v) {
    for (int i = 0; i < 4; ++i)
        b.push_back(uint8_t(v >> (8 * i)));
}

class CountingHook : public BM_QMTBitmapHook {
public:
    explicit CountingHook(int* calls) : calls_(calls) {}
    void OnBitmapChanged() override { ++*calls_; }

private:
    int* calls_;
};

std::vector<uint8_t> Store(BM_QMTBitmap& bitmap) {
    DB_MemFile file;
    DB_Archive out(&file, true);
    bitmap.Store(out);
    return Bytes(file);
}

void LoadBytes(BM_QMTBitmap& bitmap, const std::vector<uint8_t>& bytes) {
    DB_MemFile file;
    file.Write(bytes.data(), bytes.size());
    file.Rewind();
    DB_Archive in(&file, true);
    bitmap.Load(in);
}

TEST(QMTBitmap, EmptyRecordIsOneZero) {
    BM_QMTBitmap bitmap;
    EXPECT_EQ(Store(bitmap), std::vector<uint8_t>({0, 0, 0, 0}));
    EXPECT_EQ(bitmap.GetDepth(), -1);
}

TEST(QMTBitmap, Bgra32IsWrittenAsItIsAndReadAsRgba32) {
    auto map = std::make_unique<BM_PixelMap<BM_PixelBgra32>>(2, 1);
    map->SetPixel(0, 0, BM_PixelBgra32::Make(1, 2, 3, 4));
    map->SetPixel(1, 0, BM_PixelBgra32::Make(5, 6, 7, 8));
    BM_QMTBitmap bitmap;
    bitmap.SetBitmap(std::move(map));
    EXPECT_EQ(bitmap.GetDepth(), 32);
    std::vector<uint8_t> expected;
    PutU32(expected, 8);
    PutU32(expected, 2);
    PutU32(expected, 1);
    PutU32(expected, 32);
    for (uint8_t b : {1, 2, 3, 4, 5, 6, 7, 8})
        expected.push_back(b);
    expected.push_back(0);
    const std::vector<uint8_t> bytes = Store(bitmap);
    EXPECT_EQ(bytes, expected);

    BM_QMTBitmap loaded;
    int calls = 0;
    loaded.SetHook(std::make_unique<CountingHook>(&calls));
    LoadBytes(loaded, bytes);
    EXPECT_EQ(calls, 1);
    auto* rgba = dynamic_cast<BM_PixelMap<BM_PixelRgba32>*>(loaded.GetBitmap());
    ASSERT_NE(rgba, nullptr);
    // The bytes are kept; only their meaning changes.
    EXPECT_EQ(rgba->GetPixel(0, 0), BM_PixelRgba32::Make(1, 2, 3, 4));
    EXPECT_EQ(Store(loaded), bytes);
}

TEST(QMTBitmap, TwentyFourBitsKeepTheirPadding) {
    auto map = std::make_unique<BM_PixelMap<BM_PixelBgr24>>(3, 2);
    for (uint32_t y = 0; y < 2; ++y)
        for (uint32_t x = 0; x < 3; ++x)
            map->SetPixel(x, y, BM_PixelBgr24::FromRgba({uint8_t(x), uint8_t(y), 9, 255}));
    BM_QMTBitmap bitmap;
    bitmap.SetBitmap(std::move(map));
    const std::vector<uint8_t> bytes = Store(bitmap);
    ASSERT_EQ(bytes.size(), 16u + 24u + 1u);
    EXPECT_EQ(bytes[0], 24);  // size
    EXPECT_EQ(bytes[12], 24); // depth
    EXPECT_EQ(bytes[16 + 9], 0);
    BM_QMTBitmap loaded;
    LoadBytes(loaded, bytes);
    auto* rgb = dynamic_cast<BM_PixelMap<BM_PixelRgb24>*>(loaded.GetBitmap());
    ASSERT_NE(rgb, nullptr);
    EXPECT_EQ(rgb->GetStride(), 12u);
    EXPECT_EQ(Store(loaded), bytes);
}

TEST(QMTBitmap, OtherDepthsAreStoredAsRgba32) {
    auto map = std::make_unique<BM_PixelMap<BM_PixelGray8>>(3, 1);
    map->SetPixel(1, 0, {200});
    BM_QMTBitmap bitmap;
    bitmap.SetBitmap(std::move(map));
    EXPECT_EQ(bitmap.GetDepth(), 0);
    const std::vector<uint8_t> bytes = Store(bitmap);
    ASSERT_EQ(bytes.size(), 16u + 12u + 1u);
    EXPECT_EQ(bytes[12], 32);
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin() + 20, bytes.begin() + 24),
              std::vector<uint8_t>({200, 200, 200, 255}));

    BM_QMTBitmap pixel8;
    pixel8.SetBitmap(std::make_unique<BM_PixelMap<BM_Pixel8>>(1, 1));
    EXPECT_EQ(pixel8.GetDepth(), 8);
    pixel8.SetBitmap(std::make_unique<BM_PixelMap<BM_PixelArgb16>>(1, 1));
    EXPECT_EQ(pixel8.GetDepth(), 16);
    pixel8.SetBitmap(std::make_unique<BM_PixelMap<BM_Pixel1>>(1, 1));
    EXPECT_EQ(pixel8.GetDepth(), -1);
}

TEST(QMTBitmap, SixteenBitRecordsOfOtherWritersAreRead) {
    // One 16-bit pixel, rows padded to four bytes: opaque red.
    std::vector<uint8_t> bytes;
    PutU32(bytes, 4);
    PutU32(bytes, 1);
    PutU32(bytes, 1);
    PutU32(bytes, 16);
    for (uint8_t b : {0x01, 0xF8, 0, 0, 0})
        bytes.push_back(b);
    BM_QMTBitmap loaded;
    LoadBytes(loaded, bytes);
    auto* rgba = dynamic_cast<BM_PixelMap<BM_PixelRgba32>*>(loaded.GetBitmap());
    ASSERT_NE(rgba, nullptr);
    EXPECT_EQ(rgba->GetPixel(0, 0), BM_PixelRgba32::Make(248, 0, 0, 255));
}

TEST(QMTBitmap, ZeroSizeLeavesTheObjectAsItWas) {
    BM_QMTBitmap bitmap;
    int calls = 0;
    bitmap.SetHook(std::make_unique<CountingHook>(&calls));
    bitmap.SetBitmap(std::make_unique<BM_PixelMap<BM_PixelRgba32>>(2, 2));
    EXPECT_EQ(calls, 1);
    LoadBytes(bitmap, {0, 0, 0, 0});
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(bitmap.GetWidth(), 2u);
}

TEST(QMTBitmap, DamagedRecordsThrow) {
    std::vector<uint8_t> header;
    PutU32(header, 16);
    PutU32(header, 2);
    PutU32(header, 2);
    PutU32(header, 32);
    // Pixels missing.
    {
        BM_QMTBitmap bitmap;
        EXPECT_THROW(LoadBytes(bitmap, header), DB_Exception);
        EXPECT_EQ(bitmap.GetBitmap(), nullptr);
    }
    // A size too small for the dimensions.
    {
        std::vector<uint8_t> bytes;
        PutU32(bytes, 4);
        PutU32(bytes, 100);
        PutU32(bytes, 100);
        PutU32(bytes, 32);
        bytes.insert(bytes.end(), 5, 0);
        BM_QMTBitmap bitmap;
        EXPECT_THROW(LoadBytes(bitmap, bytes), DB_Exception);
    }
    // Negative dimensions.
    {
        std::vector<uint8_t> bytes;
        PutU32(bytes, 4);
        PutU32(bytes, uint32_t(-1));
        PutU32(bytes, 1);
        PutU32(bytes, 32);
        bytes.insert(bytes.end(), 5, 0);
        BM_QMTBitmap bitmap;
        EXPECT_THROW(LoadBytes(bitmap, bytes), DB_Exception);
    }
    // A map too wide to hold once it is made 32 bits deep, though its record is empty.
    for (int32_t depth : {0, 8, 16, 24, 32}) {
        std::vector<uint8_t> bytes;
        PutU32(bytes, 4);
        PutU32(bytes, 0x7FFFFFFF);
        PutU32(bytes, 0);
        PutU32(bytes, uint32_t(depth));
        bytes.insert(bytes.end(), 5, 0);
        BM_QMTBitmap bitmap;
        EXPECT_THROW(LoadBytes(bitmap, bytes), DB_Exception) << depth;
    }
    // A size larger than the map: the rest is consumed, and what follows reads on.
    {
        std::vector<uint8_t> bytes;
        PutU32(bytes, 8);
        PutU32(bytes, 1);
        PutU32(bytes, 1);
        PutU32(bytes, 32);
        bytes.insert(bytes.end(), {1, 2, 3, 4, 0xEE, 0xEE, 0xEE, 0xEE, 0});
        PutU32(bytes, 0xCAFE);
        DB_MemFile file;
        file.Write(bytes.data(), bytes.size());
        file.Rewind();
        DB_Archive in(&file, true);
        BM_QMTBitmap bitmap;
        bitmap.Load(in);
        EXPECT_EQ(in.ReadU32(), 0xCAFEu);
        EXPECT_EQ(bitmap.GetWidth(), 1u);
    }
}

TEST(QMTBitmap, TypedObjectRoundTrip) {
    PixelsRegisterTypes();
    PixelsRegisterTypes();
    BM_QMTBitmap bitmap;
    bitmap.SetBitmap(std::make_unique<BM_PixelMap<BM_PixelRgba32>>(1, 1));
    DB_MemFile file;
    DB_Archive out(&file, true);
    ASSERT_TRUE(out.WriteTyped(bitmap));
    EXPECT_EQ(file.Data()[0], 0x91); // 401
    EXPECT_EQ(file.Data()[1], 0x01);
    file.Rewind();
    DB_Archive in(&file, true);
    auto read = in.ReadNewAs<BM_QMTBitmap>();
    EXPECT_EQ(read->GetWidth(), 1u);
}

} // namespace
