#pragma once

#include "core/CPersistentObjBase.h"
#include "core/PR_UserColorSettings.h"
#include "core/UT_FilePath.h"
#include "core/UT_String.h"

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

class AS_DopeSheetNotifProxy;
class AS_MediaManager;
class CDopeSheetObj;
class CM_PaletteList;
class CPenStyleList;
class SPO_SettingsMgr;
class UT_CommandHistory;

// The root of the document model: the scenes of one project with their palettes,
// pens, user colours, command history and project-wide properties.
class CAnimationSetObj : public CPersistentObjBase {
public:
    static constexpr int32_t kCurrentVersion = 51;

    CAnimationSetObj();
    ~CAnimationSetObj() override;
    CAnimationSetObj(const CAnimationSetObj&) = delete;
    CAnimationSetObj& operator=(const CAnimationSetObj&) = delete;

    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;

    // A new set: one scene "Scene-1" with its default elements and the name "Untitled".
    // The document passes the frame rate and camera size of the preferences.
    void InitialiseNew(uint32_t frameRate, uint32_t cameraWidth, uint32_t cameraHeight);

    // The set the application works on, or nullptr. The application's current cell
    // follows the current scene and mode of this set.
    static CAnimationSetObj* Current();
    static void SetCurrent(CAnimationSetObj* set);

    const UT_WString& Name() const { return name_; }
    void SetName(UT_WString name) { name_ = std::move(name); }
    const UT_FilePath& ProjectFolder() const { return projectFolder_; }
    void SetProjectFolder(const UT_FilePath& folder);
    int32_t Version() const { return version_; }

    // Modified since the last save: the history moved away from a saved position, the
    // set was forced dirty, or the user colours changed.
    bool IsDirty() const;
    bool IsForcedDirty() const { return forcedDirty_; }
    void SetForcedDirty(bool dirty) { forcedDirty_ = dirty; }
    void MarkSaved();
    void MarkLibrarySaved();

    // Scenes.
    uint32_t TakeNextSceneId() { return nextSceneId_++; }
    uint32_t NextSceneId() const { return nextSceneId_; }
    // A scene of the map that is not removed, or nullptr.
    CDopeSheetObj* FindScene(uint32_t id) const;
    // Enters the scene in the map (replacing the object of an existing entry, which
    // clears its removed flag) and inserts it in the sequence at `index` (at the end
    // when the index lies beyond).
    void AddScene(std::unique_ptr<CDopeSheetObj> scene, size_t index);
    // Marks the scene removed; it stays in the map until the next save.
    void RemoveScene(uint32_t id, bool eraseFiles);
    // Moves within the sequence; `to` is the insertion point before the move.
    void MoveScene(size_t from, size_t to);
    bool IsSceneNameFree(const UT_WString& name) const;
    // Empty when `name` may name the scene `self` (or a new scene); else the message to
    // show: the name rule, then no other scene of the sequence with the same name.
    UT_WString CheckSceneName(const UT_WString& name, uint32_t self = 0xFFFFFFFFu) const;
    // The name of a scene added from the interface: "Scene-2", "Scene-3" and so on, the
    // first that is free.
    UT_WString NewSceneName() const;
    const std::vector<CDopeSheetObj*>& Sequence() const { return sequence_; }
    // Position in the sequence, or -1.
    int SequenceIndex(uint32_t sceneId) const;
    // Takes a removed scene out of the map for good, handing it to the caller.
    std::unique_ptr<CDopeSheetObj> TakeRemovedScene(uint32_t id);

    CDopeSheetObj* CurrentScene() const { return currentScene_; }
    bool IsCurrentSceneReal() const { return currentSceneReal_; }
    // Also tells the scene-planning settings, whose frame range follows the scene.
    void SetCurrentScene(CDopeSheetObj* scene, bool real);
    void SetCurrentSceneById(uint32_t id);

    uint32_t FrameRate() const { return frameRate_; }
    uint32_t CameraWidth() const { return cameraWidth_; }
    uint32_t CameraHeight() const { return cameraHeight_; }
    void SetProperties(uint32_t frameRate, uint32_t width, uint32_t height);

    bool IsSceneplanningMode() const { return sceneplanningMode_; }
    void SetSceneplanningMode(bool on);

    CM_PaletteList& PaletteList() { return *paletteList_; }
    CPenStyleList& PenList() { return *penList_; }
    PR_UserColorSettings& UserColors() { return *userColors_; }
    UT_CommandHistory& History() { return *history_; }
    // The templates that the media elements use.
    AS_MediaManager& MediaManager() { return *media_; }
    // Every change of the set goes out through it.
    AS_DopeSheetNotifProxy& NotifProxy() { return *proxy_; }
    // The scene-planning settings of the document that holds the set; not owned.
    SPO_SettingsMgr* SettingsManager() const { return settings_; }
    void SetSettingsManager(SPO_SettingsMgr* settings) { settings_ = settings; }

private:
    // Tells the user colours which elements still exist, for their pruning on save.
    class ColourOwner : public PR_UserColorSettings::Owner {
    public:
        explicit ColourOwner(const CAnimationSetObj& set) : set_(set) {}
        bool ElementExists(const PR_ElementRef& element) const override;

    private:
        const CAnimationSetObj& set_;
    };

    struct SceneEntry {
        std::unique_ptr<CDopeSheetObj> scene;
        bool removed = false;
        bool eraseFiles = false;
    };

    void Purge();
    void ApplyCameraSize();
    // Points the application's current cell at the current scene and the order of the
    // mode, when this is the current set.
    void PointCurrentCell() const;

    uint32_t nextSceneId_ = 1;
    std::map<uint32_t, SceneEntry> scenes_;
    std::vector<CDopeSheetObj*> sequence_;
    CDopeSheetObj* currentScene_ = nullptr;
    bool currentSceneReal_ = true;
    UT_WString name_ = u"Untitled";
    UT_FilePath projectFolder_;
    std::unique_ptr<CM_PaletteList> paletteList_;
    std::unique_ptr<CPenStyleList> penList_;
    std::unique_ptr<PR_UserColorSettings> userColors_;
    std::unique_ptr<UT_CommandHistory> history_;
    std::unique_ptr<AS_MediaManager> media_;
    std::unique_ptr<AS_DopeSheetNotifProxy> proxy_;
    ColourOwner colourOwner_{*this};
    SPO_SettingsMgr* settings_ = nullptr;
    bool sceneplanningMode_ = false;
    bool forcedDirty_ = false;
    uint32_t frameRate_ = 12;
    uint32_t cameraHeight_ = 375;
    uint32_t cameraWidth_ = 500;
    int32_t version_ = kCurrentVersion;
};
