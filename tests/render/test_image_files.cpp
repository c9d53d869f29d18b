// Image files: our TGA codec against ImageMagick in both directions, hand-made 16-bit
// files, damaged data, and the import of other types through FFmpeg.

#include "render/BM_ImageExporter.h"
#include "render/BM_ImageImporter.h"
#include "render/BM_QMTBitmap.h"
#include "render/BM_TgaCodec.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

namespace {

constexpr uint32_t kW = 6, kH = 3;

// Distinct colours and alphas, so that a flipped row or column shows.
std::vector<BM_Rgba> SourcePixels() {
    std::vector<BM_Rgba> pixels;
    for (uint32_t y = 0; y < kH; ++y)
        for (uint32_t x = 0; x < kW; ++x)
            pixels.push_back({uint8_t(40 * x + 3), uint8_t(80 * y + 7), uint8_t(255 - 30 * x - y),
                              uint8_t(x == 0 ? 255 : 40 * x + 20 * y)});
    return pixels;
}

std::vector<uint8_t> ReadFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void WriteFile(const fs::path& path, const std::vector<uint8_t>& bytes) {
    std::ofstream out(path, std::ios::binary);
    out.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
}

bool HaveConvert() {
    return std::system("command -v convert > /dev/null 2>&1") == 0;
}

class ImageFiles : public ::testing::Test {
protected:
    void SetUp() override {
        dir_ = fs::temp_directory_path() / ("qms_pixels_" + std::to_string(getpid()) + "_" +
                                            ::testing::UnitTest::GetInstance()->current_test_info()->name());
        fs::create_directories(dir_);
    }
    void TearDown() override { fs::remove_all(dir_); }

    fs::path Path(const std::string& name) const { return dir_ / name; }

    // The source image as a PAM file with alpha.
    fs::path WritePam() const {
        std::string header = "P7\nWIDTH " + std::to_string(kW) + "\nHEIGHT " + std::to_string(kH) +
                             "\nDEPTH 4\nMAXVAL 255\nTUPLTYPE RGB_ALPHA\nENDHDR\n";
        std::vector<uint8_t> bytes(header.begin(), header.end());
        for (const BM_Rgba& p : SourcePixels())
            bytes.insert(bytes.end(), {p.r, p.g, p.b, p.a});
        const fs::path path = Path("source.pam");
        WriteFile(path, bytes);
        return path;
    }

    void Run(const std::string& command) const {
        ASSERT_EQ(std::system((command + " 2>/dev/null").c_str()), 0) << command;
    }

    // ImageMagick's own reading of a file, as RGBA bytes from the top row down. It keeps
    // a TGA file's rows in file order and its origin as a tag, which -auto-orient applies.
    std::vector<uint8_t> MagickRgba(const fs::path& file) const {
        const fs::path raw = Path("magick.rgba");
        Run("convert '" + file.string() + "' -auto-orient -depth 8 rgba:'" + raw.string() + "'");
        return ReadFile(raw);
    }

