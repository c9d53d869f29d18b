#pragma once

#include "core/DB_Stream.h"

#include <cstdint>

// A read-only stream over a caller's buffer. Write does nothing.
class DB_BufferFile : public DB_Stream {
public:
    DB_BufferFile(const void* data, size_t size, bool ownsBuffer = false);
    DB_BufferFile(const DB_BufferFile&) = delete;
    DB_BufferFile& operator=(const DB_BufferFile&) = delete;
    ~DB_BufferFile() override;

    void Read(void* destination, size_t count) override;
    void Write(const void*, size_t) override {}
    UT_WString GetName() const override { return u"<buffer file>"; }
    void Rewind() override { position_ = 0; }
    uint64_t BytesLeft() const override { return size_ - position_; }

private:
    const uint8_t* data_;
    size_t size_;
    size_t position_ = 0;
    bool owns_;
};
