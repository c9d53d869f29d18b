#pragma once

#include "animationset/DC_Command.h"

#include <cstdint>

// Gives an element a new name through its common half, so its clones take it too. A
// drawing element first loads its drawings under the old name, so that the next save
// writes them under the new one; the old files stay. The name is checked
// (CDopeSheetObj::CheckElementName) before the command is made. The inverse gives back
// the old name.
class DC_RenameLevelCommand : public DC_Command {
public:
    static constexpr const char16_t* kName = u"Rename Element";

    DC_RenameLevelCommand(CAnimationSetObj& set, uint32_t sceneId, uint32_t elementId, UT_WString name);
    DC_RenameLevelCommand(const DC_Command& origin, uint32_t sceneId, uint32_t elementId, UT_WString name);

    // Null when the scene or the element is not there.
    std::unique_ptr<UT_Command> Execute() override;

private:
    uint32_t sceneId_;
    uint32_t elementId_;
    UT_WString name_;
};
