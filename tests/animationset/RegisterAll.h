#pragma once

#include "animationset/AnimationSetTypes.h"
#include "colour/CM_PaletteList.h"
#include "core/CPersistentType.h"
#include "motion/MotionTypes.h"
#include "vector/VectorTypes.h"

// Every persistent class a project file may hold; registering twice is harmless.
inline void RegisterAllTypesForTests() {
    CoreRegisterTypes();
    ColourRegisterTypes();
    VectorRegisterTypes();
    MotionRegisterTypes();
    AnimationSetRegisterTypes();
}
