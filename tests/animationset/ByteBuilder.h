#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

// Lays out expected file bytes by hand, field by field, little-endian, so that tests
// compare the writers against the format tables rather than against themselves.
class ByteBuilder {
public:
    ByteBuilder& U8(uint8_t v) {
        bytes_.push_back(v);
        return *this;
    }
    ByteBuilder& Bool(bool v) { return U8(v ? 1 : 0); }
    ByteBuilder& U16(uint16_t v) { return U8(static_cast<uint8_t>(v)).U8(static_cast<uint8_t>(v >> 8)); }
    ByteBuilder& U32(uint32_t v) { return U16(static_cast<uint16_t>(v)).U16(static_cast<uint16_t>(v >> 16)); }
    ByteBuilder& U64(uint64_t v) { return U32(static_cast<uint32_t>(v)).U32(static_cast<uint32_t>(v >> 32)); }
    ByteBuilder& F64(double v) {
        uint64_t bits;
        std::memcpy(&bits, &v, sizeof bits);
        return U64(bits);
    }
    ByteBuilder& F32(float v) {
        uint32_t bits;
        std::memcpy(&bits, &v, sizeof bits);
        return U32(bits);
    }
    // A narrow string with its NUL.
    ByteBuilder& Narrow(std::string_view text) {
        bytes_.insert(bytes_.end(), text.begin(), text.end());
        return U8(0);
    }
    // Count of 16-bit units, then the units.
    ByteBuilder& Wide(std::u16string_view text) {
        U32(static_cast<uint32_t>(text.size()));
        for (char16_t unit : text)
            U16(static_cast<uint16_t>(unit));
        return *this;
    }
    ByteBuilder& Raw(const std::vector<uint8_t>& more) {
        bytes_.insert(bytes_.end(), more.begin(), more.end());
        return *this;
    }
    // The container header of a version-51 file of the given kind.
    ByteBuilder& Header(uint32_t kind) { return Narrow("QuilmoorTechnologiesInc ").Narrow("51").U32(kind).U8(0); }

    const std::vector<uint8_t>& Bytes() const { return bytes_; }

private:
    std::vector<uint8_t> bytes_;
};
