#pragma once

#include "core/UT_String.h"

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

// One argument of a message: a wide string (%S), a narrow string (%s) or a number (%d, %u, %x).
using UT_FormatArg = std::variant<UT_WString, std::string, int64_t>;

// printf-style formatting with positional arguments: "%1$S", "%2$d", or plain "%S", "%d",
// "%s" taking the argument after the previous one. "%%" is a percent sign. A specifier without an
// argument is left as it stands.
UT_WString UT_Format(std::u16string_view format, const std::vector<UT_FormatArg>& args);

template <class... A> UT_WString UT_Fmt(std::u16string_view format, A&&... args) {
    std::vector<UT_FormatArg> list;
    (list.push_back(UT_FormatArg(std::forward<A>(args))), ...);
    return UT_Format(format, list);
}

// Helpers that pick the alternative without ambiguity.
inline UT_FormatArg UT_Num(int64_t v) {
    return UT_FormatArg(v);
}
