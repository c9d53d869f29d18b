#pragma once

#include "animationset/DC_Command.h"

#include <array>
#include <cstdint>

// Gives a scene a name and a background colour; the inverse gives back the old ones. The
// name is checked (CAnimationSetObj::CheckSceneName) before the command is made.
class DC_ChangeSceneProperties : public DC_Command {
public:
    static constexpr const char16_t* kName = u"Change Scene Properties";

    DC_ChangeSceneProperties(CAnimationSetObj& set, uint32_t sceneId, UT_WString name,
                             const std::array<uint8_t, 4>& background);
    DC_ChangeSceneProperties(const DC_Command& origin, uint32_t sceneId, UT_WString name,
                             const std::array<uint8_t, 4>& background);

    // Null when the scene is not in the set.
    std::unique_ptr<UT_Command> Execute() override;

    uint32_t SceneId() const { return sceneId_; }
    const UT_WString& Name() const { return name_; }
    const std::array<uint8_t, 4>& Background() const { return background_; }

private:
    uint32_t sceneId_;
    UT_WString name_;
    std::array<uint8_t, 4> background_;
};
