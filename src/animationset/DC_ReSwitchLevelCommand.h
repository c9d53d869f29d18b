#pragma once

#include "animationset/AS_CompositionOrder.h"
#include "animationset/DC_Command.h"

#include <cstdint>
#include <vector>

// Puts back the rows of one composition order of a scene that a move or a reparenting
// kept; its inverse puts back the rows it replaced.
class DC_ReSwitchLevelCommand : public DC_Command {
public:
    DC_ReSwitchLevelCommand(const DC_Command& origin, uint32_t sceneId, int order,
                            std::vector<AS_CompositionRow> rows);

    uint32_t Size() const override {
        return static_cast<uint32_t>(rows_.size() * sizeof(AS_CompositionRow)) + 16;
    }
    // Null when the scene or the order is not there, or when the order does not hold the
    // same elements as the kept rows.
    std::unique_ptr<UT_Command> Execute() override;

private:
    uint32_t sceneId_;
    int order_;
    std::vector<AS_CompositionRow> rows_;
};
