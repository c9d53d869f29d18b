#include "core/DB_File.h"

#include "core/DB_Exception.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {
constexpr size_t kReadBufferSize = 64 * 1024;
}

DB_File::~DB_File() {
    if (file_)
        std::fclose(file_);
}

bool DB_File::Open(const UT_FilePath& path, Mode mode) {
    if (file_) {
        std::fclose(file_);
        file_ = nullptr;
    }
    if (mode == Mode::Read && !path.IsFile())
        return false;
    path_ = path;
    mode_ = mode;
    file_ = std::fopen(path.Path().c_str(), mode == Mode::Read ? "rb" : "w+b");
    if (!file_)
        return false;
    position_ = 0;
    size_ = 0;
    bufferPos_ = bufferEnd_ = 0;
    if (mode == Mode::Read) {
        const int64_t size = path.FileSize();
        size_ = size > 0 ? static_cast<uint64_t>(size) : 0;
    }
    return true;
}

void DB_File::Close() {
    if (!file_)
        return;
    std::FILE* f = file_;
    file_ = nullptr;
    const bool flushed = mode_ == Mode::Read || std::fflush(f) == 0;
    const bool closed = std::fclose(f) == 0;
    if (mode_ == Mode::Write && !(flushed && closed))
        throw DB_Exception(u"Unable to write to file");
}

void DB_File::Read(void* destination, size_t count) {
    if (count == 0)
        return;
    if (!file_)
        throw DB_Exception(u"Error reading from file");
    auto* out = static_cast<uint8_t*>(destination);
    while (count > 0) {
        if (bufferPos_ == bufferEnd_ && !Refill()) {
            if (std::feof(file_))
                throw DB_Exception(u"Reading past end of file");
            throw DB_Exception(u"Error reading from file");
        }
        const size_t take = std::min(count, bufferEnd_ - bufferPos_);
        std::memcpy(out, buffer_.data() + bufferPos_, take);
        bufferPos_ += take;
        position_ += take;
        out += take;
        count -= take;
    }
}

bool DB_File::Refill() {
    if (buffer_.empty())
        buffer_.resize(kReadBufferSize);
    bufferPos_ = 0;
    bufferEnd_ = std::fread(buffer_.data(), 1, buffer_.size(), file_);
    return bufferEnd_ > 0;
}

void DB_File::Write(const void* source, size_t count) {
    if (count == 0)
        return;
    if (!file_ || std::fwrite(source, 1, count, file_) != count)
        throw DB_Exception(u"Unable to write to file");
    position_ += count;
    if (position_ > size_)
        size_ = position_;
}

void DB_File::Rewind() {
    if (file_)
        std::rewind(file_);
    position_ = 0;
    bufferPos_ = bufferEnd_ = 0;
}

uint64_t DB_File::BytesLeft() const {
    return size_ > position_ ? size_ - position_ : 0;
}
