#include "render/BM_TgaCodec.h"

#include "core/UT_Format.h"
#include "render/BM_Convert.h"

#include <fstream>
#include <iterator>

namespace {

constexpr size_t kHeaderSize = 18;

struct Header {
    uint8_t idLength, colorMapType, imageType;
    uint16_t mapFirst, mapLength;
    uint8_t mapEntryBits;
    uint16_t width, height;
    uint8_t bits, descriptor;
};

uint16_t U16(const uint8_t* p) {
    return static_cast<uint16_t>(p[0] | (p[1] << 8));
}

Header ParseHeader(const uint8_t* p) {
    return {p[0], p[1], p[2], U16(p + 3), U16(p + 5), p[7], U16(p + 12), U16(p + 14), p[16], p[17]};
}

bool IsGray(uint8_t type) {
    return type == 3 || type == 11;
}
bool IsRle(uint8_t type) {
    return type == 10 || type == 11;
}

bool SupportedDepth(const Header& h) {
    if (IsGray(h.imageType))
        return h.bits == 8 || h.bits == 16;
    return h.bits == 15 || h.bits == 16 || h.bits == 24 || h.bits == 32;
}

// Turns one stored pixel into RGBA by the header's depth and alpha bits.
struct PixelReader {
    bool gray;
    uint32_t bytes;
    uint8_t alphaBits;

    BM_PixelRgba32 operator()(const uint8_t* p) const {
        if (gray) {
            const uint8_t a = bytes == 2 ? p[1] : 255;
            return BM_PixelRgba32::Make(p[0], p[0], p[0], alphaBits ? a : 255);
        }
        switch (bytes) {
        case 2: {
            const uint16_t v = U16(p);
            const auto expand = [](uint32_t c) { return static_cast<uint8_t>((c << 3) | (c >> 2)); };
            const uint8_t a = (alphaBits && !(v & 0x8000)) ? 0 : 255;
            return BM_PixelRgba32::Make(expand((v >> 10) & 0x1F), expand((v >> 5) & 0x1F), expand(v & 0x1F),
                                        a);
        }
        case 3:
            return BM_PixelRgba32::Make(p[2], p[1], p[0], 255);
        default:
            return BM_PixelRgba32::Make(p[2], p[1], p[0], alphaBits ? p[3] : 255);
        }
    }
};

} // namespace

bool BM_TgaCodec::LooksLikeTga(const uint8_t* data, size_t size) {
    if (size < kHeaderSize)
        return false;
    const Header h = ParseHeader(data);
    const bool knownType = h.imageType == 2 || h.imageType == 3 || h.imageType == 10 || h.imageType == 11;
    return knownType && h.colorMapType <= 1 && SupportedDepth(h) && (h.descriptor & 0xC0) == 0;
}

