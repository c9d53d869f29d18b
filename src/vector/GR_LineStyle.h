#pragma once

#include "core/UT_UniqueId.h"

#include <cstdint>

// How a stroke shows: its kind, the width of a pen line and the palette colour of the line.
struct GR_LineStyle {
    enum Kind : uint8_t {
        // An invisible boundary that exists only because its two sides carry different colours.
        kContour = 0,
        // Draws no line; lives only while a side carries a colour.
        kCut = 1,
        // An invisible line that stays when its sides are equal; also the kind of gap strokes.
        kStroke = 2,
        // A pen line of the minimum width; the width field is 1.0 and unused.
        kThinLine = 3,
        // A pen line with the width of its pen.
        kPenLine = 4,
    };

    GR_LineStyle() = default;
    GR_LineStyle(uint8_t kind, float width, UT_UniqueId colour) : kind(kind), colour(colour) {
        SetWidth(width);
    }

    // The style that paint of an upper layer leaves on the lines it covers.
    static GR_LineStyle Contour() { return GR_LineStyle(kContour, 1.0f, UT_UniqueId()); }

    // A width not above 0 (or not a number) is stored as 0.
    void SetWidth(float value) { width = value > 0.0f ? value : 0.0f; }
    bool DrawsLine() const { return kind == kThinLine || kind == kPenLine; }

    // Kinds must agree; a thin line also compares its colour, a pen line colour and width.
    bool operator==(const GR_LineStyle& o) const {
        if (kind != o.kind)
            return false;
        if (kind == kThinLine)
            return colour == o.colour;
        if (kind == kPenLine)
            return colour == o.colour && width == o.width;
        return true;
    }

    uint8_t kind = kContour;
    float width = 1.0f;
    UT_UniqueId colour;
};
