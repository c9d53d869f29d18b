#pragma once

#include "render/CMultimediaTimer.h"

// The timer of playback: each tick posts the tick command to the interface thread's message
// loop that the client data holds, and does nothing else on its own thread.
class CInteractivePlaybackTimer : public CMultimediaTimer {
public:
    static constexpr uint32_t kTickCommand = 1068;

    explicit CInteractivePlaybackTimer(Clock& clock = Clock::System())
        : CMultimediaTimer(0, kCallbackEvent, clock) {}
    ~CInteractivePlaybackTimer() override { Stop(); }

    void OnTimer() override;
};
