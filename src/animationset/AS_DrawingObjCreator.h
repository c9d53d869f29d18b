#pragma once

#include "core/UT_String.h"

#include <cstdint>
#include <memory>
#include <vector>

// The loaded form of one drawing: the bytes of its file, kept as they are until they
// are written again, and whether they changed since they were last written.
struct AS_DrawingData {
    std::vector<uint8_t> bytes;
    bool modified = false;
};

// Between a drawing entry and its files. The base name of a drawing's file is the
// element name, "-" and the drawing name.
class AS_DrawingObjCreator {
public:
    virtual ~AS_DrawingObjCreator() = default;
    virtual std::unique_ptr<AS_DrawingData> CreateDrawing() const = 0;
    virtual bool FileExists(const UT_WString& baseName) const = 0;
    // False when the file cannot be read or is not a file of the element's sort.
    virtual bool LoadDrawing(AS_DrawingData& drawing, const UT_WString& baseName) const = 0;
    // Writes through the current file transaction; false when the file cannot be written.
    virtual bool SaveDrawing(const AS_DrawingData& drawing, const UT_WString& baseName) const = 0;
    virtual const UT_WString& GetElementName() const = 0;
    virtual void RemoveFile(const UT_WString& baseName) const = 0;
};
