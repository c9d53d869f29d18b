#pragma once

#include "animationset/DC_Command.h"

// Shows a hidden scene in the scene list, or hides a shown one. Its own inverse.
class DC_ToggleSceneVisibility : public DC_Command {
public:
    static constexpr const char16_t* kHideName = u"Hide Scene";
    static constexpr const char16_t* kShowName = u"Show Scene";

    DC_ToggleSceneVisibility(CAnimationSetObj& set, uint32_t sceneId);

    // "Hide Scene" for a shown scene, "Show Scene" for a hidden one.
    static UT_WString NameFor(const CAnimationSetObj& set, uint32_t sceneId);

    // Null when the scene is not in the set.
    std::unique_ptr<UT_Command> Execute() override;

    uint32_t SceneId() const { return sceneId_; }

private:
    uint32_t sceneId_;
};
