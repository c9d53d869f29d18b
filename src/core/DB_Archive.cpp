#include "core/DB_Archive.h"

#include "core/CPersistentType.h"
#include "core/DB_Exception.h"

#include <bit>
#include <cstring>

static_assert(std::endian::native == std::endian::little, "the stream encodings assume a little-endian host");

namespace {

// Objects nest (a scene holds levels, a drawing holds groups); damaged data must not
// be able to recurse without end.
constexpr int kMaxNesting = 200;

void AppendUtf16(UT_WString& out, char32_t cp) {
    if (cp > 0x10FFFF) {
        out.push_back(0xFFFD);
    } else if (cp >= 0x10000) {
        cp -= 0x10000;
        out.push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
        out.push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
    } else {
        out.push_back(static_cast<char16_t>(cp));
    }
}

// Version 31 files hold wide strings as UTF-8 bytes.
UT_WString DecodeUtf8(const std::vector<uint8_t>& bytes) {
    UT_WString out;
    size_t i = 0;
    while (i < bytes.size()) {
        const uint8_t b0 = bytes[i];
        int extra;
        char32_t cp;
        if (b0 < 0x80) {
            out.push_back(b0);
            ++i;
            continue;
        }
        if ((b0 & 0xE0) == 0xC0) {
            extra = 1;
            cp = b0 & 0x1F;
        } else if ((b0 & 0xF0) == 0xE0) {
            extra = 2;
            cp = b0 & 0x0F;
        } else if ((b0 & 0xF8) == 0xF0) {
            extra = 3;
            cp = b0 & 0x07;
        } else if ((b0 & 0xFC) == 0xF8) {
            extra = 4;
            cp = b0 & 0x03;
        } else if ((b0 & 0xFE) == 0xFC) {
            extra = 5;
            cp = b0 & 0x01;
        } else {
            out.push_back(0xFFFD);
            ++i;
            continue;
        }
        if (i + extra >= bytes.size()) {
            out.push_back(0xFFFD);
            break;
        }
        bool valid = true;
        for (int k = 1; k <= extra; ++k) {
            if ((bytes[i + k] & 0xC0) != 0x80) {
                valid = false;
                break;
            }
            cp = (cp << 6) | (bytes[i + k] & 0x3F);
        }
        if (!valid) {
            out.push_back(0xFFFD);
            ++i;
            continue;
        }
        AppendUtf16(out, cp);
        i += extra + 1;
    }
    return out;
}

thread_local int t_nesting = 0;

struct NestingGuard {
    explicit NestingGuard(const DB_Archive& archive) {
        if (++t_nesting > kMaxNesting) {
            --t_nesting;
            archive.ThrowUnexpected();
        }
    }
    ~NestingGuard() { --t_nesting; }
};

} // namespace

void DB_ObjectTable::Clear() {
    read.assign(1, nullptr);
    written.clear();
    written[nullptr] = 0;
}

DB_Archive::DB_Archive(DB_Stream* stream, bool embedded)
    : stream_(stream), embedded_(embedded), table_(std::make_unique<DB_ObjectTable>()) {}

DB_Archive::DB_Archive(DB_Archive& parent)
    : stream_(nullptr), embedded_(false), context_(parent.context_),
      table_(std::make_unique<DB_ObjectTable>()), trace_(parent.trace_) {
    if (parent.stream_) {
        stream_ = parent.stream_;
        version_ = parent.version_;
        embedded_ = parent.embedded_;
    }
}

void* DB_Archive::SetContext(void* context) {
    void* old = context_;
    context_ = context;
    return old;
}

void DB_Archive::WriteRaw(const void* data, size_t size) {
    if (size)
        stream_->Write(data, size);
}

void DB_Archive::ReadRaw(void* data, size_t size) {
    if (size)
        stream_->Read(data, size);
}

void DB_Archive::WriteBool(bool v) {
    WriteU8(v ? 1 : 0);
}
bool DB_Archive::ReadBool() {
    return ReadU8() != 0;
}

uint8_t DB_Archive::ReadU8() {
    uint8_t v;
    ReadRaw(&v, 1);
    return v;
}

void DB_Archive::WriteU16(uint16_t v) {
    WriteRaw(&v, 2);
}
uint16_t DB_Archive::ReadU16() {
    uint16_t v;
    ReadRaw(&v, 2);
    return v;
}

void DB_Archive::WriteU32(uint32_t v) {
    WriteRaw(&v, 4);
}
uint32_t DB_Archive::ReadU32() {
    uint32_t v;
    ReadRaw(&v, 4);
    return v;
}

void DB_Archive::WriteU64(uint64_t v) {
    WriteRaw(&v, 8);
}
uint64_t DB_Archive::ReadU64() {
    uint64_t v;
    ReadRaw(&v, 8);
    return v;
}

void DB_Archive::WriteF32(float v) {
    WriteRaw(&v, 4);
}
float DB_Archive::ReadF32() {
    float v;
    ReadRaw(&v, 4);
    return v;
}

void DB_Archive::WriteF64(double v) {
    WriteRaw(&v, 8);
}
double DB_Archive::ReadF64() {
    double v;
    ReadRaw(&v, 8);
    return v;
}

void DB_Archive::WriteTriple(const std::array<uint32_t, 3>& v) {
    for (uint32_t x : v)
        WriteU32(x);
}

