#pragma once

#include "core/CPersistentObjBase.h"
#include "core/DB_Stream.h"
#include "core/UT_ShareBase.h"

#include <cstdint>
#include <memory>

// A growable stream in memory. Persistent itself (type 600): its body is a u32 byte
// count and the bytes, which is how a nested archive travels inside another stream.
class DB_MemFile : public DB_Stream, public CPersistentObjBase, public UT_ShareBase {
public:
    DB_MemFile() = default;
    DB_MemFile(const DB_MemFile& other);
    DB_MemFile& operator=(const DB_MemFile& other);
    ~DB_MemFile() override = default;

    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;

    void Read(void* destination, size_t count) override;
    void Write(const void* source, size_t count) override;
    UT_WString GetName() const override { return u"<memory file>"; }
    void Rewind() override { position_ = 0; }
    uint64_t BytesLeft() const override { return size_ - position_; }

    const uint8_t* Data() const { return buffer_.get(); }
    uint32_t Size() const { return size_; }
    uint32_t Capacity() const { return capacity_; }
    uint32_t Position() const { return position_; }
    void Clear();

private:
    std::unique_ptr<uint8_t[]> buffer_;
    uint32_t size_ = 0;
    uint32_t capacity_ = 0;
    uint32_t position_ = 0;
};
