#include "core/UT_Format.h"

#include <cstdio>

namespace {

UT_WString FormatNumber(int64_t value, char16_t conversion, bool zeroPad, bool leftAlign, int width) {
    char buffer[32];
    switch (conversion) {
    case u'x':
        std::snprintf(buffer, sizeof buffer, "%llx", static_cast<unsigned long long>(value));
        break;
    case u'X':
        std::snprintf(buffer, sizeof buffer, "%llX", static_cast<unsigned long long>(value));
        break;
    case u'u':
        std::snprintf(buffer, sizeof buffer, "%llu", static_cast<unsigned long long>(value));
        break;
    default:
        std::snprintf(buffer, sizeof buffer, "%lld", static_cast<long long>(value));
        break;
    }
    UT_WString digits = UT_FromLatin1(buffer);
    if (static_cast<int>(digits.size()) >= width)
        return digits;
    const size_t pad = static_cast<size_t>(width) - digits.size();
    if (leftAlign)
        return digits + UT_WString(pad, u' ');
    if (zeroPad) {
        const size_t sign = (!digits.empty() && digits[0] == u'-') ? 1 : 0;
        return digits.substr(0, sign) + UT_WString(pad, u'0') + digits.substr(sign);
    }
    return UT_WString(pad, u' ') + digits;
}

UT_WString Pad(UT_WString text, bool leftAlign, int width) {
    if (static_cast<int>(text.size()) >= width)
        return text;
    const UT_WString fill(static_cast<size_t>(width) - text.size(), u' ');
    return leftAlign ? text + fill : fill + text;
}

} // namespace

UT_WString UT_Format(std::u16string_view format, const std::vector<UT_FormatArg>& args) {
    UT_WString out;
    size_t next = 0;
    size_t i = 0;
    while (i < format.size()) {
        const char16_t c = format[i];
        if (c != u'%') {
            out.push_back(c);
            ++i;
            continue;
        }
        if (i + 1 < format.size() && format[i + 1] == u'%') {
            out.push_back(u'%');
            i += 2;
            continue;
        }
        size_t j = i + 1;
        // Optional position "N$".
        size_t position = 0;
        size_t k = j;
        while (k < format.size() && format[k] >= u'0' && format[k] <= u'9')
            position = position * 10 + (format[k++] - u'0');
        if (k > j && k < format.size() && format[k] == u'$')
            j = k + 1;
        else
            position = 0;
        bool zeroPad = false, leftAlign = false;
        while (j < format.size() && (format[j] == u'0' || format[j] == u'-')) {
            (format[j] == u'0' ? zeroPad : leftAlign) = true;
            ++j;
        }
        int width = 0;
        while (j < format.size() && format[j] >= u'0' && format[j] <= u'9')
            width = width * 10 + (format[j++] - u'0');
        while (j < format.size() && (format[j] == u'l' || format[j] == u'h'))
            ++j;
        if (j >= format.size()) {
            out.append(format.substr(i));
            break;
        }
        const char16_t conversion = format[j];
        const size_t index = position ? position - 1 : next;
        const bool known = conversion == u'S' || conversion == u's' || conversion == u'd' ||
                           conversion == u'i' || conversion == u'u' || conversion == u'x' ||
                           conversion == u'X';
        if (!known || index >= args.size()) {
            out.append(format.substr(i, j + 1 - i));
            i = j + 1;
            continue;
        }
        next = index + 1;
        const UT_FormatArg& arg = args[index];
        if (const auto* wide = std::get_if<UT_WString>(&arg))
            out += Pad(*wide, leftAlign, width);
        else if (const auto* narrow = std::get_if<std::string>(&arg))
            out += Pad(UT_FromUtf8(*narrow), leftAlign, width);
        else
            out += FormatNumber(std::get<int64_t>(arg), conversion, zeroPad, leftAlign, width);
        i = j + 1;
    }
    return out;
}
