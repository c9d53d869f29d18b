#include "animationset/AS_DopeSheetLevelObj.h"

#include "core/DB_Archive.h"
#include "core/DD_DragDataStore.h"

AS_Matrix AS_IdentityMatrix() {
    AS_Matrix m{};
    m[0] = m[5] = m[10] = m[15] = 1.0f;
    return m;
}

AS_Matrix AS_MultiplyMatrix(const AS_Matrix& a, const AS_Matrix& b) {
    AS_Matrix r{};
    for (int row = 0; row < 4; ++row)
        for (int col = 0; col < 4; ++col) {
            float sum = 0.0f;
            for (int k = 0; k < 4; ++k)
                sum += a[row * 4 + k] * b[k * 4 + col];
            r[row * 4 + col] = sum;
        }
    return r;
}

void AS_DopeSheetLevelObj::Read(DB_Archive& archive) {
    id_ = archive.ReadId();
    archive.ReadWideString(note_);
}

void AS_DopeSheetLevelObj::Write(DB_Archive& archive) {
    archive.WriteId(id_);
    archive.WriteWideString(note_);
}

void AS_DopeSheetLevelObj::ReadFromDragData(DD_DragDataStore& store) {
    store.Archive().ReadWideString(note_);
}

AS_ElementHeader AS_DopeSheetLevelObj::ReadDragHeader(DB_Archive& archive) {
    AS_ElementHeader header;
    header.id = archive.ReadId();
    archive.ReadWideString(header.name);
    if (archive.Version() <= 40) {
        archive.ReadWideString();
        header.commonId = header.id;
    } else {
        header.commonId = archive.ReadId();
    }
    return header;
}

bool AS_DopeSheetLevelObj::AcceptsFrames(int32_t, int32_t) const {
    return true;
}
bool AS_DopeSheetLevelObj::IsRangeEmpty(int32_t, int32_t) const {
    return true;
}

void AS_DopeSheetLevelObj::GetMatrix(AS_Matrix& out, int32_t) const {
    out = AS_IdentityMatrix();
}

std::unique_ptr<AS_DopeSheetLevelObj> AS_DopeSheetLevelObj::Clone(uint32_t, bool) const {
    return nullptr;
}

void AS_DopeSheetLevelObj::CopyBaseTo(AS_DopeSheetLevelObj& target) const {
    target.note_ = note_;
    target.folder_ = folder_;
}
