#pragma once

#include "platform/PR_PreferencePage.h"

// The "Animation" section: frame rate and camera size of new sets. A change ends
// with a message that it applies to new sets only.
class PR_AnimationSettingsUI : public PR_PreferencePage {
public:
    explicit PR_AnimationSettingsUI(PR_Preferences& preferences);
};
