#pragma once

#include "core/UT_String.h"

// Names of sets, scenes, elements and drawings become file and folder names, so they
// share one rule: not empty, at most 260 units, none of \ / : * ? " < > | . and no
// control characters.
enum class UT_NameProblem { kNone, kEmpty, kTooLong, kForbiddenCharacter };

UT_NameProblem UT_CheckName(std::u16string_view name);
inline bool UT_IsValidName(std::u16string_view name) {
    return UT_CheckName(name) == UT_NameProblem::kNone;
}
