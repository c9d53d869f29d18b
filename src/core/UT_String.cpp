#include "core/UT_String.h"

namespace {

void AppendUtf16(UT_WString& out, char32_t cp) {
    if (cp >= 0x110000 || (cp >= 0xD800 && cp < 0xE000))
        cp = 0xFFFD;
    if (cp >= 0x10000) {
        cp -= 0x10000;
        out.push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
        out.push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
    } else {
        out.push_back(static_cast<char16_t>(cp));
    }
}

bool IsBlank(char16_t c) {
    return c == u' ' || c == u'\t' || c == u'\r' || c == u'\n';
}

} // namespace

UT_WString UT_FromUtf8(std::string_view utf8) {
    UT_WString out;
    out.reserve(utf8.size());
    size_t i = 0;
    while (i < utf8.size()) {
        const auto b0 = static_cast<unsigned char>(utf8[i]);
        int extra;
        char32_t cp;
        if (b0 < 0x80) {
            out.push_back(b0);
            ++i;
            continue;
        } else if ((b0 & 0xE0) == 0xC0) {
            extra = 1;
            cp = b0 & 0x1F;
        } else if ((b0 & 0xF0) == 0xE0) {
            extra = 2;
            cp = b0 & 0x0F;
        } else if ((b0 & 0xF8) == 0xF0) {
            extra = 3;
            cp = b0 & 0x07;
        } else {
            out.push_back(0xFFFD);
            ++i;
            continue;
        }
        if (i + extra >= utf8.size()) {
            out.push_back(0xFFFD);
            break;
        }
        bool valid = true;
        for (int k = 1; k <= extra; ++k) {
            const auto b = static_cast<unsigned char>(utf8[i + k]);
            if ((b & 0xC0) != 0x80) {
                valid = false;
                break;
            }
            cp = (cp << 6) | (b & 0x3F);
        }
        if (!valid) {
            out.push_back(0xFFFD);
            ++i;
            continue;
        }
        static constexpr char32_t kMinimum[] = {0, 0x80, 0x800, 0x10000};
        if (cp < kMinimum[extra])
            cp = 0xFFFD;
        AppendUtf16(out, cp);
        i += extra + 1;
    }
    return out;
}

std::string UT_ToUtf8(std::u16string_view wide) {
    std::string out;
    out.reserve(wide.size());
    for (size_t i = 0; i < wide.size(); ++i) {
        char32_t cp = wide[i];
        if (cp >= 0xD800 && cp < 0xDC00 && i + 1 < wide.size() && wide[i + 1] >= 0xDC00 &&
            wide[i + 1] < 0xE000) {
            cp = 0x10000 + ((cp - 0xD800) << 10) + (wide[i + 1] - 0xDC00);
            ++i;
        } else if (cp >= 0xD800 && cp < 0xE000) {
            cp = 0xFFFD;
        }
        if (cp < 0x80) {
            out.push_back(static_cast<char>(cp));
        } else if (cp < 0x800) {
            out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
            out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
        } else if (cp < 0x10000) {
            out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
            out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
        } else {
            out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
            out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
            out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
        }
    }
    return out;
}

UT_WString UT_FromLatin1(std::string_view bytes) {
    UT_WString out;
    out.reserve(bytes.size());
    for (char c : bytes)
        out.push_back(static_cast<unsigned char>(c));
    return out;
}

UT_WString UT_Trim(std::u16string_view text) {
    size_t begin = 0, end = text.size();
    while (begin < end && IsBlank(text[begin]))
        ++begin;
    while (end > begin && IsBlank(text[end - 1]))
        --end;
    return UT_WString(text.substr(begin, end - begin));
}
