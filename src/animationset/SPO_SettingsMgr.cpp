#include "animationset/SPO_SettingsMgr.h"

void SPO_SettingsMgr::SetFlag(Flag flag, bool value) {
    if (flags_[flag] == value)
        return;
    flags_[flag] = value;
    SPO_SettingsUpdateData data;
    data.what = SPO_SettingsUpdateData::kFlag;
    data.flag = flag;
    Notify(nullptr, data);
}

void SPO_SettingsMgr::SetFirstFrame(int32_t frame) {
    settings_.SetFirstFrame(frame);
    NotifyRange();
}

void SPO_SettingsMgr::SetLastFrame(int32_t frame) {
    settings_.SetLastFrame(frame);
    NotifyRange();
}

void SPO_SettingsMgr::SetCustomRange(bool custom) {
    settings_.SetCustomRange(custom);
    NotifyRange();
}

void SPO_SettingsMgr::CurrentSceneChanged() {
    if (!settings_.IsCustomRange())
        NotifyRange();
}

void SPO_SettingsMgr::NotifyRange() {
    Notify(nullptr, SPO_SettingsUpdateData{});
}