    fs::path dir_;
};

std::vector<uint8_t> MapBytes(const BM_PixelMap<BM_PixelRgba32>& map) {
    std::vector<uint8_t> bytes;
    for (uint32_t y = 0; y < map.Height(); ++y)
        bytes.insert(bytes.end(), map.Row(y), map.Row(y) + size_t(map.Width()) * 4);
    return bytes;
}

TEST_F(ImageFiles, TgaFilesOfImageMagickReadAsImageMagickReadsThem) {
    if (!HaveConvert())
        GTEST_SKIP() << "ImageMagick convert is not installed";
    const fs::path pam = WritePam();
    struct Variant {
        const char* name;
        const char* options;
        uint8_t type, bits;
    };
    const Variant variants[] = {
        {"rgba", "", 2, 32},
        {"rgba_rle", "-compress RLE", 10, 32},
        {"rgb", "-alpha off", 2, 24},
        {"rgb_rle", "-alpha off -compress RLE", 10, 24},
        {"gray", "-colorspace Gray -alpha off", 3, 8},
        {"gray_rle", "-colorspace Gray -alpha off -compress RLE", 11, 8},
    };
    for (const Variant& v : variants) {
        for (const char* orient : {"TopLeft", "BottomLeft"}) {
            SCOPED_TRACE(std::string(v.name) + " " + orient);
            const fs::path tga = Path(std::string(v.name) + "_" + orient + ".tga");
            // ImageMagick tags the origin without moving rows: a bottom-up file needs the flip.
            const std::string flip = std::string(orient) == "BottomLeft" ? " -flip" : "";
            Run("convert '" + pam.string() + "' " + v.options + flip + " -orient " + orient + " '" +
                tga.string() + "'");
            const std::vector<uint8_t> file = ReadFile(tga);
            ASSERT_GE(file.size(), 18u);
            ASSERT_EQ(file[2], v.type);
            ASSERT_EQ(file[16], v.bits);
            ASSERT_EQ((file[17] & 0x20) != 0, std::string(orient) == "TopLeft");
            BM_PixelMap<BM_PixelRgba32> map;
            UT_WString error;
            ASSERT_TRUE(BM_TgaCodec::Load(UT_FilePath(tga.string()), map, error)) << UT_ToUtf8(error);
            ASSERT_EQ(map.Width(), kW);
            ASSERT_EQ(map.Height(), kH);
            EXPECT_EQ(MapBytes(map), MagickRgba(tga));
            if (v.bits == 32) {
                std::vector<uint8_t> original;
                for (const BM_Rgba& p : SourcePixels())
                    original.insert(original.end(), {p.r, p.g, p.b, p.a});
                EXPECT_EQ(MapBytes(map), original);
            }
        }
    }
}

// A hand-made 16-bit file: two rows of two pixels, 1-5-5-5 words.
std::vector<uint8_t> SixteenBitTga(bool topDown, bool rle) {
    std::vector<uint8_t> bytes = {0, 0,  uint8_t(rle ? 10 : 2),
                                  0, 0,  0,
                                  0, 0,  0,
                                  0, 0,  0,
                                  2, 0,  2,
                                  0, 16, uint8_t(0x01 | (topDown ? 0x20 : 0))};
    // File order: red opaque, green transparent; then blue opaque twice.
    const uint16_t first[2] = {0xFC00, 0x03E0};
    const uint16_t second = 0x801F;
    const auto word = [&](uint16_t w) { bytes.insert(bytes.end(), {uint8_t(w), uint8_t(w >> 8)}); };
    if (rle) {
        bytes.push_back(0x01); // raw packet of two
        word(first[0]);
        word(first[1]);
        bytes.push_back(0x81); // run of two
        word(second);
    } else {
        word(first[0]);
        word(first[1]);
        word(second);
        word(second);
    }
    return bytes;
}

TEST_F(ImageFiles, SixteenBitTgaInBothOrigins) {
    for (bool topDown : {true, false}) {
        for (bool rle : {false, true}) {
            SCOPED_TRACE(testing::Message() << "top-down " << topDown << " rle " << rle);
            const std::vector<uint8_t> bytes = SixteenBitTga(topDown, rle);
            BM_PixelMap<BM_PixelRgba32> map;
            UT_WString error;
            ASSERT_TRUE(BM_TgaCodec::Decode(bytes.data(), bytes.size(), map, error)) << UT_ToUtf8(error);
            const uint32_t redRow = topDown ? 0 : 1, blueRow = 1 - redRow;
            EXPECT_EQ(map.GetPixel(0, redRow), BM_PixelRgba32::Make(255, 0, 0, 255));
            EXPECT_EQ(map.GetPixel(1, redRow), BM_PixelRgba32::Make(0, 255, 0, 0));
            EXPECT_EQ(map.GetPixel(0, blueRow), BM_PixelRgba32::Make(0, 0, 255, 255));
            EXPECT_EQ(map.GetPixel(1, blueRow), BM_PixelRgba32::Make(0, 0, 255, 255));
            if (HaveConvert()) {
                const fs::path path = Path("sixteen.tga");
                WriteFile(path, bytes);
                std::vector<uint8_t> magick = MagickRgba(path);
                ASSERT_EQ(magick.size(), 16u);
                // ImageMagick agrees on the colours; its alpha of 16-bit files is not compared.
                for (size_t i = 0; i < 16; i += 4)
                    magick[i + 3] = MapBytes(map)[i + 3];
                EXPECT_EQ(MapBytes(map), magick);
            }
        }
    }
}

TEST_F(ImageFiles, WrittenTgaIsExactAndImageMagickReadsIt) {
    BM_PixelMap<BM_PixelRgba32> map(kW, kH);
    const std::vector<BM_Rgba> pixels = SourcePixels();
    for (uint32_t y = 0; y < kH; ++y)
        for (uint32_t x = 0; x < kW; ++x)
            map.SetPixel(x, y, BM_PixelRgba32::FromRgba(pixels[y * kW + x]));
    std::vector<uint8_t> bytes;
    UT_WString error;
    ASSERT_TRUE(BM_TgaCodec::Encode(map, bytes, error));
    const std::vector<uint8_t> header = {0, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, kW, 0, kH, 0, 32, 0x28};
    ASSERT_EQ(bytes.size(), 18u + kW * kH * 4);
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin(), bytes.begin() + 18), header);
    // First pixel, stored B, G, R, A.
    EXPECT_EQ(std::vector<uint8_t>(bytes.begin() + 18, bytes.begin() + 22),
              std::vector<uint8_t>({pixels[0].b, pixels[0].g, pixels[0].r, pixels[0].a}));

    BM_PixelMap<BM_PixelRgba32> back;
    ASSERT_TRUE(BM_TgaCodec::Decode(bytes.data(), bytes.size(), back, error));
    EXPECT_EQ(MapBytes(back), MapBytes(map));

    if (!HaveConvert())
        GTEST_SKIP() << "ImageMagick convert is not installed";
    const fs::path path = Path("ours.tga");
    ASSERT_TRUE(BM_TgaCodec::Save(UT_FilePath(path.string()), map, error));
    EXPECT_EQ(MagickRgba(path), MapBytes(map));
}

