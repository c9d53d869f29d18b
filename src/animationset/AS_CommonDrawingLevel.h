#pragma once

#include "animationset/AS_CommonLevel.h"
#include "animationset/AS_DopeSheetDrawingObj.h"
#include "animationset/AS_DrawingObjCreator.h"
#include "core/UT_FilePath.h"

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

class CM_PaletteList;

// The shared half of a drawing or image element: the table of its drawings, which the
// element's files back.
class AS_CommonDrawingLevel : public AS_CommonLevel, public AS_DrawingObjCreator {
public:
    AS_CommonDrawingLevel() = default;
    AS_CommonDrawingLevel(UT_WString name, uint32_t commonId) : AS_CommonLevel(std::move(name), commonId) {}

    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;
    // Loads every drawing while its file still lies under the old name and marks it
    // modified, then takes the new name. Files under the old name are kept.
    void SetName(const UT_WString& name) override;
    void ClearModified() override;
    virtual UT_WString GetFileExtension() const = 0;
    virtual UT_WString GetFolderName() const = 0;

    // The creator's side; the drawings of each sort load and save in the derived classes.
    bool FileExists(const UT_WString& baseName) const override;
    const UT_WString& GetElementName() const override { return name_; }
    void RemoveFile(const UT_WString& baseName) const override;

    AS_DopeSheetDrawingObj* FindDrawing(uint32_t id) const;
    AS_DopeSheetDrawingObj* FindDrawingByName(const UT_WString& name) const;
    // Takes the next drawing id and makes an entry without data.
    uint32_t AddDrawing(const UT_WString& name);
    // Enters a drawing under a known id (reading, undo); the counter moves past it.
    AS_DopeSheetDrawingObj* AddDrawingWithId(uint32_t id, const UT_WString& name);
    void RemoveDrawing(uint32_t id);
    // The folder of the files: the scene folder and the element sort's subfolder; with a
    // base name, the path of that drawing's file.
    UT_FilePath GetDrawingPath() const;
    UT_FilePath GetDrawingPath(const UT_WString& baseName) const;
    std::vector<UT_WString> GetDrawingNames() const;
    std::vector<uint32_t> GetDrawingIds() const;
    // The name of a new drawing: one more than the highest number that starts a drawing's
    // name ("12a" counts as 12, "B" as 0), so the first drawing is "1".
    UT_WString MakeNewDrawingName() const;
    size_t DrawingCount() const { return drawings_.size(); }
    uint32_t NextDrawingId() const { return nextDrawingId_; }
    // Puts the counter back, when the drawings made since are undone.
    void SetNextDrawingId(uint32_t id) { nextDrawingId_ = id; }

    void SetFolder(const UT_FilePath& folder) { folder_ = folder; }
    const UT_FilePath& GetFolder() const { return folder_; }
    void SetPaletteList(CM_PaletteList* palettes) { palettes_ = palettes; }
    CM_PaletteList* GetPaletteList() const { return palettes_; }
    // Drops every loaded drawing; no entry has a file afterwards.
    void ReleaseDrawings();
    // Drops the loaded drawings that have not changed since they were read or written.
    void ReleaseUnmodified();
    void RemoveDrawingFiles();

protected:
    // The temporary file of the current file transaction that will replace the drawing's
    // file, with its folder made; empty when the folder cannot be made.
    UT_FilePath TemporaryFileFor(const UT_WString& baseName) const;

private:
    uint32_t nextDrawingId_ = 1001;
    std::map<uint32_t, std::unique_ptr<AS_DopeSheetDrawingObj>> drawings_;
    UT_FilePath folder_;
    CM_PaletteList* palettes_ = nullptr;
};

// The shared half of a Drawing element: vector drawings in "qmd" files under "Drawing",
// read and written with the element's palettes as context.
class AS_CommonVectorDrawingLevel : public AS_CommonDrawingLevel {
public:
    using AS_CommonDrawingLevel::AS_CommonDrawingLevel;
    UT_WString GetFileExtension() const override { return u"qmd"; }
    UT_WString GetFolderName() const override { return u"Drawing"; }
    std::unique_ptr<GR_DrawingObj> CreateDrawing() const override;
    bool LoadDrawing(GR_DrawingObj& drawing, const UT_WString& baseName) const override;
    bool SaveDrawing(GR_DrawingObj& drawing, const UT_WString& baseName) const override;
};

// The shared half of an Image element: "tga" files under "Bitmap".
class AS_CommonBitmapDrawingLevel : public AS_CommonDrawingLevel {
public:
    using AS_CommonDrawingLevel::AS_CommonDrawingLevel;
    UT_WString GetFileExtension() const override { return u"tga"; }
    UT_WString GetFolderName() const override { return u"Bitmap"; }
    std::unique_ptr<GR_DrawingObj> CreateDrawing() const override;
    bool LoadDrawing(GR_DrawingObj& drawing, const UT_WString& baseName) const override;
    bool SaveDrawing(GR_DrawingObj& drawing, const UT_WString& baseName) const override;
};