std::array<uint32_t, 3> DB_Archive::ReadTriple() {
    std::array<uint32_t, 3> v;
    for (uint32_t& x : v)
        x = ReadU32();
    return v;
}

void DB_Archive::WriteNarrowString(std::string_view text) {
    WriteRaw(text.data(), text.size());
    WriteU8(0);
}

std::string DB_Archive::ReadNarrowString() {
    std::string text;
    for (;;) {
        const char c = static_cast<char>(ReadU8());
        if (c == 0)
            return text;
        text.push_back(c);
    }
}

bool DB_Archive::ReadNarrowString(char* buffer, size_t capacity) {
    for (size_t i = 0; i < capacity; ++i) {
        buffer[i] = static_cast<char>(ReadU8());
        if (buffer[i] == 0)
            return true;
    }
    return false;
}

void DB_Archive::WriteWideString(std::u16string_view text) {
    WriteU32(static_cast<uint32_t>(text.size()));
    for (char16_t c : text)
        WriteU16(c);
}

void DB_Archive::ReadWideString(UT_WString& text) {
    text.clear();
    const uint32_t count = ReadU32();
    if (count == 0)
        return;
    if (version_ >= 41) {
        RequireBytes(uint64_t(count) * 2);
        text.resize(count);
        ReadRaw(text.data(), size_t(count) * 2);
        return;
    }
    RequireBytes(count);
    std::vector<uint8_t> bytes(count);
    ReadRaw(bytes.data(), count);
    if (version_ == 31) {
        text = DecodeUtf8(bytes);
    } else {
        text.reserve(count);
        for (uint8_t b : bytes)
            text.push_back(b);
    }
}

UT_WString DB_Archive::ReadWideString() {
    UT_WString text;
    ReadWideString(text);
    return text;
}

void DB_Archive::WriteBlob(const void* data, uint32_t size) {
    WriteU32(size);
    WriteRaw(data, size);
}

std::vector<uint8_t> DB_Archive::ReadBlob() {
    const uint32_t size = ReadCount(1);
    std::vector<uint8_t> bytes(size);
    ReadRaw(bytes.data(), size);
    return bytes;
}

uint32_t DB_Archive::ReadCount(size_t minItemBytes) {
    const uint32_t count = ReadU32();
    if (minItemBytes)
        RequireBytes(uint64_t(count) * minItemBytes);
    return count;
}

void DB_Archive::RequireBytes(uint64_t bytes) const {
    const uint64_t left = stream_ ? stream_->BytesLeft() : 0;
    if (left != DB_Stream::kUnknownSize && bytes > left)
        ThrowUnexpected();
}

bool DB_Archive::WriteTyped(CPersistentObjBase& object) {
    const std::optional<uint16_t> id = CPersistentTypeRegistry::Instance().IdOf(object);
    if (!id)
        return false;
    WriteU16(*id);
    object.Write(*this);
    return true;
}

void DB_Archive::ReadTyped(CPersistentObjBase& object) {
    NestingGuard guard(*this);
    const uint16_t id = ReadU16();
    const std::optional<uint16_t> expected = CPersistentTypeRegistry::Instance().IdOf(object);
    const bool matches = expected && *expected == id;
    if (trace_)
        trace_->ObjectBegins(id, matches ? &object : nullptr);
    if (!matches)
        ThrowUnexpected();
    object.Read(*this);
    if (trace_)
        trace_->ObjectEnds();
}

std::unique_ptr<CPersistentObjBase> DB_Archive::ReadNew() {
    NestingGuard guard(*this);
    const uint16_t id = ReadU16();
    const CPersistentTypeBase* factory = CPersistentTypeRegistry::Instance().Find(id);
    if (!factory) {
        if (trace_)
            trace_->ObjectBegins(id, nullptr);
        ThrowUnexpected();
    }
    std::unique_ptr<CPersistentObjBase> object = factory->Create();
    if (trace_)
        trace_->ObjectBegins(id, object.get());
    object->Read(*this);
    if (trace_)
        trace_->ObjectEnds();
    return object;
}

void DB_Archive::WriteShared(CPersistentObjBase* object) {
    auto found = table_->written.find(object);
    if (found != table_->written.end()) {
        WriteU16(0);
        WriteU32(found->second);
        return;
    }
    if (!CPersistentTypeRegistry::Instance().IdOf(*object))
        throw DB_Exception(u"Unable to write an object of an unregistered class");
    WriteU16(1);
    WriteTyped(*object);
    const auto index = static_cast<uint32_t>(table_->written.size());
    table_->written.emplace(object, index);
}

std::shared_ptr<CPersistentObjBase> DB_Archive::ReadShared() {
    const uint16_t tag = ReadU16();
    if (tag != 0) {
        std::shared_ptr<CPersistentObjBase> object = ReadNew();
        table_->read.push_back(object);
        if (trace_)
            trace_->SharedEntered(static_cast<uint32_t>(table_->read.size() - 1));
        return object;
    }
    const uint32_t index = ReadU32();
    if (trace_)
        trace_->SharedReferenced(index);
    if (index < table_->read.size())
        return table_->read[index];
    return nullptr;
}

void DB_Archive::Rewind() {
    if (stream_)
        stream_->Rewind();
    table_->Clear();
}

UT_WString DB_Archive::GetName() const {
    return stream_ ? stream_->GetName() : UT_WString();
}

void DB_Archive::ThrowUnexpected() const {
    throw DB_Exception(u"Unexpected data found while reading " + GetName());
}
