#pragma once

#include "animationset/DC_Command.h"

#include <cstdint>

// Sets the frame rate and the camera size of the set (every camera of every scene takes
// the size); the inverse sets the old ones.
class DC_ChangeASPropertiesCommand : public DC_Command {
public:
    static constexpr const char16_t* kName = u"Change Animation Properties";

    DC_ChangeASPropertiesCommand(CAnimationSetObj& set, uint32_t frameRate, uint32_t width, uint32_t height);
    DC_ChangeASPropertiesCommand(const DC_Command& origin, uint32_t frameRate, uint32_t width,
                                 uint32_t height);

    std::unique_ptr<UT_Command> Execute() override;

    uint32_t FrameRate() const { return frameRate_; }
    uint32_t Width() const { return width_; }
    uint32_t Height() const { return height_; }

private:
    uint32_t frameRate_;
    uint32_t width_;
    uint32_t height_;
};
