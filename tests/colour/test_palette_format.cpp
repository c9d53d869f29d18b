// The persisted form of palettes: exact bytes at version 51, earlier string encodings,
// textures through shared references, and damaged data.

#include "colour/CM_PaletteList.h"
#include "colour/CM_ShareTextureData.h"
#include "colour/CM_Texture.h"
#include "core/CPersistentType.h"
#include "core/DB_Archive.h"
#include "core/DB_Exception.h"
#include "core/DB_MemFile.h"
#include "render/BM_PixelMap.h"

#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

class Bytes {
public:
    Bytes& U8(uint8_t v) {
        data.push_back(v);
        return *this;
    }
    Bytes& U16(uint16_t v) { return U8(uint8_t(v)).U8(uint8_t(v >> 8)); }
    Bytes& U32(uint32_t v) { return U16(uint16_t(v)).U16(uint16_t(v >> 16)); }
    Bytes& U64(uint64_t v) { return U32(uint32_t(v)).U32(uint32_t(v >> 32)); }
    Bytes& F64(double v) {
        uint64_t bits;
        std::memcpy(&bits, &v, 8);
        return U64(bits);
    }
    Bytes& Wide(std::u16string_view s) {
        U32(uint32_t(s.size()));
        for (char16_t c : s)
            U16(c);
        return *this;
    }
    Bytes& Narrow(std::string_view s) {
        U32(uint32_t(s.size()));
        for (char c : s)
            U8(uint8_t(c));
        return *this;
    }
    Bytes& Rgba(BM_Rgba c) { return U8(c.r).U8(c.g).U8(c.b).U8(c.a); }
    Bytes& Append(const Bytes& other) {
        data.insert(data.end(), other.data.begin(), other.data.end());
        return *this;
    }
    std::vector<uint8_t> data;
};

std::vector<uint8_t> Written(CPersistentObjBase& object, bool typed) {
    DB_MemFile file;
    DB_Archive out(&file, true);
    if (typed)
        EXPECT_TRUE(out.WriteTyped(object));
    else
        object.Write(out);
    return {file.Data(), file.Data() + file.Size()};
}

template <class T> void ReadBare(T& object, const std::vector<uint8_t>& bytes, int32_t version = 51) {
    DB_MemFile file;
    file.Write(bytes.data(), bytes.size());
    file.Rewind();
    DB_Archive in(&file, true);
    in.SetVersion(version);
    object.Read(in);
    EXPECT_EQ(file.BytesLeft(), 0u);
}

class PaletteFormat : public ::testing::Test {
protected:
    void SetUp() override {
        CoreRegisterTypes();
        PixelsRegisterTypes();
        ColourRegisterTypes();
    }
};

constexpr BM_Rgba kRed{255, 0, 0, 255};
constexpr UT_UniqueId kId{0x0102030405060708ull};

// The body of a solid red colour "ab" in one style.
Bytes SolidRedBody(uint64_t id = kId.Value()) {
    Bytes b;
    b.U32(0).U32(0).U32(1).U32(2);
    b.F64(0.0).Rgba(kRed).U32(0);
    b.F64(1.0).Rgba(kRed).U32(1);
    b.Wide(u"ab").U64(id);
    return b;
}

TEST_F(PaletteFormat, ColorBodyIsExact) {
    CM_Color color(u"ab", kId);
    color.AddStop({0.0, kRed, 0});
    EXPECT_EQ(Written(color, false), SolidRedBody().data);
    std::vector<uint8_t> typed = Written(color, true);
    EXPECT_EQ(typed[0], 121);
    EXPECT_EQ(typed[1], 0);

    // Two styles of a linear gradient; keys come back above every key read.
    Bytes b;
    b.U32(1).U32(1).U32(2);
    b.U32(1).F64(0.25).Rgba({1, 2, 3, 4}).U32(7);
    b.U32(2).F64(0.0).Rgba({5, 6, 7, 8}).U32(3).F64(0.5).Rgba({9, 10, 11, 12}).U32(12);
    b.Wide(u"grad").U64(99);
    CM_Color read;
    ReadBare(read, b.data);
    EXPECT_EQ(read.GetGradientKind(), CM_Color::kLinear);
    EXPECT_EQ(read.GetCurrentStyle(), 1u);
    EXPECT_EQ(read.GetStyleCount(), 2u);
    EXPECT_EQ(read.GetName(), u"grad");
    EXPECT_EQ(read.GetId(), UT_UniqueId(99));
    EXPECT_EQ(read.Stops()[1].colour, (BM_Rgba{9, 10, 11, 12}));
    EXPECT_EQ(read.GetKeyCounter(), 13u);
    EXPECT_EQ(Written(read, false), b.data);
}

