#pragma once

#include "platform/PR_PreferencePage.h"

// The "Renderer" section: the 3D canvas, smoothing and the texture and polygon caches.
class PR_RendererUI : public PR_PreferencePage {
public:
    explicit PR_RendererUI(PR_Preferences& preferences);
};
