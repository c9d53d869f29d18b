#pragma once

#include "core/UT_String.h"

#include <cstddef>
#include <cstdint>

// A byte stream. Read and Write move exactly the count given or throw DB_Exception:
// there are no short reads and no seeking.
class DB_Stream {
public:
    virtual ~DB_Stream() = default;
    virtual void Read(void* destination, size_t count) = 0;
    virtual void Write(const void* source, size_t count) = 0;
    // Names the stream in messages.
    virtual UT_WString GetName() const = 0;
    // Back to the start for reading.
    virtual void Rewind() = 0;
    // Bytes that a reader can still get, or kUnknownSize. Readers use it to refuse
    // counts that damaged data makes absurdly large.
    virtual uint64_t BytesLeft() const { return kUnknownSize; }

    static constexpr uint64_t kUnknownSize = UINT64_MAX;
};