TEST_F(ImageFiles, DamagedTgaGivesAMessage) {
    BM_PixelMap<BM_PixelRgba32> map(5, 4);
    std::vector<uint8_t> plain;
    UT_WString error;
    ASSERT_TRUE(BM_TgaCodec::Encode(map, plain, error));
    // Every cut of the file fails cleanly.
    for (size_t size = 0; size < plain.size(); ++size) {
        BM_PixelMap<BM_PixelRgba32> out(1, 1);
        error.clear();
        EXPECT_FALSE(BM_TgaCodec::Decode(plain.data(), size, out, error)) << size;
        EXPECT_FALSE(error.empty());
        EXPECT_EQ(out.Width(), 1u);
    }
    std::vector<uint8_t> badType = plain;
    badType[2] = 1;
    EXPECT_FALSE(BM_TgaCodec::Decode(badType.data(), badType.size(), map, error));
    EXPECT_EQ(UT_ToUtf8(error), "TGA image type 1 is not supported.");
    std::vector<uint8_t> badDepth = plain;
    badDepth[16] = 12;
    EXPECT_FALSE(BM_TgaCodec::Decode(badDepth.data(), badDepth.size(), map, error));

    // A run-length file whose packets stop early.
    std::vector<uint8_t> rle = SixteenBitTga(true, true);
    rle.resize(rle.size() - 1);
    EXPECT_FALSE(BM_TgaCodec::Decode(rle.data(), rle.size(), map, error));
    // A huge header over a few bytes is refused before allocating.
    std::vector<uint8_t> huge = SixteenBitTga(true, true);
    huge[12] = huge[13] = huge[14] = huge[15] = 0xFF;
    EXPECT_FALSE(BM_TgaCodec::Decode(huge.data(), huge.size(), map, error));

    // Random damage never crashes.
    std::mt19937 rng(4);
    const std::vector<uint8_t> seed = SixteenBitTga(false, true);
    for (int round = 0; round < 3000; ++round) {
        std::vector<uint8_t> bytes = round % 2 ? seed : plain;
        for (int k = 0; k < 3; ++k)
            bytes[rng() % bytes.size()] = uint8_t(rng());
        BM_PixelMap<BM_PixelRgba32> out;
        BM_TgaCodec::Decode(bytes.data(), rng() % (bytes.size() + 1), out, error);
    }
}

