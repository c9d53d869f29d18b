#include "motion/SP_KeyFrameEntry.h"

#include "core/UT_Format.h"
#include "motion/C3DFunction.h"

#include <cmath>

namespace SP_KeyFrameEntry {

bool CheckFrame(const C3DFunction& path, double frame, bool lockedInTime, int duration, UT_WString& message) {
    if (!(frame >= 0.0 && frame <= duration - 1)) {
        message = u"You must enter a valid frame number.";
        return false;
    }
    if (lockedInTime && frame != std::floor(frame)) {
        message = u"The frame number must be an integer.";
        return false;
    }
    if (path.IsKeyAt(frame)) {
        message = u"A key frame already exists at this frame number.";
        return false;
    }
    return true;
}

bool CheckShapeValue(double value, UT_WString& message) {
    if (!(value >= -1.0)) {
        message = UT_Fmt(u"The minimum value is %d", UT_Num(-1));
        return false;
    }
    if (!(value <= 1.0)) {
        message = u"The maximum value is 1";
        return false;
    }
    return true;
}

int LockFrame(const C3DFunction& path, int index) {
    const C3DFunctionPoint* key = path.GetKey(index);
    if (!key)
        return -1;
    const double down = std::floor(key->frame);
    const bool upFirst = key->frame - down >= 0.5;
    const double nearest = upFirst ? down + 1.0 : down;
    const double other = upFirst ? down : down + 1.0;
    for (double candidate : {nearest, other}) {
        const int holder = path.FindKeyAt(candidate);
        if (holder < 0 || holder == index)
            return static_cast<int>(candidate);
    }
    return -1;
}

} // namespace SP_KeyFrameEntry
