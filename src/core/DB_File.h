#pragma once

#include "core/DB_Stream.h"
#include "core/UT_FilePath.h"

#include <cstdio>
#include <vector>

// A buffered file on disk. Open for reading ("rb") or writing ("w+b"). Close checks
// that every buffered byte reached the disk: a full disk surfaces here as DB_Exception.
class DB_File : public DB_Stream {
public:
    enum class Mode { Read, Write };

    DB_File() = default;
    DB_File(const DB_File&) = delete;
    DB_File& operator=(const DB_File&) = delete;
    ~DB_File() override;

    // Returns false when the file cannot be opened.
    bool Open(const UT_FilePath& path, Mode mode);
    // Flushes and closes; throws "Unable to write to file" if the data did not all land.
    void Close();
    bool IsOpen() const { return file_ != nullptr; }

    void Read(void* destination, size_t count) override;
    void Write(const void* source, size_t count) override;
    UT_WString GetName() const override { return path_.Wide(); }
    void Rewind() override;
    uint64_t BytesLeft() const override;

private:
    // Refills the read buffer; false at the end of the file.
    bool Refill();

    std::FILE* file_ = nullptr;
    // Reading goes through a buffer of our own: a project is read one small value at a
    // time, and a call into the C library for each would dominate the load.
    std::vector<uint8_t> buffer_;
    size_t bufferPos_ = 0;
    size_t bufferEnd_ = 0;
    UT_FilePath path_;
    Mode mode_ = Mode::Read;
    uint64_t size_ = 0;
    uint64_t position_ = 0;
};
