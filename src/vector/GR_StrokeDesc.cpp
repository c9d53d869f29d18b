#include "vector/GR_StrokeDesc.h"

#include "vector/GR_VectorStroke.h"

GR_StrokeDesc::GR_StrokeDesc(const GR_VectorStroke& stroke)
    : GR_BezierPath2d(stroke.Path()), colour0(stroke.colour[0]), colour1(stroke.colour[1]),
      style(stroke.style), endFlag0(stroke.endFlags[0]), endFlag1(stroke.endFlags[1]) {}
