#include "core/DB_SharedFile.h"

#include <new>

std::optional<std::vector<uint8_t>> DB_SharedFile::Export() {
    std::vector<uint8_t> block;
    try {
        block.resize(file_.Size());
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
    file_.Rewind();
    file_.Read(block.data(), block.size());
    file_.Rewind();
    return block;
}

void DB_SharedFile::Import(const std::vector<uint8_t>& block) {
    file_.Rewind();
    file_.Write(block.data(), block.size());
    file_.Rewind();
}
