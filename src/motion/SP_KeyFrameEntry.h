#pragma once

#include "core/UT_String.h"

class C3DFunction;

// The checks of the path panel on what the user types for a key.
namespace SP_KeyFrameEntry {

// A frame for a new key (0-based, within the element's `duration` frames), or a new
// frame for a key. Whole frames are required of keys locked in time. On refusal
// `message` gets the text to show and the panel asks again.
bool CheckFrame(const C3DFunction& path, double frame, bool lockedInTime, int duration, UT_WString& message);

// Tension, continuity or bias: -1.0 to 1.0. On refusal the field returns to its value.
bool CheckShapeValue(double value, UT_WString& message);

// The whole frame at which "Lock in time" fixes key `index`: the nearest frame (a
// fraction of at least 0.5 rounds up), else the other neighbouring frame if the nearest
// holds another key. -1 when both are taken: the system beeps and the key stays unlocked.
int LockFrame(const C3DFunction& path, int index);

} // namespace SP_KeyFrameEntry
