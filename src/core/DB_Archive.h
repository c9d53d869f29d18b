#pragma once

#include "core/CPersistentObjBase.h"
#include "core/DB_Stream.h"
#include "core/UT_String.h"
#include "core/UT_UniqueId.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

// Told of every object that an archive reads, in the order the reader meets them; a
// debugging aid (qms dump). Objects nest: each ObjectBegins is followed by the calls of
// the objects inside it, then by its ObjectEnds, unless reading stopped with an exception.
class DB_ArchiveTrace {
public:
    virtual ~DB_ArchiveTrace() = default;
    // The type id of an object was just read; `object` is null when no class has this id.
    virtual void ObjectBegins(uint16_t typeId, const CPersistentObjBase* object) = 0;
    virtual void ObjectEnds() = 0;
    // The object that just ended entered the shared-reference table under `index`.
    virtual void SharedEntered(uint32_t index) = 0;
    // A reference to the table's entry `index` was read.
    virtual void SharedReferenced(uint32_t index) = 0;
};

// Shared-reference state of one archive. Index 0 is the null object on both sides.
class DB_ObjectTable {
public:
    DB_ObjectTable() { Clear(); }
    void Clear();

    // Reader side: objects in the order their bodies ended.
    std::vector<std::shared_ptr<CPersistentObjBase>> read;
    // Writer side: object to index.
    std::map<const CPersistentObjBase*, uint32_t> written;
};

// Puts primitive encodings and object references on a stream. All values are
// little-endian, unaligned, without padding.
class DB_Archive {
public:
    static constexpr int32_t kCurrentVersion = 51;

    DB_Archive(DB_Stream* stream, bool embedded);
    // A nested archive: shares the parent's stream, version, embedded flag and context,
    // with a table of its own, so nothing written through it refers to the parent's objects.
    explicit DB_Archive(DB_Archive& parent);
    DB_Archive(const DB_Archive&) = delete;
    DB_Archive& operator=(const DB_Archive&) = delete;

    DB_Stream* Stream() const { return stream_; }
    int32_t Version() const { return version_; }
    void SetVersion(int32_t version) { version_ = version; }
    bool IsEmbedded() const { return embedded_; }
    bool IsConverting() const { return converting_; }
    void SetConverting(bool converting) { converting_ = converting; }
    void* Context() const { return context_; }
    // Returns the previous context.
    void* SetContext(void* context);
    bool HeaderFlag() const { return headerFlag_; }
    void SetHeaderFlag(bool flag) { headerFlag_ = flag; }
    DB_ObjectTable& Table() { return *table_; }
    // Not owned; null for none. A nested archive takes its parent's.
    void SetTrace(DB_ArchiveTrace* trace) { trace_ = trace; }
    DB_ArchiveTrace* Trace() const { return trace_; }

    // Primitives.
    void WriteBool(bool v);
    bool ReadBool();
    void WriteU8(uint8_t v) { WriteRaw(&v, 1); }
    uint8_t ReadU8();
    void WriteI8(int8_t v) { WriteU8(static_cast<uint8_t>(v)); }
    int8_t ReadI8() { return static_cast<int8_t>(ReadU8()); }
    void WriteU16(uint16_t v);
    uint16_t ReadU16();
    void WriteI16(int16_t v) { WriteU16(static_cast<uint16_t>(v)); }
    int16_t ReadI16() { return static_cast<int16_t>(ReadU16()); }
    void WriteU32(uint32_t v);
    uint32_t ReadU32();
    void WriteI32(int32_t v) { WriteU32(static_cast<uint32_t>(v)); }
    int32_t ReadI32() { return static_cast<int32_t>(ReadU32()); }
    void WriteU64(uint64_t v);
    uint64_t ReadU64();
    void WriteI64(int64_t v) { WriteU64(static_cast<uint64_t>(v)); }
    int64_t ReadI64() { return static_cast<int64_t>(ReadU64()); }
    void WriteF32(float v);
    float ReadF32();
    void WriteF64(double v);
    double ReadF64();
    // Scene, element and cell identifiers; 0xFFFFFFFF is the invalid value.
    void WriteId(uint32_t id) { WriteU32(id); }
    uint32_t ReadId() { return ReadU32(); }
    void WriteUniqueId(UT_UniqueId id) { WriteU64(id.Value()); }
    UT_UniqueId ReadUniqueId() { return UT_UniqueId(ReadU64()); }
    void WriteTriple(const std::array<uint32_t, 3>& v);
    std::array<uint32_t, 3> ReadTriple();

    // Bytes up to and including a NUL; used by file headers only.
    void WriteNarrowString(std::string_view text);
    // Reads up to the NUL, of any length (bounded by the bytes left).
    std::string ReadNarrowString();
    // Fills a caller's buffer; true if the NUL arrived before the capacity ran out.
    bool ReadNarrowString(char* buffer, size_t capacity);

    // u32 count of 16-bit units, then the units. Reading depends on the version.
    void WriteWideString(std::u16string_view text);
    void ReadWideString(UT_WString& text);
    UT_WString ReadWideString();

    // u32 byte count, then the bytes.
    void WriteBlob(const void* data, uint32_t size);
    std::vector<uint8_t> ReadBlob();

    // Container counts. ReadCount refuses a count whose items, each at least
    // minItemBytes long, cannot fit in what is left of the stream.
    void WriteCount(size_t count) { WriteU32(static_cast<uint32_t>(count)); }
    uint32_t ReadCount(size_t minItemBytes = 1);
    // Throws if fewer than `bytes` can be left to read.
    void RequireBytes(uint64_t bytes) const;

    void WriteRaw(const void* data, size_t size);
    void ReadRaw(void* data, size_t size);

    // Objects.
    // Writes the u16 id and the body; false and nothing written for an unregistered class.
    bool WriteTyped(CPersistentObjBase& object);
    // Reads the id and checks it against the object's own class.
    void ReadTyped(CPersistentObjBase& object);
    std::unique_ptr<CPersistentObjBase> ReadNew();
    template <class T> std::unique_ptr<T> ReadNewAs();
    // Shared references: tag 1 and a typed object the first time, tag 0 and the
    // table index afterwards. Null is tag 0, index 0.
    void WriteShared(CPersistentObjBase* object);
    std::shared_ptr<CPersistentObjBase> ReadShared();
    template <class T> std::shared_ptr<T> ReadSharedAs();

    void Rewind();
    UT_WString GetName() const;

    // Raises the class readers' message for damaged structure: "Unexpected data found
    // while reading <stream>".
    [[noreturn]] void ThrowUnexpected() const;

private:
    DB_Stream* stream_;
    int32_t version_ = kCurrentVersion;
    bool embedded_;
    bool converting_ = false;
    void* context_ = nullptr;
    std::unique_ptr<DB_ObjectTable> table_;
    bool headerFlag_ = false;
    DB_ArchiveTrace* trace_ = nullptr;
};

template <class T> std::unique_ptr<T> DB_Archive::ReadNewAs() {
    std::unique_ptr<CPersistentObjBase> object = ReadNew();
    if (auto* typed = dynamic_cast<T*>(object.get())) {
        object.release();
        return std::unique_ptr<T>(typed);
    }
    ThrowUnexpected();
}

template <class T> std::shared_ptr<T> DB_Archive::ReadSharedAs() {
    std::shared_ptr<CPersistentObjBase> object = ReadShared();
    if (!object)
        return nullptr;
    if (auto typed = std::dynamic_pointer_cast<T>(object))
        return typed;
    ThrowUnexpected();
}