TEST_F(PaletteFormat, PaletteAndListBodiesAreExact) {
    CM_PaletteList list;
    auto palette = std::make_unique<CM_Palette>(u"P", u"Day");
    palette->SetId(UT_UniqueId(0x55));
    auto color = std::make_unique<CM_Color>(u"ab", kId);
    color->AddStop({0.0, kRed, 0});
    palette->AddEntry(std::move(color));
    palette->AddStyle(u"N");
    palette->SetCurrentStyle(1);
    ASSERT_TRUE(list.InsertPalette(std::move(palette), 0));

    Bytes colorBody;
    colorBody.U32(0).U32(1).U32(2);
    for (int style = 0; style < 2; ++style)
        colorBody.U32(2).F64(0.0).Rgba(kRed).U32(0).F64(1.0).Rgba(kRed).U32(1);
    colorBody.Wide(u"ab").U64(kId.Value());
    Bytes paletteBody;
    paletteBody.Wide(u"P").U64(0x55).U32(1).U32(2).U32(0).Wide(u"Day").U32(1).Wide(u"N").U32(1);
    paletteBody.U16(121).Append(colorBody);
    Bytes listBody;
    listBody.U32(1).Append(paletteBody);
    EXPECT_EQ(Written(list, false), listBody.data);
    EXPECT_EQ(Written(*list.GetPalette(0), false), paletteBody.data);

    // Read into a new list: the entries enter its id map.
    CM_PaletteList read;
    ReadBare(read, listBody.data);
    ASSERT_EQ(read.GetPaletteCount(), 1u);
    EXPECT_EQ(read.GetPalette(0)->GetCurrentStyle(), 1u);
    EXPECT_EQ(read.Resolve(kId)->GetName(), u"ab");
    EXPECT_EQ(read.Resolve(kId)->GetCurrentStyle(), 1u);
    EXPECT_EQ(Written(read, false), listBody.data);

    // The whole default palette survives a round trip byte for byte.
    CM_PaletteList defaults;
    defaults.AddDefaultPalette();
    const std::vector<uint8_t> first = Written(defaults, true);
    DB_MemFile file;
    file.Write(first.data(), first.size());
    file.Rewind();
    DB_Archive in(&file, true);
    auto again = in.ReadNewAs<CM_PaletteList>();
    EXPECT_EQ(again->GetIdCount(), 122u);
    EXPECT_EQ(Written(*again, true), first);
}

TEST_F(PaletteFormat, EarlierVersionsReadTheirStrings) {
    // Before version 41 strings are bytes: Latin-1 in 30 and 40, UTF-8 in 31.
    for (int32_t version : {30, 31, 40}) {
        SCOPED_TRACE(version);
        Bytes b;
        b.U32(0).U32(0).U32(1).U32(2);
        b.F64(0.0).Rgba(kRed).U32(0).F64(1.0).Rgba(kRed).U32(1);
        b.Narrow(version == 31 ? "caf\xC3\xA9" : "caf\xE9").U64(5);
        CM_Color color;
        ReadBare(color, b.data, version);
        EXPECT_EQ(color.GetName(), u"caf\u00E9");
        EXPECT_EQ(color.GetId(), UT_UniqueId(5));

        Bytes palette;
        palette.Narrow("Old").U64(6).U32(0).U32(1).U32(0).Narrow("Default").U32(1).U16(121).Append(b);
        Bytes list;
        list.U32(1).Append(palette);
        CM_PaletteList read;
        ReadBare(read, list.data, version);
        EXPECT_EQ(read.GetPalette(0)->GetName(), u"Old");
        EXPECT_EQ(read.Resolve(UT_UniqueId(5))->GetName(), u"caf\u00E9");
    }
}

TEST_F(PaletteFormat, TexturesShareTheirImage) {
    auto image = std::make_unique<BM_PixelMap<BM_PixelRgba32>>(2, 1);
    image->SetPixel(0, 0, BM_PixelRgba32::Make(1, 2, 3, 255));
    image->SetPixel(1, 0, BM_PixelRgba32::Make(4, 5, 6, 255));
    auto data = std::make_shared<CM_ShareTextureData>(std::move(image));
    EXPECT_TRUE(data->IsOpaque());
    EXPECT_EQ(data->Thumbnail().Width(), 16u);
    EXPECT_EQ(data->Preview().Height(), 64u);

    CM_Palette palette(u"T", u"Default");
    palette.SetId(UT_UniqueId(7));
    auto texture = std::make_unique<CM_Texture>(u"wood", UT_UniqueId(8));
    texture->SetTextureData(data);
    palette.AddEntry(std::move(texture));
    palette.AddStyle(u"Second"); // the second style shares the same image

    Bytes image24;
    image24.U32(8).U32(2).U32(1).U32(32).Rgba({1, 2, 3, 255}).Rgba({4, 5, 6, 255}).U8(0);
    Bytes textureBody;
    textureBody.U32(0).U32(2).U16(1).U16(125).Append(image24).U16(0).U32(1).Wide(u"wood").U64(8);
    Bytes paletteBody;
    paletteBody.Wide(u"T").U64(7).U32(0).U32(2).U32(0).Wide(u"Default").U32(1).Wide(u"Second").U32(1);
    paletteBody.U16(124).Append(textureBody);
    EXPECT_EQ(Written(palette, false), paletteBody.data);

    CM_Palette read;
    ReadBare(read, paletteBody.data);
    auto* readTexture = dynamic_cast<CM_Texture*>(read.GetEntry(0));
    ASSERT_NE(readTexture, nullptr);
    EXPECT_EQ(readTexture->ValueAt(0).data, readTexture->ValueAt(1).data);
    ASSERT_NE(readTexture->GetTextureData(), nullptr);
    EXPECT_EQ(readTexture->GetTextureData()->Image().GetWidth(), 2u);
    EXPECT_EQ(readTexture->GetTextureData()->Thumbnail().GetPixel(15, 15),
              BM_PixelRgba32::Make(4, 5, 6, 255));
    EXPECT_TRUE(readTexture->IsOpaque());
}

