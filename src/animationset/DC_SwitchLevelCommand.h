#pragma once

#include "animationset/DC_Command.h"

#include <cstdint>
#include <vector>

// Moves rows of one composition order of a scene (index 0 the Drawing order, 1 the
// Sceneplanning order), each with its subtree, one after the other. The inverse is a
// DC_ReSwitchLevelCommand with the rows as they stood.
class DC_SwitchLevelCommand : public DC_Command {
public:
    static constexpr const char16_t* kName = u"Move Element";

    // The row of `element` goes in front of the row of `target` or, with `before` false,
    // behind the whole subtree of `target`. A target of AS_kInvalidId is the first row.
    struct Move {
        uint32_t element = AS_kInvalidId;
        uint32_t target = AS_kInvalidId;
        bool before = true;
    };

    DC_SwitchLevelCommand(CAnimationSetObj& set, uint32_t sceneId, int order, std::vector<Move> moves);

    // Null when the scene, the order or a row of the moves cannot be found.
    std::unique_ptr<UT_Command> Execute() override;

private:
    uint32_t sceneId_;
    int order_;
    std::vector<Move> moves_;
};
