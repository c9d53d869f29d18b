#include "platform/GUT_StringTable.h"

#include "animationset/CNewAnimationDlg.h"

UT_WString GUT_LoadString(uint32_t id) {
    switch (id) {
    case kStrInvalidName:
        return CNewAnimationDlg::kInvalidNameMessage;
    case kStrProgramTitle:
        return u"Quilmoor Studio";
    case kStrAppliesToNewSets:
        return u"This change will be applied to all new animation sets.";
    default:
        return {};
    }
}
