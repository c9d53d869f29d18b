#include "motion/C3DPoint.h"

#include "core/DB_Archive.h"

#include <cmath>

void C3DPoint::Read(DB_Archive& archive) {
    x = archive.ReadF32();
    y = archive.ReadF32();
    z = archive.ReadF32();
}

void C3DPoint::Write(DB_Archive& archive) {
    archive.WriteF32(x);
    archive.WriteF32(y);
    archive.WriteF32(z);
}

double C3DPoint::Distance(const C3DPoint& p) const {
    const long double dx = static_cast<long double>(x) - p.x;
    const long double dy = static_cast<long double>(y) - p.y;
    const long double dz = static_cast<long double>(z) - p.z;
    return static_cast<double>(std::sqrt(dx * dx + dy * dy + dz * dz));
}

void C3DPoint::Lerp(const C3DPoint& a, const C3DPoint& b, double t) {
    Set(b.x * t + a.x * (1.0 - t), b.y * t + a.y * (1.0 - t), b.z * t + a.z * (1.0 - t));
}

void C3DPoint::SetAxis(int axis, double value) {
    if (axis == 0)
        x = static_cast<float>(value);
    else if (axis == 1)
        y = static_cast<float>(value);
    else
        z = static_cast<float>(value);
}
