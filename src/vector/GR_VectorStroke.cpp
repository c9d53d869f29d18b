#include "vector/GR_VectorStroke.h"

namespace {

uint64_t g_strokeSerial = 0;
uint64_t g_mark = 0;

GR_Point2f ToFloat(const GR_Point2d& p) {
    return {static_cast<float>(p.x), static_cast<float>(p.y)};
}

} // namespace

uint64_t GR_VectorStroke::NewMark() {
    return ++g_mark;
}

GR_VectorStroke::GR_VectorStroke(GR_SharedPath* path, GR_ColorRef colour0, GR_ColorRef colour1,
                                 const GR_LineStyle& style, uint8_t endFlag0, uint8_t endFlag1)
    : style(style), path_(path), serial_(++g_strokeSerial) {
    colour[0] = std::move(colour0);
    colour[1] = std::move(colour1);
    endFlags[0] = endFlag0;
    endFlags[1] = endFlag1;
    ring[0] = {this, 0};
    ring[1] = {this, 1};
    path_->Owner()->AddUser(path_, this);
    ComputeTangents();
}

GR_VectorStroke::GR_VectorStroke(const GR_VectorStroke& other)
    : GR_VectorStroke(other.path_, other.colour[0], other.colour[1], other.style, other.endFlags[0],
                      other.endFlags[1]) {}

GR_VectorStroke::~GR_VectorStroke() {
    path_->Owner()->RemoveUser(path_, this);
}

void GR_VectorStroke::SetSharedPath(GR_SharedPath* path) {
    if (path == path_)
        return;
    path_->Owner()->RemoveUser(path_, this);
    path_ = path;
    path_->Owner()->AddUser(path_, this);
}

namespace {

// The pair recursion of the kernel halves a piece this many times at most.
constexpr int kMaxSplitDepth = 48;

// The first chord of the kernel's chord polyline of a piece that has a length, walking
// forward or backward; the direction out of the walk's start. Zero when every chord is.
GR_Point2d FirstChord(const GR_Bezier2d& piece, int depth, bool backward) {
    if (depth >= kMaxSplitDepth || piece.IsSmall())
        return backward ? piece.First() - piece.Last() : piece.Last() - piece.First();
    GR_Bezier2d left, right;
    piece.SplitSnapped(0.5, left, right);
    const GR_Point2d d = FirstChord(backward ? right : left, depth + 1, backward);
    if (d.x != 0.0 || d.y != 0.0)
        return d;
    return FirstChord(backward ? left : right, depth + 1, backward);
}

} // namespace

// The geometry that the intersection and inside tests see is the chord polyline of each
// path, every segment halved until its pieces obey the chord rule. Ends are ordered around
// a vertex by the first chord of that polyline: ordered by the derivative instead, a curve
// that bends away from its chord by more than the angle between two strokes would sit on
// the wrong side of the other stroke at their common vertex, and the map would no longer
// be planar.
void GR_VectorStroke::ComputeTangents() {
    const GR_BezierPath2d& path = Path();
    tangent[0] = tangent[1] = GR_Point2f();
    const size_t segments = path.SegmentCount();
    GR_Bezier2d segment;
    for (size_t i = 0; i < segments; ++i) {
        path.Segment(i, segment);
        const GR_Point2d d = FirstChord(segment, 0, false);
        if (d.x != 0.0 || d.y != 0.0) {
            tangent[0] = ToFloat(d);
            break;
        }
    }
    for (size_t i = segments; i-- > 0;) {
        path.Segment(i, segment);
        const GR_Point2d d = FirstChord(segment, 0, true);
        if (d.x != 0.0 || d.y != 0.0) {
            tangent[1] = ToFloat(d);
            break;
        }
    }
}

bool GR_VectorStroke::IsDegenerate() const {
    const auto zero = [](const GR_Point2f& t) { return t.x == 0.0f && t.y == 0.0f; };
    return Path().KnotCount() < 2 || zero(tangent[0]) || zero(tangent[1]);
}
