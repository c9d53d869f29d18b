#include "lipsync/Vector.h"

#include "lipsync/LipsyncExit.h"
#include "lipsync/LipsyncFiles.h"
#include "lipsync/Matrix.h"

#include <new>

namespace {

// No vector or matrix of the analysis comes near this many elements.
constexpr int kLargestDimension = 1 << 24;

float* CreateElements(int size, const char* message) {
    LipsyncMemoryManagerObject* manager = LipsyncMemoryManagerObject::Current();
    void* p = nullptr;
    if (manager != nullptr && size >= 0 && size <= kLargestDimension)
        p = manager->allocateZeroed(size > 0 ? size_t(size) : 1, sizeof(float));
    if (p == nullptr)
        LipsyncFatal(5001, message, size);
    return static_cast<float*>(p);
}

template <class T> T* CreateShell(int size, int code, const char* message) {
    LipsyncMemoryManagerObject* manager = LipsyncMemoryManagerObject::Current();
    void* p = manager != nullptr ? manager->allocateZeroed(1, sizeof(T)) : nullptr;
    if (p == nullptr)
        LipsyncFatal(code, message, size);
    return ::new (p) T();
}

} // namespace

Vector* CreateVector(int size) {
    Vector* v = CreateShell<Vector>(size, 5001, "CreateVector: Cannot create vector with %d elements");
    v->elements_ = CreateElements(size, "CreateVector: Cannot create vector with %d elements");
    v->size_ = size;
    return v;
}

SVector* CreateSVector(int size) {
    SVector* v = CreateShell<SVector>(size, 5001, "CreateVector: Cannot create vector with %d elements");
    v->elements_ = CreateElements(size, "CreateVector: Cannot create vector with %d elements");
    v->size_ = size;
    return v;
}

namespace {
template <class T> void FillMatrix(T* m, int rows, int columns) {
    LipsyncMemoryManagerObject* manager = LipsyncMemoryManagerObject::Current();
    void* p = nullptr;
    if (manager != nullptr && rows >= 0 && rows <= kLargestDimension)
        p = manager->allocateZeroed(rows > 0 ? size_t(rows) : 1, sizeof(Vector*));
    if (p == nullptr)
        LipsyncFatal(5002, "CreateMatrix: Cannot create matrix pointers with %d rows", rows);
    m->rowVectors_ = static_cast<Vector**>(p);
    for (int r = 0; r < rows; ++r)
        m->rowVectors_[r] = CreateVector(columns);
    m->rows_ = rows;
    m->columns_ = columns;
}
} // namespace

Matrix* CreateMatrix(int rows, int columns) {
    Matrix* m = CreateShell<Matrix>(rows, 5002, "CreateMatrix: Cannot create matrix pointers with %d rows");
    FillMatrix(m, rows, columns);
    return m;
}

SMatrix* CreateSMatrix(int rows, int columns) {
    SMatrix* m = CreateShell<SMatrix>(rows, 5002, "CreateMatrix: Cannot create matrix pointers with %d rows");
    FillMatrix(m, rows, columns);
    return m;
}

void ReadVector(LipsyncSource& source, Vector& v) {
    for (int i = 1; i <= v.size(); ++i)
        if (!source.readFloat(v[i]))
            LipsyncFatal(5003, "ReadVector: Reading vector component %d", i);
}

void ReadSymMatrix(LipsyncSource& source, Matrix& m) {
    for (int i = 1; i <= m.rows(); ++i)
        for (int j = i; j <= m.columns(); ++j) {
            float value;
            if (!source.readFloat(value))
                LipsyncFatal(5004, "ReadSymMatrix: Reading component %d of row %d", j, i);
            m[i][j] = value;
            m[j][i] = value;
        }
}
