#include "animationset/DC_Command.h"

#include "animationset/AS_DopeSheetNotifProxy.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"
#include "core/UT_CommandHistory.h"

namespace {
DC_ModeCommandTarget* g_modeTarget = nullptr;
}

DC_CommandContext DC_CommandContext::Of(const CAnimationSetObj& set) {
    DC_CommandContext context;
    context.sceneplanning = set.IsSceneplanningMode();
    if (const CDopeSheetObj* scene = set.CurrentScene())
        context.sceneId = scene->SceneId();
    return context;
}

DC_Command::DC_Command(CAnimationSetObj& set, bool notify)
    : set_(&set), notify_(notify ? 1 : 0), context_(DC_CommandContext::Of(set)) {}

DC_ModeCommandTarget* DC_Command::SetModeCommandTarget(DC_ModeCommandTarget* target) {
    DC_ModeCommandTarget* previous = g_modeTarget;
    g_modeTarget = target;
    return previous;
}

DC_ModeCommandTarget* DC_Command::ModeCommandTarget() {
    return g_modeTarget;
}

void DC_Command::Prepare() {
    CAnimationSetObj& set = *set_;
    if (set.IsSceneplanningMode() != context_.sceneplanning) {
        if (g_modeTarget)
            g_modeTarget->OnModeCommand(set, context_.sceneplanning ? kSceneplanningModeCommand
                                                                    : kDrawingModeCommand);
        else
            set.SetSceneplanningMode(context_.sceneplanning);
    }
    const CDopeSheetObj* current = set.CurrentScene();
    if (context_.sceneId == AS_kInvalidId || (current && current->SceneId() == context_.sceneId))
        return;
    // A scene that is gone (deleted since) leaves the current one as it is.
    if (CDopeSheetObj* scene = set.FindScene(context_.sceneId)) {
        set.SetCurrentScene(scene, true);
        set.NotifProxy().NotifyScene(nullptr, kSceneActivated, scene);
    }
}

bool DC_Command::Run(const UT_WString& name) {
    return set_->History().Execute(*this, name);
}

void DC_Command::Send(const AS_DopeSheetUpdateData& data) const {
    if (Notifies())
        set_->NotifProxy().Notify(nullptr, data);
}

void DC_Command::SendSceneChange(uint32_t code, CDopeSheetObj* scene) const {
    Send(AS_DopeSheetUpdateData(AS_DopeSheetCategory::kScene, code, scene));
}
