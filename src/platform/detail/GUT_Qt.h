#pragma once

// Conversions between the model's strings, paths and colours and Qt's, for the
// platform layer only.

#include "core/UT_FilePath.h"
#include "core/UT_String.h"

#include <QColor>
#include <QCoreApplication>
#include <QString>
#include <cstdint>

namespace gut {

inline QString ToQt(std::u16string_view text) {
    return QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size()));
}

inline UT_WString FromQt(const QString& text) {
    return text.toStdU16String();
}

inline QString PathToQt(const UT_FilePath& path) {
    return QString::fromStdString(path.Utf8());
}

inline UT_FilePath PathFromQt(const QString& path) {
    return UT_FilePath(std::filesystem::path(path.toStdString()));
}

// A text of the program's interface, through the installed translation.
inline QString Tr(const char* text) {
    return QCoreApplication::translate("qmstudio", text);
}

// Colours of the preferences are 0xBBGGRR.
inline QColor ColourFromBgr(uint32_t bgr) {
    return QColor(static_cast<int>(bgr & 0xFF), static_cast<int>((bgr >> 8) & 0xFF),
                  static_cast<int>((bgr >> 16) & 0xFF));
}

inline uint32_t BgrFromColour(const QColor& colour) {
    return static_cast<uint32_t>(colour.red()) | static_cast<uint32_t>(colour.green()) << 8 |
           static_cast<uint32_t>(colour.blue()) << 16;
}

} // namespace gut
