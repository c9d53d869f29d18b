#pragma once

#include "lipsync/Vector.h"

// A matrix of floats addressed from 1 in both dimensions: rows are Vectors.
class Matrix : public LipsyncManaged {
public:
    int rows() const { return rows_; }
    int columns() const { return columns_; }
    Vector& operator[](int row) { return *rowVectors_[row - 1]; }
    const Vector& operator[](int row) const { return *rowVectors_[row - 1]; }

    // Set by the Create functions.
    int rows_ = 0;
    int columns_ = 0;
    Vector** rowVectors_ = nullptr;
};

class SMatrix : public Matrix, public Shared {};

// A zero-filled matrix; failure is fatal.
Matrix* CreateMatrix(int rows, int columns);
SMatrix* CreateSMatrix(int rows, int columns);

// Reads the upper triangle of a symmetric square matrix row by row (row i from column i)
// and mirrors each element; a short source is fatal.
void ReadSymMatrix(LipsyncSource& source, Matrix& m);
