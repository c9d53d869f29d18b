#pragma once

#include "platform/PR_PreferencePage.h"

// The "Renderer" section and the texture memory of the software renderer.
class PR_RendererUI : public PR_PreferencePage {
public:
    explicit PR_RendererUI(PR_Preferences& preferences);
};
