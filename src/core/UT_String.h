#pragma once

#include <string>
#include <string_view>

// Wide strings of the model are UTF-16 (16-bit units), as they are on disk.
using UT_WString = std::u16string;

// UTF-8 to UTF-16. Invalid sequences become U+FFFD.
UT_WString UT_FromUtf8(std::string_view utf8);
// UTF-16 to UTF-8. Unpaired surrogates become U+FFFD.
std::string UT_ToUtf8(std::u16string_view wide);
// Each byte becomes one 16-bit unit (Latin-1 widening).
UT_WString UT_FromLatin1(std::string_view bytes);
// Trims blanks, tabs and line ends at both ends.
UT_WString UT_Trim(std::u16string_view text);