bool BM_TgaCodec::Decode(const uint8_t* data, size_t size, BM_PixelMap<BM_PixelRgba32>& out,
                         UT_WString& error) {
    if (size < kHeaderSize) {
        error = u"The TGA data is too short for its header.";
        return false;
    }
    const Header h = ParseHeader(data);
    if (h.imageType != 2 && h.imageType != 3 && h.imageType != 10 && h.imageType != 11) {
        error = UT_Fmt(u"TGA image type %1$d is not supported.", UT_Num(h.imageType));
        return false;
    }
    if (h.colorMapType > 1 || !SupportedDepth(h)) {
        error = UT_Fmt(u"TGA images of type %1$d with %2$d bits a pixel are not supported.",
                       UT_Num(h.imageType), UT_Num(h.bits));
        return false;
    }
    const uint32_t pixelBytes = (h.bits + 7u) / 8u;
    size_t pos = kHeaderSize + h.idLength;
    if (h.colorMapType == 1)
        pos += size_t(h.mapLength) * ((h.mapEntryBits + 7u) / 8u);
    if (pos > size) {
        error = u"The TGA data ends inside its header.";
        return false;
    }
    const uint64_t pixels = uint64_t(h.width) * h.height;
    const uint64_t left = size - pos;
    // A run packet gives at most 128 pixels from 1 + pixelBytes bytes; refuse sizes that the
    // data cannot hold before allocating anything.
    const bool fits =
        IsRle(h.imageType) ? pixels <= (left / (1 + pixelBytes) + 1) * 128 : pixels * pixelBytes <= left;
    if (!fits) {
        error = u"The TGA data is truncated.";
        return false;
    }

    const uint8_t alphaBits = h.descriptor & 0x0F;
    const PixelReader read{IsGray(h.imageType), pixelBytes, alphaBits};
    const bool topDown = (h.descriptor & 0x20) != 0;
    const bool rightToLeft = (h.descriptor & 0x10) != 0;
    BM_PixelMap<BM_PixelRgba32> map(h.width, h.height);

    const auto place = [&](uint64_t index, BM_PixelRgba32 p) {
        const auto fileRow = static_cast<uint32_t>(index / h.width);
        const auto fileCol = static_cast<uint32_t>(index % h.width);
        const uint32_t y = topDown ? fileRow : h.height - 1 - fileRow;
        const uint32_t x = rightToLeft ? h.width - 1 - fileCol : fileCol;
        map.SetPixel(x, y, p);
    };

    const uint8_t* in = data + pos;
    const uint8_t* end = data + size;
    if (!IsRle(h.imageType)) {
        for (uint64_t i = 0; i < pixels; ++i, in += pixelBytes)
            place(i, read(in));
    } else {
        uint64_t i = 0;
        while (i < pixels) {
            if (in >= end) {
                error = u"The TGA data is truncated.";
                return false;
            }
            const uint8_t packet = *in++;
            const uint32_t count = (packet & 0x7F) + 1u;
            const bool run = (packet & 0x80) != 0;
            const size_t need = run ? pixelBytes : size_t(count) * pixelBytes;
            if (size_t(end - in) < need) {
                error = u"The TGA data is truncated.";
                return false;
            }
            // A packet may cross rows; one that runs past the image is cut.
            for (uint32_t k = 0; k < count && i < pixels; ++k, ++i)
                place(i, read(run ? in : in + size_t(k) * pixelBytes));
            in += need;
        }
    }
    out = std::move(map);
    return true;
}

bool BM_TgaCodec::Load(const UT_FilePath& path, BM_PixelMap<BM_PixelRgba32>& out, UT_WString& error) {
    std::ifstream file(path.Path(), std::ios::binary);
    if (!file) {
        error = UT_Fmt(u"Unable to open the image file %1$S", path.Wide());
        return false;
    }
    const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(file)),
                                     std::istreambuf_iterator<char>());
    if (!Decode(bytes.data(), bytes.size(), out, error)) {
        error = UT_Fmt(u"Unable to load the image file %1$S: %2$S", path.Wide(), error);
        return false;
    }
    return true;
}

bool BM_TgaCodec::Encode(const BM_Bitmap& bitmap, std::vector<uint8_t>& bytes, UT_WString& error) {
    if (bitmap.Width() > 0xFFFF || bitmap.Height() > 0xFFFF) {
        error = u"The image is too large for a TGA file.";
        return false;
    }
    BM_PixelMap<BM_PixelBgra32> bgra;
    const BM_Bitmap* source = &bitmap;
    if (bitmap.GetPixelType() != BM_PixelType::Bgra32) {
        if (!BM_Convert(bgra, bitmap)) {
            error = u"The image cannot be converted for a TGA file.";
            return false;
        }
        source = &bgra;
    }
    const uint32_t w = bitmap.Width(), h = bitmap.Height();
    bytes.assign(kHeaderSize, 0);
    bytes[2] = 2;
    bytes[12] = static_cast<uint8_t>(w);
    bytes[13] = static_cast<uint8_t>(w >> 8);
    bytes[14] = static_cast<uint8_t>(h);
    bytes[15] = static_cast<uint8_t>(h >> 8);
    bytes[16] = 32;
    bytes[17] = 0x28; // eight alpha bits, top-left origin
    bytes.reserve(kHeaderSize + size_t(w) * h * 4);
    for (uint32_t y = 0; y < h && w > 0; ++y) {
        const uint8_t* row = source->Row(y);
        bytes.insert(bytes.end(), row, row + size_t(w) * 4);
    }
    return true;
}

bool BM_TgaCodec::Save(const UT_FilePath& path, const BM_Bitmap& bitmap, UT_WString& error) {
    std::vector<uint8_t> bytes;
    if (!Encode(bitmap, bytes, error))
        return false;
    std::ofstream file(path.Path(), std::ios::binary | std::ios::trunc);
    if (file)
        file.write(reinterpret_cast<const char*>(bytes.data()), std::streamsize(bytes.size()));
    if (file)
        file.close();
    if (!file) {
        error = UT_Fmt(u"Unable to write to file %1$S", path.Wide());
        return false;
    }
    return true;
}
