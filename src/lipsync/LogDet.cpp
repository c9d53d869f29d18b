#include "lipsync/detail/LogDet.h"

#include <cmath>
#include <utility>

bool LipsyncLogDeterminant(double* a, int n, double& logDet) {
    logDet = 0.0;
    for (int col = 0; col < n; ++col) {
        int pivot = col;
        for (int r = col + 1; r < n; ++r)
            if (std::fabs(a[r * n + col]) > std::fabs(a[pivot * n + col]))
                pivot = r;
        if (a[pivot * n + col] == 0.0 || !std::isfinite(a[pivot * n + col]))
            return false;
        if (pivot != col)
            for (int c = 0; c < n; ++c)
                std::swap(a[pivot * n + c], a[col * n + c]);
        const double d = a[col * n + col];
        logDet += std::log(std::fabs(d));
        for (int r = col + 1; r < n; ++r) {
            const double f = a[r * n + col] / d;
            for (int c = col; c < n; ++c)
                a[r * n + c] -= f * a[col * n + c];
        }
    }
    return true;
}