TEST_F(PaletteFormat, UnreadableTextureFileGivesTheChecker) {
    CM_ShareTextureData data(UT_FilePath("/nonexistent/texture.png"));
    auto* map = dynamic_cast<const BM_PixelMap<BM_PixelRgba32>*>(data.Image().GetBitmap());
    ASSERT_NE(map, nullptr);
    ASSERT_EQ(map->Width(), 32u);
    ASSERT_EQ(map->Height(), 32u);
    const auto red = BM_PixelRgba32::Make(255, 0, 0, 255), clear = BM_PixelRgba32::Make(255, 255, 255, 0);
    EXPECT_EQ(map->GetPixel(0, 0), red);
    EXPECT_EQ(map->GetPixel(15, 15), red);
    EXPECT_EQ(map->GetPixel(16, 0), clear);
    EXPECT_EQ(map->GetPixel(0, 16), clear);
    EXPECT_EQ(map->GetPixel(31, 31), red);
    EXPECT_FALSE(data.IsOpaque());
    // Halving each square: the thumbnail keeps the checker.
    EXPECT_EQ(data.Thumbnail().GetPixel(0, 0), red);
    EXPECT_EQ(data.Thumbnail().GetPixel(8, 0), clear);
}

TEST_F(PaletteFormat, DamagedBodiesThrowTheArchiveError) {
    CM_PaletteList list;
    CM_Palette* palette = list.AddDefaultPalette();
    palette->AddStyle(u"Night");
    palette->AddEntry(std::make_unique<CM_Texture>(u"t"));
    const std::vector<uint8_t> good = Written(list, false);
    // Every cut fails with the archive's exception.
    for (size_t size = 0; size < good.size(); size += 1 + size / 64) {
        std::vector<uint8_t> cut(good.begin(), good.begin() + size);
        CM_PaletteList read;
        EXPECT_THROW(ReadBare(read, cut), DB_Exception) << size;
    }
    // A count far beyond the data is refused before anything is allocated.
    std::vector<uint8_t> huge = good;
    huge[0] = huge[1] = huge[2] = 0xFF;
    CM_PaletteList hugeList;
    EXPECT_THROW(ReadBare(hugeList, huge), DB_Exception);
    // A palette whose entry is of the wrong class.
    Bytes wrong;
    wrong.U32(1).Wide(u"P").U64(1).U32(0).U32(1).U32(0).Wide(u"D").U32(1).U16(125).U32(0);
    CM_PaletteList wrongList;
    EXPECT_THROW(ReadBare(wrongList, wrong.data), DB_Exception);
    // No styles at all.
    Bytes noStyles;
    noStyles.U32(1).Wide(u"P").U64(1).U32(0).U32(0).U32(0);
    CM_PaletteList noStylesList;
    EXPECT_THROW(ReadBare(noStylesList, noStyles.data), DB_Exception);

    // Random damage: either a list or the archive's exception, never a crash.
    std::mt19937 rng(9);
    for (int round = 0; round < 400; ++round) {
        std::vector<uint8_t> bytes = good;
        for (int k = 0; k < 4; ++k)
            bytes[rng() % bytes.size()] = uint8_t(rng());
        DB_MemFile file;
        file.Write(bytes.data(), bytes.size());
        file.Rewind();
        DB_Archive in(&file, true);
        CM_PaletteList read;
        try {
            read.Read(in);
            for (size_t i = 0; i < read.GetPaletteCount(); ++i)
                for (size_t e = 0; e < read.GetPalette(i)->GetEntryCount(); ++e)
                    read.GetPalette(i)->GetEntry(e)->IsOpaque();
        } catch (const DB_Exception&) {
        }
    }
}

} // namespace
