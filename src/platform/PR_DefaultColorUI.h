#pragma once

#include "platform/PR_PreferencePage.h"

// The "UIColors" section: colours of element rows by class and of the backgrounds.
class PR_DefaultColorUI : public PR_PreferencePage {
public:
    explicit PR_DefaultColorUI(PR_Preferences& preferences);
};
