#pragma once

#include "vector/GR_BezierPath2d.h"
#include "vector/GR_Color.h"
#include "vector/GR_LineStyle.h"

#include <cstdint>

class GR_VectorStroke;

// The creation record of a stroke: what importers, tools and the clipboard hand to a layer
// or a transaction. The path is the record itself.
class GR_StrokeDesc : public GR_BezierPath2d {
public:
    GR_StrokeDesc() = default;
    GR_StrokeDesc(const GR_BezierPath2d& path, const GR_LineStyle& style, GR_ColorRef colour0 = nullptr,
                  GR_ColorRef colour1 = nullptr)
        : GR_BezierPath2d(path), colour0(std::move(colour0)), colour1(std::move(colour1)), style(style) {}
    // The description of an existing stroke.
    explicit GR_StrokeDesc(const GR_VectorStroke& stroke);

    GR_ColorRef colour0;
    GR_ColorRef colour1;
    GR_LineStyle style;
    uint8_t endFlag0 = 0;
    uint8_t endFlag1 = 0;
};
