#include "QmsCommands.h"
#include "animationset/AnimationSetTypes.h"
#include "colour/CM_PaletteList.h"
#include "core/CPersistentType.h"
#include "motion/MotionTypes.h"
#include "render/BM_QMTBitmap.h"
#include "vector/VectorTypes.h"

void QmsRegisterAllTypes() {
    CoreRegisterTypes();
    PixelsRegisterTypes();
    ColourRegisterTypes();
    MotionRegisterTypes();
    VectorRegisterTypes();
    AnimationSetRegisterTypes();
}
