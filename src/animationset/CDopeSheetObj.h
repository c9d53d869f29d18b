#pragma once

#include "animationset/AS_CompositionOrder.h"
#include "animationset/AS_DopeSheetLevelObj.h"
#include "core/CPersistentObjBase.h"
#include "core/UT_FilePath.h"
#include "core/UT_String.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

class AS_CameraLevelObj;
class AS_MediaManager;
class CM_PaletteList;

// One scene: its elements in insertion order, its Drawing and Sceneplanning orders, its
// cameras and its folder.
class CDopeSheetObj : public CPersistentObjBase {
public:
    struct LevelEntry {
        std::unique_ptr<AS_DopeSheetLevelObj> level;
        bool removed = false;
        bool eraseFiles = false;
    };

    CDopeSheetObj();
    ~CDopeSheetObj() override;
    CDopeSheetObj(const CDopeSheetObj&) = delete;
    CDopeSheetObj& operator=(const CDopeSheetObj&) = delete;

    void Read(DB_Archive& archive) override;
    // Outside an embedded archive, first drops removed elements for good, erasing the
    // files of those marked for it. An embedded archive (a snapshot) leaves removed
    // elements out.
    void Write(DB_Archive& archive) override;

    // Sets the identity and makes both composition orders afresh.
    void Initialise(uint32_t sceneId, const UT_WString& name, CM_PaletteList* palettes);
    // The default camera, a camera "Camera", a peg "Peg" and, without any drawing
    // element, a drawing element "Drawing".
    void InitialiseDefaultElements(uint32_t cameraWidth, uint32_t cameraHeight);
    void SetCameraSize(uint32_t width, uint32_t height);
    // Makes the camera "<Default>" when the scene has none, with a new element id, or with
    // `id` when a scene comes back from a snapshot; it is current while no camera element is.
    void EnsureDefaultCamera(uint32_t width, uint32_t height, uint32_t id = AS_kInvalidId);

    void SetPaletteList(CM_PaletteList* palettes);
    CM_PaletteList* PaletteList() const { return palettes_; }
    // The set's media manager, which media elements share their templates through.
    void SetMediaManager(AS_MediaManager* media);
    AS_MediaManager* MediaManager() const { return media_; }
    // The project folder; each element gets the scene folder.
    void SetFolder(const UT_FilePath& projectFolder);
    const UT_FilePath& Folder() const { return folder_; }
    // The project folder and "Scene-" with the id in at least three digits.
    UT_FilePath SceneFolder() const;
    static UT_WString SceneFolderName(uint32_t sceneId);
    // The scene folder with "Bitmap" and "Drawing" in it; false if any cannot be made.
    bool MakeFolders();
    // Each element erases its files through the current file transaction.
    void EraseFiles();
    // The scene is removed (undoably): elements drop what they can load again.
    void ReleaseData();
    void MarkSaved();

    uint32_t SceneId() const { return sceneId_; }
    const UT_WString& Name() const { return name_; }
    void SetName(UT_WString name) { name_ = std::move(name); }
    bool IsVisible() const { return visible_; }
    void SetVisible(bool visible) { visible_ = visible; }
    // Red, green, blue, alpha.
    const std::array<uint8_t, 4>& BackgroundColour() const { return background_; }
    void SetBackgroundColour(const std::array<uint8_t, 4>& colour) { background_ = colour; }

    // Elements.
    const std::vector<LevelEntry>& Levels() const { return levels_; }
    // Through the map; removed elements are found too.
    AS_DopeSheetLevelObj* FindElement(uint32_t id) const;
    // Among the elements that are not removed.
    AS_DopeSheetLevelObj* FindElementByName(const UT_WString& name) const;
    bool IsRemoved(uint32_t id) const;
    // The name, or the name's stem with a blank and the first free number.
    UT_WString UniqueName(const UT_WString& base) const;
    uint32_t NewElementId() { return ++nextElementId_; }
    uint32_t NextElementId() const { return nextElementId_; }
    // A known id takes the element back in its entry (undo of a removal). A new id goes
    // in front of the element that stands at `livePosition` among those not removed, or
    // at the end. Both orders learn of it.
    AS_DopeSheetLevelObj* AddElement(std::unique_ptr<AS_DopeSheetLevelObj> element,
                                     size_t livePosition = SIZE_MAX);
    // The element of a removed entry that no save purged yet comes back as it is; null
    // when there is no such entry.
    AS_DopeSheetLevelObj* RestoreRemovedElement(uint32_t id);
    void RemoveElement(uint32_t id, bool eraseFiles);
    // Position among the elements that are not removed, or -1.
    int LivePosition(uint32_t id) const;
    // Drops removed elements for good, erasing the files of those marked for it through
    // the current file transaction. A save does it.
    void PurgeRemoved();
    // Empty when the name is acceptable for the element `self` (or a new element);
    // else the message to show.
    UT_WString CheckElementName(const UT_WString& name, uint32_t self = AS_kInvalidId) const;

    AS_DSCompositionOrder& DrawingOrder() const { return *drawingOrder_; }
    AS_SPCompositionOrder& SceneplanningOrder() const { return *sceneplanningOrder_; }
    void MarkDirty();
    int32_t LastFrame() const { return drawingOrder_->GetLastFrame(); }

    AS_CameraLevelObj* CurrentCamera() const { return currentCamera_; }
    void SetCurrentCamera(AS_CameraLevelObj* camera) { currentCamera_ = camera; }
    AS_CameraLevelObj* DefaultCamera() const { return defaultCamera_.get(); }

private:
    void MakeOrders();
    // Rows for a new or returning element in the orders that take it.
    void EnterInOrders(const AS_DopeSheetLevelObj& element);
    void GiveElementContext(AS_DopeSheetLevelObj& element);

    std::vector<LevelEntry> levels_;
    std::map<uint32_t, AS_DopeSheetLevelObj*> levelMap_;
    uint32_t nextElementId_ = 2000;
    uint32_t sceneId_ = AS_kInvalidId;
    UT_WString name_;
    bool visible_ = true;
    std::vector<std::unique_ptr<AS_CompositionOrder>> orders_;
    AS_DSCompositionOrder* drawingOrder_ = nullptr;
    AS_SPCompositionOrder* sceneplanningOrder_ = nullptr;
    UT_FilePath folder_;
    AS_CameraLevelObj* currentCamera_ = nullptr;
    std::unique_ptr<AS_CameraLevelObj> defaultCamera_;
    CM_PaletteList* palettes_ = nullptr;
    AS_MediaManager* media_ = nullptr;
    std::array<uint8_t, 4> background_{0xFF, 0xFF, 0xFF, 0xFF};
};
