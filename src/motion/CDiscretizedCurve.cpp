#include "motion/CDiscretizedCurve.h"

// Over no samples both ends are 0.0.
double CDiscretizedCurve::MinY() const {
    if (Count() == 0)
        return 0.0;
    CCurvePoint point;
    Get(0, point);
    double result = point.y;
    for (size_t i = 1; i < Count(); ++i) {
        Get(i, point);
        if (point.y < result)
            result = point.y;
    }
    return result;
}

double CDiscretizedCurve::MaxY() const {
    if (Count() == 0)
        return 0.0;
    CCurvePoint point;
    Get(0, point);
    double result = point.y;
    for (size_t i = 1; i < Count(); ++i) {
        Get(i, point);
        if (point.y > result)
            result = point.y;
    }
    return result;
}
