#pragma once

#include "platform/PR_PreferencePage.h"

// The "OnionSkinColor" section: shades of the onion skin and the light tables.
class PR_OnionSkinPrefUI : public PR_PreferencePage {
public:
    explicit PR_OnionSkinPrefUI(PR_Preferences& preferences);
};
