#pragma once

#include "animationset/DC_Command.h"

#include <cstdint>

// Sets the note of an element; the inverse gives back the old note.
class DC_ModifyElementNoteCommand : public DC_Command {
public:
    static constexpr const char16_t* kName = u"Element Note";

    DC_ModifyElementNoteCommand(CAnimationSetObj& set, uint32_t sceneId, uint32_t elementId, UT_WString note);
    DC_ModifyElementNoteCommand(const DC_Command& origin, uint32_t sceneId, uint32_t elementId,
                                UT_WString note);

    // Null when the scene or the element is not there.
    std::unique_ptr<UT_Command> Execute() override;

private:
    uint32_t sceneId_;
    uint32_t elementId_;
    UT_WString note_;
};
