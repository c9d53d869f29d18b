#include "animationset/SPO_Settings.h"

#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"

void SPO_Settings::OrderRange(int32_t& first, int32_t& last) const {
    first = last = -1;
    if (set_ && set_->CurrentScene())
        set_->CurrentScene()->SceneplanningOrder().GetFrameRange(first, last);
}

int32_t SPO_Settings::GetFirstFrame() const {
    if (custom_)
        return first_;
    int32_t first, last;
    OrderRange(first, last);
    return first;
}

int32_t SPO_Settings::GetLastFrame() const {
    if (custom_)
        return last_;
    int32_t first, last;
    OrderRange(first, last);
    return last;
}

void SPO_Settings::SetCustomRange(bool custom) {
    OrderRange(first_, last_);
    custom_ = custom;
}
