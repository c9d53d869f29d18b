#pragma once

// ln |det A| of an n x n row-major matrix by LU decomposition with partial pivoting;
// returns false when A is singular. A is overwritten.
bool LipsyncLogDeterminant(double* a, int n, double& logDet);