TEST_F(ImageFiles, OtherImageTypesComeThroughTheDecoders) {
    if (!HaveConvert())
        GTEST_SKIP() << "ImageMagick convert is not installed";
    const fs::path pam = WritePam();
    for (const char* ext : {"png", "bmp", "tiff", "webp"}) {
        SCOPED_TRACE(ext);
        const fs::path file = Path(std::string("image.") + ext);
        const std::string lossless = std::string(ext) == "webp" ? " -define webp:lossless=true" : "";
        Run("convert '" + pam.string() + "'" + lossless + " '" + file.string() + "'");
        BM_QMTBitmap bitmap;
        UT_WString error;
        ASSERT_TRUE(bitmap.LoadFromFile(UT_FilePath(file.string()), &error)) << UT_ToUtf8(error);
        auto* map = dynamic_cast<BM_PixelMap<BM_PixelRgba32>*>(bitmap.GetBitmap());
        ASSERT_NE(map, nullptr);
        ASSERT_EQ(map->Width(), kW);
        ASSERT_EQ(map->Height(), kH);
        EXPECT_EQ(MapBytes(*map), MagickRgba(file));
    }
    const fs::path junk = Path("junk.png");
    WriteFile(junk, {1, 2, 3, 4, 5, 6, 7, 8, 9});
    BM_QMTBitmap bitmap;
    UT_WString error;
    EXPECT_FALSE(bitmap.LoadFromFile(UT_FilePath(junk.string()), &error));
    EXPECT_NE(UT_ToUtf8(error).find("Unable to load the image file"), std::string::npos);
    EXPECT_EQ(bitmap.GetBitmap(), nullptr);
    EXPECT_FALSE(bitmap.LoadFromFile(UT_FilePath(Path("missing.tga").string()), &error));
}

TEST_F(ImageFiles, PngFilesKeepEveryPixelAndAlpha) {
    BM_PixelMap<BM_PixelRgba32> map(kW, kH);
    const std::vector<BM_Rgba> pixels = SourcePixels();
    for (uint32_t y = 0; y < kH; ++y)
        for (uint32_t x = 0; x < kW; ++x)
            map.SetPixel(x, y, BM_PixelRgba32::FromRgba(pixels[y * kW + x]));
    const UT_FilePath png(Path("out.png"));
    UT_WString error;
    ASSERT_TRUE(BM_ImageExporter::Save(png, map, error)) << UT_ToUtf8(error);
    BM_PixelMap<BM_PixelRgba32> back;
    ASSERT_TRUE(BM_ImageImporter::Load(png, back, error)) << UT_ToUtf8(error);
    EXPECT_EQ(MapBytes(back), MapBytes(map));
    if (HaveConvert()) {
        EXPECT_EQ(MagickRgba(Path("out.png")), MapBytes(map));
    }
    EXPECT_FALSE(BM_ImageExporter::CanSave(UT_FilePath(Path("out.jpg"))));
    EXPECT_FALSE(BM_ImageExporter::Save(UT_FilePath(Path("out.jpg")), map, error));
    EXPECT_FALSE(fs::exists(Path("out.jpg")));
    BM_PixelMap<BM_PixelRgba32> empty;
    EXPECT_FALSE(BM_ImageExporter::Save(png, empty, error));
}

TEST_F(ImageFiles, SavedFileLoadsBack) {
    auto map = std::make_unique<BM_PixelMap<BM_PixelBgr24>>(3, 2);
    map->SetPixel(2, 1, BM_PixelBgr24::FromRgba({10, 20, 30, 255}));
    BM_QMTBitmap bitmap;
    bitmap.SetBitmap(std::move(map));
    const UT_FilePath path(Path("saved.tga").string());
    ASSERT_TRUE(bitmap.SaveToFile(path));
    BM_QMTBitmap loaded;
    ASSERT_TRUE(loaded.LoadFromFile(path));
    auto* rgba = dynamic_cast<BM_PixelMap<BM_PixelRgba32>*>(loaded.GetBitmap());
    ASSERT_NE(rgba, nullptr);
    EXPECT_EQ(rgba->GetPixel(2, 1), BM_PixelRgba32::Make(10, 20, 30, 255));
    EXPECT_EQ(rgba->GetPixel(0, 0), BM_PixelRgba32::Make(0, 0, 0, 255));
    BM_QMTBitmap empty;
    EXPECT_FALSE(empty.SaveToFile(path));
}

} // namespace
