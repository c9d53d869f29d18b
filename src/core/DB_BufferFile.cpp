#include "core/DB_BufferFile.h"

#include "core/DB_Exception.h"

#include <cstring>

DB_BufferFile::DB_BufferFile(const void* data, size_t size, bool ownsBuffer)
    : data_(static_cast<const uint8_t*>(data)), size_(size), owns_(ownsBuffer) {}

DB_BufferFile::~DB_BufferFile() {
    if (owns_)
        delete[] data_;
}

void DB_BufferFile::Read(void* destination, size_t count) {
    if (count > size_ - position_)
        throw DB_Exception(u"Read paste end of file");
    if (count)
        std::memcpy(destination, data_ + position_, count);
    position_ += count;
}
