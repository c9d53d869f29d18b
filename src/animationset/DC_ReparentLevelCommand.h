#pragma once

#include "animationset/DC_Command.h"

#include <cstdint>

// Hangs the row of an element, with its subtree, under another element's row in the
// Sceneplanning order, as the last of its children, or makes it a top row at the end of
// the list (parent AS_kInvalidId). The inverse is a DC_ReSwitchLevelCommand with the rows
// as they stood.
class DC_ReparentLevelCommand : public DC_Command {
public:
    static constexpr const char16_t* kName = u"Change Parent";

    DC_ReparentLevelCommand(CAnimationSetObj& set, uint32_t sceneId, uint32_t elementId, uint32_t parentId);

    // Null when the scene or a row cannot be found, or when the parent lies in the
    // element's own subtree.
    std::unique_ptr<UT_Command> Execute() override;

private:
    uint32_t sceneId_;
    uint32_t elementId_;
    uint32_t parentId_;
};
