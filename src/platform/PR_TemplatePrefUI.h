#pragma once

#include "platform/PR_PreferencePage.h"

// Author and copyright of templates, and the folders of the library, exports and projects.
class PR_TemplatePrefUI : public PR_PreferencePage {
public:
    explicit PR_TemplatePrefUI(PR_Preferences& preferences);
};
