#pragma once

#include "platform/PR_PreferencePage.h"

// The "UIUnits" and "Scene" sections: units of angles and coordinates, and the defaults
// of new path keys.
class PR_SceneUI : public PR_PreferencePage {
public:
    explicit PR_SceneUI(PR_Preferences& preferences);
};
