#include "platform/GUT_StringTable.h"

#include "animationset/CNewAnimationDlg.h"
#include "core/PR_Preferences.h"

UT_WString GUT_LoadString(uint32_t id) {
    switch (id) {
    case kStrInvalidName:
        return CNewAnimationDlg::kInvalidNameMessage;
    case kStrProgramTitle:
        return u"Quilmoor Studio";
    case kStrAppliesToNewSets:
        return PR_Preferences::ChangeNotice(PR_Preferences::Page::kAnimation);
    default:
        return {};
    }
}
