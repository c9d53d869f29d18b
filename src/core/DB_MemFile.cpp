#include "core/DB_MemFile.h"

#include "core/DB_Archive.h"
#include "core/DB_Exception.h"

#include <cstring>
#include <new>

DB_MemFile::DB_MemFile(const DB_MemFile& other)
    : DB_Stream(), CPersistentObjBase(), UT_ShareBase(), size_(other.size_), capacity_(other.size_),
      position_(0) {
    if (size_) {
        buffer_.reset(new uint8_t[size_]);
        std::memcpy(buffer_.get(), other.buffer_.get(), size_);
    }
}

DB_MemFile& DB_MemFile::operator=(const DB_MemFile& other) {
    if (this != &other) {
        DB_MemFile copy(other);
        buffer_ = std::move(copy.buffer_);
        size_ = copy.size_;
        capacity_ = copy.capacity_;
        position_ = 0;
    }
    return *this;
}

void DB_MemFile::Clear() {
    buffer_.reset();
    size_ = capacity_ = position_ = 0;
}

void DB_MemFile::Read(void* destination, size_t count) {
    if (count > size_ - position_)
        throw DB_Exception(u"End of file on mem file");
    if (count)
        std::memcpy(destination, buffer_.get() + position_, count);
    position_ += static_cast<uint32_t>(count);
}

void DB_MemFile::Write(const void* source, size_t count) {
    if (count == 0)
        return;
    const uint64_t needed = uint64_t(size_) + count;
    if (needed > capacity_) {
        uint64_t increment = capacity_ ? capacity_ : 4096;
        const uint64_t missing = needed - capacity_;
        if (missing > increment)
            increment = missing;
        const uint64_t capacity = uint64_t(capacity_) + increment;
        if (capacity > UINT32_MAX)
            throw DB_Exception(u"Unable to write to mem file");
        uint8_t* grown = new (std::nothrow) uint8_t[capacity];
        if (!grown)
            throw DB_Exception(u"Unable to write to mem file");
        if (size_)
            std::memcpy(grown, buffer_.get(), size_);
        buffer_.reset(grown);
        capacity_ = static_cast<uint32_t>(capacity);
    }
    std::memcpy(buffer_.get() + size_, source, count);
    size_ += static_cast<uint32_t>(count);
}

void DB_MemFile::Read(DB_Archive& archive) {
    const uint32_t count = archive.ReadCount(1);
    std::unique_ptr<uint8_t[]> fresh;
    if (count) {
        fresh.reset(new (std::nothrow) uint8_t[count]);
        if (!fresh)
            throw DB_OutOfMemory();
        archive.ReadRaw(fresh.get(), count);
    }
    buffer_ = std::move(fresh);
    size_ = capacity_ = count;
    position_ = 0;
}

void DB_MemFile::Write(DB_Archive& archive) {
    archive.WriteU32(size_);
    archive.WriteRaw(buffer_.get(), size_);
}
