#pragma once

#include "animationset/SPO_Settings.h"
#include "core/OB_Observable.h"

#include <array>
#include <cstdint>

// What changed in the scene-planning settings.
struct SPO_SettingsUpdateData {
    enum What : uint32_t {
        kFlag = 0,
        // The frame range: set by hand, switched to or from custom, or moved with the
        // current scene.
        kFrameRange = 1,
    };
    What what = kFrameRange;
    // The flag that changed, with kFlag.
    int flag = -1;
};

class SPO_SettingsObserverInterface {
public:
    virtual ~SPO_SettingsObserverInterface() = default;
    virtual void SettingsChanged(const void* sender, const SPO_SettingsUpdateData& data) = 0;
};

// The transient state of scene planning while a set is open: options of the views, the
// tool in use and the frame range of the timeline. One per set, owned by its document;
// nothing of it is saved.
class SPO_SettingsMgr : public OB_Observable<SPO_SettingsObserverInterface, SPO_SettingsUpdateData,
                                             &SPO_SettingsObserverInterface::SettingsChanged> {
public:
    enum Flag : int {
        // Paths of every peg in the views, not only of the selected one.
        kShowAllPaths = 0,
        // Pegs drawn in the camera view.
        kShowPegs = 1,
        // The frame of the camera drawn in the views; the only flag on at the start.
        kShowCameraFrame = 2,
        kShowGrid = 3,
        // The control-point tool is in use rather than the selection tool.
        kControlPointTool = 4,
        kFlagCount
    };

    explicit SPO_SettingsMgr(CAnimationSetObj* set) : settings_(set) {}
    SPO_SettingsMgr(const SPO_SettingsMgr&) = delete;
    SPO_SettingsMgr& operator=(const SPO_SettingsMgr&) = delete;

    bool GetFlag(Flag flag) const { return flags_[flag]; }
    // Tells the observers when the value changes.
    void SetFlag(Flag flag, bool value);

    int32_t GetFirstFrame() const { return settings_.GetFirstFrame(); }
    int32_t GetLastFrame() const { return settings_.GetLastFrame(); }
    void SetFirstFrame(int32_t frame);
    void SetLastFrame(int32_t frame);
    bool IsCustomRange() const { return settings_.IsCustomRange(); }
    void SetCustomRange(bool custom);
    // The set made another scene current: a range that follows the order moves with it.
    void CurrentSceneChanged();

    const SPO_Settings& Settings() const { return settings_; }

private:
    void NotifyRange();

    std::array<bool, kFlagCount> flags_{false, false, true, false, false};
    SPO_Settings settings_;
};
