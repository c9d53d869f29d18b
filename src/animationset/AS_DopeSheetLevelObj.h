#pragma once

#include "core/CPersistentObjBase.h"
#include "core/UT_FilePath.h"
#include "core/UT_String.h"

#include <array>
#include <cstdint>
#include <memory>

class DD_DragDataStore;

// Identifiers of scenes, elements and drawings; this value marks none.
inline constexpr uint32_t AS_kInvalidId = 0xFFFFFFFFu;

// What the exposure sheet and timeline switch on; the class does not matter to them.
enum AS_LevelKind : uint32_t {
    kLevelVectorDrawing = 0,
    kLevelImage = 1,
    kLevelSound = 2,
    kLevelPeg = 3,
    kLevelCamera = 4,
    kLevelMedia = 5,
    kLevelEffect = 7,
    kLevelParamGroup = 8,
};

// A 4 by 4 single-precision matrix, row major. Points are row vectors multiplied from
// the left, so the product a times b applies a first; translation sits in the last row.
using AS_Matrix = std::array<float, 16>;

// What the reader of an element's clipboard form takes first, to decide which level to
// make or reuse.
struct AS_ElementHeader {
    uint32_t id = AS_kInvalidId;
    UT_WString name;
    uint32_t commonId = AS_kInvalidId;
};

AS_Matrix AS_IdentityMatrix();
AS_Matrix AS_MultiplyMatrix(const AS_Matrix& a, const AS_Matrix& b);

// One row of a scene: its identifier, note and folder, and the operations that the
// exposure sheet, the timeline and the renderer ask of every kind of element.
class AS_DopeSheetLevelObj : public CPersistentObjBase {
public:
    explicit AS_DopeSheetLevelObj(uint32_t kind, uint32_t id = AS_kInvalidId) : id_(id), kind_(kind) {}
    AS_DopeSheetLevelObj(const AS_DopeSheetLevelObj&) = delete;
    AS_DopeSheetLevelObj& operator=(const AS_DopeSheetLevelObj&) = delete;

    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;
    ~AS_DopeSheetLevelObj() override = default;

    virtual uint32_t GetCommonId() const = 0;
    virtual const UT_WString& GetName() const = 0;
    virtual UT_WString GetDisplayName() const = 0;
    virtual void SetName(const UT_WString& name) = 0;
    virtual void ClearModified() = 0;
    // Frames from the first to the last exposed one; 0 for an empty exposure.
    virtual uint32_t GetDuration() const = 0;
    virtual bool AcceptsFrames(int32_t first, int32_t last) const;
    virtual bool IsRangeEmpty(int32_t first, int32_t last) const;
    virtual int32_t GetFirstFrame() const = 0;
    virtual int32_t GetLastFrame() const = 0;
    // The last frame that the element needs drawn, or -1 when the element draws nothing.
    virtual int32_t GetEndFrame() const { return -1; }
    virtual void SetFolder(const UT_FilePath& folder) { folder_ = folder; }
    virtual const UT_FilePath& GetFolder() const { return folder_; }
    virtual UT_WString GetFileExtension() const { return {}; }
    virtual UT_WString GetFolderName() const { return {}; }
    virtual void GetMatrix(AS_Matrix& out, int32_t frame) const;
    // The clipboard form, after the id, name and common id that ReadDragHeader takes:
    // the note, then what the kind of element adds.
    virtual void ReadFromDragData(DD_DragDataStore& store);
    // A new store with the element header (id, name, common id, note) and the fields
    // that the kind of element adds.
    virtual std::unique_ptr<DD_DragDataStore> WriteToDragData() = 0;
    // The element leaves its scene for good (the removal was saved): drop loaded data.
    virtual void OnRemovedForGood() {}
    // Deletes the element's files through the current file transaction.
    virtual void RemoveFiles() {}
    // True when no other level shares this level's common half.
    virtual bool IsLastHolder() const = 0;
    // A new level of the same class on the same common half, or nullptr for kinds
    // that cannot be cloned.
    virtual std::unique_ptr<AS_DopeSheetLevelObj> Clone(uint32_t newId, bool copyCells) const;

    // Id, name and common id of a clipboard form. Up to version 40 a name stood in the
    // place of the common id; the id then serves as common id.
    static AS_ElementHeader ReadDragHeader(DB_Archive& archive);

    uint32_t GetId() const { return id_; }
    void SetId(uint32_t id) { id_ = id; }
    uint32_t GetKind() const { return kind_; }
    const UT_WString& GetNote() const { return note_; }
    void SetNote(UT_WString note) { note_ = std::move(note); }
    const AS_Matrix& WorkingMatrix() const { return matrix_; }
    void SetWorkingMatrix(const AS_Matrix& m) { matrix_ = m; }

protected:
    // Note and folder, as every clone takes them over.
    void CopyBaseTo(AS_DopeSheetLevelObj& target) const;

private:
    uint32_t id_;
    uint32_t kind_;
    AS_Matrix matrix_ = AS_IdentityMatrix();
    UT_WString note_;
    UT_FilePath folder_;
};
