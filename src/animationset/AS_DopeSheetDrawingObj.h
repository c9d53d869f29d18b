#pragma once

#include "animationset/AS_DopeSheetLevelObj.h"
#include "animationset/AS_DrawingObjCreator.h"

#include <cstdint>
#include <memory>

class DB_Archive;

// One drawing of a drawing element: its name (what the cell shows), its id, its lock,
// and its data, which is read from its file on first use.
class AS_DopeSheetDrawingObj {
public:
    AS_DopeSheetDrawingObj() = default;
    AS_DopeSheetDrawingObj(UT_WString name, uint32_t id) : name_(std::move(name)), id_(id) {}

    // The file form (a project file), which saves a loaded and modified drawing to its file
    // on the way, or, for an embedded archive, the form that carries the drawing itself
    // (undo snapshots, clipboard, templates).
    void Read(DB_Archive& archive);
    void Write(DB_Archive& archive);

    const UT_WString& GetName() const { return name_; }
    uint32_t GetId() const { return id_; }
    // The drawing, loaded from its file when needed; nullptr when there is none.
    GR_DrawingObj* GetDrawing();
    bool HasDrawing() const { return drawing_ != nullptr; }
    bool HasFile() const { return hasFile_; }
    // Gives the entry new data, which the next save writes.
    void SetDrawing(std::unique_ptr<GR_DrawingObj> drawing);
    // Loads the drawing under the old name and marks it modified before the name changes,
    // so that the next save writes it under the new name. The old file stays.
    void Rename(const UT_WString& newName);
    // The element's name changes: the same as Rename, keeping the drawing's name.
    void PrepareElementRename();
    void SetLocked(bool locked) { locked_ = locked; }
    bool IsLocked() const { return locked_; }
    void SetCreator(AS_DrawingObjCreator* creator) { creator_ = creator; }
    void ClearModified();
    // Drops the loaded drawing; the entry no longer has a file.
    void Release();
    // Drops the loaded drawing when its file holds the same; it is loaded again on use.
    void DropIfUnmodified();
    // Removes the file through the creator when it exists.
    void RemoveFile();
    UT_WString BaseName() const;

private:
    void LoadForEdit();

    UT_WString name_;
    uint32_t id_ = AS_kInvalidId;
    bool hasFile_ = false;
    bool locked_ = false;
    std::unique_ptr<GR_DrawingObj> drawing_;
    AS_DrawingObjCreator* creator_ = nullptr;
};
