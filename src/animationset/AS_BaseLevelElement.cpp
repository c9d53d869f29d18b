#include "animationset/AS_BaseLevelElement.h"

#include "core/DB_Archive.h"

#include <cmath>

void AS_Placement::Read(DB_Archive& archive) {
    offset.Read(archive);
    rotationPivot.Read(archive);
    scalePivot.Read(archive);
    fourthPoint.Read(archive);
    startFrame = archive.ReadU32();
    rotation = archive.ReadF64();
    verticalScale = archive.ReadF64();
    horizontalScale = archive.ReadF64();
    elementType = archive.ReadU32();
    keepProportions = archive.ReadBool();
}

void AS_Placement::Write(DB_Archive& archive) {
    offset.Write(archive);
    rotationPivot.Write(archive);
    scalePivot.Write(archive);
    fourthPoint.Write(archive);
    archive.WriteU32(startFrame);
    archive.WriteF64(rotation);
    archive.WriteF64(verticalScale);
    archive.WriteF64(horizontalScale);
    archive.WriteU32(elementType);
    archive.WriteBool(keepProportions);
}

namespace {

AS_Matrix Translation(float x, float y, float z) {
    AS_Matrix m = AS_IdentityMatrix();
    m[12] = x;
    m[13] = y;
    m[14] = z;
    return m;
}

} // namespace

AS_Matrix AS_Placement::Matrix() const {
    const float sx = scalePivot.x;
    const float sy = scalePivot.y;
    const float rx = rotationPivot.x;
    const float ry = rotationPivot.y;

    AS_Matrix scale = AS_IdentityMatrix();
    scale[0] = static_cast<float>(horizontalScale);
    scale[5] = static_cast<float>(verticalScale);

    // Counter-clockwise for positive degrees, x to the right and y upward.
    const float degrees = std::fmod(static_cast<float>(rotation), 360.0f);
    const float radians = degrees * 0.017453292519943295f;
    const float c = std::cos(radians);
    const float s = std::sin(radians);
    AS_Matrix rotate = AS_IdentityMatrix();
    rotate[0] = c;
    rotate[1] = s;
    rotate[4] = -s;
    rotate[5] = c;

    AS_Matrix m = Translation(-sx, -sy, 0.0f);
    m = AS_MultiplyMatrix(m, scale);
    m = AS_MultiplyMatrix(m, Translation(sx - rx, sy - ry, 0.0f));
    m = AS_MultiplyMatrix(m, rotate);
    return AS_MultiplyMatrix(m, Translation(static_cast<float>(offset.x) + rx,
                                            static_cast<float>(offset.y) + ry, static_cast<float>(offset.z)));
}

void AS_BaseLevelElement::GetMatrix(AS_Matrix& out, int32_t) const {
    out = placement_.Matrix();
}
