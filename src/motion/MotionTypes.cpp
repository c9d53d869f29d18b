#include "motion/MotionTypes.h"

#include "core/CPersistentType.h"
#include "motion/C3DInterpolation.h"
#include "motion/CCatmullCurve.h"
#include "motion/CInterpolation.h"
#include "motion/CSpline.h"
#include "motion/CVelocityBased.h"

void MotionRegisterTypes() {
    CPersistentTypeRegistry& registry = CPersistentTypeRegistry::Instance();
    registry.Register<CSpline>(kTypeIdSpline, "SplineFunction");
    registry.Register<CCatmullCurve>(kTypeIdCatmullCurve, "CatmullCurve");
    registry.Register<C3DInterpolation>(kTypeId3DInterpolation, "3DInterpolation");
    registry.Register<CVelocityBased>(kTypeIdVelocityBased, "VelocityBasedFunction");
    registry.Register<CInterpolation>(kTypeIdInterpolation, "InterpolationFunction");
}
