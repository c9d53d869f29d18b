#pragma once

#include "core/UT_String.h"
#include "vector/GR_DrawingObj.h"

#include <memory>

// Between a drawing entry and its files. The base name of a drawing's file is the
// element name, "-" and the drawing name.
class AS_DrawingObjCreator {
public:
    virtual ~AS_DrawingObjCreator() = default;
    // An empty drawing of the element's sort.
    virtual std::unique_ptr<GR_DrawingObj> CreateDrawing() const = 0;
    virtual bool FileExists(const UT_WString& baseName) const = 0;
    // False when the file cannot be read or is not a file of the element's sort.
    virtual bool LoadDrawing(GR_DrawingObj& drawing, const UT_WString& baseName) const = 0;
    // Writes through the current file transaction; false when the file cannot be written.
    virtual bool SaveDrawing(GR_DrawingObj& drawing, const UT_WString& baseName) const = 0;
    virtual const UT_WString& GetElementName() const = 0;
    virtual void RemoveFile(const UT_WString& baseName) const = 0;
};
