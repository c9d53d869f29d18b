#include "core/UT_NameRules.h"

UT_NameProblem UT_CheckName(std::u16string_view name) {
    if (name.empty())
        return UT_NameProblem::kEmpty;
    if (name.size() > 260)
        return UT_NameProblem::kTooLong;
    static constexpr std::u16string_view kForbidden = u"\\/:*?\"<>|.";
    for (char16_t c : name) {
        if (c < 0x20 || c == 0x7F || kForbidden.find(c) != std::u16string_view::npos)
            return UT_NameProblem::kForbiddenCharacter;
    }
    return UT_NameProblem::kNone;
}
