#pragma once

#include "core/DB_Archive.h"
#include "core/DB_MemFile.h"

#include <cstdint>
#include <vector>

namespace motiontest {

// The body that an object writes, as bytes.
template <class T> std::vector<uint8_t> BodyOf(T& object, int32_t version = DB_Archive::kCurrentVersion) {
    DB_MemFile file;
    DB_Archive out(&file, true);
    out.SetVersion(version);
    object.Write(out);
    return {file.Data(), file.Data() + file.Size()};
}

inline std::vector<uint8_t> Cat(std::initializer_list<std::vector<uint8_t>> parts) {
    std::vector<uint8_t> all;
    for (const auto& p : parts)
        all.insert(all.end(), p.begin(), p.end());
    return all;
}

} // namespace motiontest
