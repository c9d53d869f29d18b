#include "render/CInteractivePlaybackTimer.h"

#include "render/UI_MessageLoop.h"

void CInteractivePlaybackTimer::OnTimer() {
    if (auto* loop = reinterpret_cast<UI_MessageLoop*>(ClientData()))
        loop->PostCommand(kTickCommand);
}
