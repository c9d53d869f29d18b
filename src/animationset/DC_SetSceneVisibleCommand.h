#pragma once

#include "animationset/DC_Command.h"

// Shows or hides the row of one element in one composition order of a scene (index 0
// the Drawing order, 1 the Sceneplanning order); the rows under it keep their flags. Its
// inverse is the same command with the old flag.
class DC_SetSceneVisibleCommand : public DC_Command {
public:
    DC_SetSceneVisibleCommand(CAnimationSetObj& set, uint32_t sceneId, uint32_t elementId, int order,
                              bool shown);

    // Null when the scene, the order or the element's row cannot be found.
    std::unique_ptr<UT_Command> Execute() override;

    uint32_t SceneId() const { return sceneId_; }
    uint32_t ElementId() const { return elementId_; }
    int Order() const { return order_; }
    bool Shown() const { return shown_; }

private:
    uint32_t sceneId_;
    uint32_t elementId_;
    int order_;
    bool shown_;
};
