#pragma once

#include "core/DB_MemFile.h"

#include <cstdint>
#include <optional>
#include <vector>

// A memory file as the payload of the clipboard or a drag. Export gives the written
// bytes as a block of their own; import appends a block's bytes.
class DB_SharedFile : public DB_Stream {
public:
    void Read(void* destination, size_t count) override { file_.Read(destination, count); }
    void Write(const void* source, size_t count) override { file_.Write(source, count); }
    UT_WString GetName() const override { return u"SharedStream"; }
    void Rewind() override { file_.Rewind(); }
    uint64_t BytesLeft() const override { return file_.BytesLeft(); }

    // A copy of every byte written, or nothing if the block cannot be allocated.
    std::optional<std::vector<uint8_t>> Export();
    void Import(const std::vector<uint8_t>& block);

    DB_MemFile& MemFile() { return file_; }

private:
    DB_MemFile file_;
};
