#include "vector/GR_StrokeEnd.h"

GR_StrokeEnd GR_StrokeEnd::Previous() const {
    GR_StrokeEnd walk = *this;
    for (;;) {
        const GR_StrokeEnd following = walk.Next();
        if (following == *this)
            return walk;
        walk = following;
    }
}

size_t GR_StrokeEnd::Degree() const {
    size_t degree = 1;
    for (GR_StrokeEnd walk = Next(); walk != *this; walk = walk.Next())
        ++degree;
    return degree;
}

bool GR_StrokeEnd::SameCurve(const GR_StrokeEnd& o) const {
    GR_Point2f t0, t1, u0, u1;
    Tangents(t0, t1);
    o.Tangents(u0, u1);
    return t0 == u0 && t1 == u1 && Twin().Point() == o.Twin().Point();
}

bool GR_StrokeEnd::Before(const GR_StrokeEnd& a, const GR_StrokeEnd& b) {
    const GR_Point2d ta = GR_ToDouble(a.Tangent()), tb = GR_ToDouble(b.Tangent());
    // Products of two floats are exact in double, so the sign of the cross product is too.
    const double c = GR_Cross(ta, tb);
    if (c == 0.0 && GR_Dot(ta, tb) >= 0.0) {
        if (a.end != b.end)
            return a.end < b.end;
        const uint64_t sa = a.stroke->Serial(), sb = b.stroke->Serial();
        return a.end == 0 ? sa < sb : sa > sb;
    }
    return GR_DirectionBefore(ta, tb);
}
