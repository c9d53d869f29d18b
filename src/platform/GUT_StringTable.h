#pragma once

#include "core/UT_String.h"

#include <cstdint>

// Numbers of the program's texts that other code asks for by number.
enum GUT_StringId : uint32_t {
    kStrInvalidName = 4319,
    kStrProgramTitle = 33234,
    // Shown after a change of the "Animation" preferences; the user may silence it.
    kStrAppliesToNewSets = 33520,
};

// The text of a number, or an empty string for a number the program does not know.
UT_WString GUT_LoadString(uint32_t id);
