#pragma once

#include "core/UT_String.h"

#include <cstdint>
#include <string>
#include <vector>

// One object of a container file as a reader met it.
struct QmsDumpNode {
    int depth = 0;
    uint32_t offset = 0;
    // Bytes, or -1 when reading stopped inside the object.
    int64_t size = -1;
    // The type id on the stream; 0 for the file's root body and for references.
    uint16_t typeId = 0;
    // The class, "header", or the class that a reference names.
    std::string what;
    // The index under which the object entered the table of shared references, or -1.
    int64_t shared = -1;
    // For a reference to a shared object: the index it names; else -1.
    int64_t reference = -1;
};

struct QmsDumpResult {
    uint32_t fileSize = 0;
    int32_t version = 0;
    int64_t kind = -1;
    std::vector<QmsDumpNode> nodes;
    // Empty when the whole content was read; else why reading stopped, and where.
    std::string error;
    uint32_t errorOffset = 0;
    // Bytes after the content.
    uint32_t trailing = 0;
};

// Reads a container file's bytes as the program does and records every object in the
// order the reader meets it. Damage stops the reading; what was read stays.
QmsDumpResult QmsDumpObjects(const std::vector<uint8_t>& bytes, const UT_WString& name);
