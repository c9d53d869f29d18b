#include "core/UT_Progress.h"

int UT_Progress::Percent(int64_t low, int64_t high, int64_t position) {
    if (high <= low)
        return 100;
    const int64_t percent = 100 * (position - low) / (high - low);
    if (percent < 0)
        return 0;
    return percent > 100 ? 100 : static_cast<int>(percent);
}
