#include "vector/GR_Color.h"

#include "core/DB_Archive.h"

#include <cmath>

namespace {

// Serials start at 1, so that 0 can stand for the null colour in sorted tallies.
uint64_t g_colourSerial = 0;

} // namespace

GR_Color::GR_Color() : serial_(++g_colourSerial) {}

GR_Color::GR_Color(UT_UniqueId id) : id_(id), serial_(++g_colourSerial) {}

GR_Color::GR_Color(UT_UniqueId id, const GR_Affine2d& matrix)
    : id_(id), matrix_(matrix), placed_(true), serial_(++g_colourSerial) {}

void GR_Color::Read(DB_Archive& archive) {
    if (archive.Version() >= 32) {
        placed_ = archive.ReadBool();
        matrix_.a = archive.ReadF64();
        matrix_.b = archive.ReadF64();
        matrix_.c = archive.ReadF64();
        matrix_.d = archive.ReadF64();
        matrix_.e = archive.ReadF64();
        matrix_.f = archive.ReadF64();
        id_ = archive.ReadUniqueId();
        return;
    }
    // The older form holds the axis of a gradient, origin then tip, each as y then x.
    const double y0 = archive.ReadF64();
    const double x0 = archive.ReadF64();
    const double y1 = archive.ReadF64();
    const double x1 = archive.ReadF64();
    id_ = archive.ReadUniqueId();
    placed_ = !(x0 == 0.0 && y0 == 0.0 && x1 == 0.0 && y1 == 0.0);
    const double dx = x1 - x0, dy = y1 - y0;
    const double angle = (dx == 0.0 && dy == 0.0) ? 0.0 : std::atan2(dy, dx);
    const double length = std::sqrt(dx * dx + dy * dy);
    // Scaled by the axis length, turned to the axis, moved to the origin.
    const double c = std::cos(angle) * length, s = std::sin(angle) * length;
    matrix_ = placed_ ? GR_Affine2d{c, s, -s, c, x0, y0} : GR_Affine2d{};
}

void GR_Color::Write(DB_Archive& archive) {
    archive.WriteBool(placed_);
    archive.WriteF64(matrix_.a);
    archive.WriteF64(matrix_.b);
    archive.WriteF64(matrix_.c);
    archive.WriteF64(matrix_.d);
    archive.WriteF64(matrix_.e);
    archive.WriteF64(matrix_.f);
    archive.WriteUniqueId(id_);
}

bool GR_Color::SameValue(const GR_Color& o, bool plain) const {
    if (id_ != o.id_)
        return false;
    if (plain)
        return true;
    const GR_Affine2d& m = matrix_;
    const GR_Affine2d& n = o.matrix_;
    return placed_ == o.placed_ && m.a == n.a && m.b == n.b && m.c == n.c && m.d == n.d && m.e == n.e &&
           m.f == n.f;
}
