#include "animationset/AnimationSetTypes.h"

#include "animationset/AS_CameraLevelObj.h"
#include "animationset/AS_CompositionOrder.h"
#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/AS_EffectLevel.h"
#include "animationset/AS_MediaLinkLevelObj.h"
#include "animationset/AS_MediaObj.h"
#include "animationset/AS_ParamGroupLevel.h"
#include "animationset/AS_PegLevelObj.h"
#include "animationset/AS_SoundLevel.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"
#include "core/CPersistentType.h"

void AnimationSetRegisterTypes() {
    CPersistentTypeRegistry& registry = CPersistentTypeRegistry::Instance();
    registry.Register<CAnimationSetObj>(1, "AnimationSet");
    registry.Register<CDopeSheetObj>(2, "DopeSheet");
    registry.Register<AS_VectorGraphicLevelObj>(3);
    registry.Register<AS_SPCompositionOrder>(4);
    registry.Register<AS_DSCompositionOrder>(5);
    registry.Register<AS_CommonVectorDrawingLevel>(6);
    registry.Register<AS_CameraLevelObj>(7);
    registry.Register<AS_PegLevelObj>(8);
    registry.Register<AS_CommonCameraLevel>(9);
    registry.Register<AS_CommonPegLevel>(10);
    registry.Register<AS_SoundLevel>(11);
    registry.Register<AS_MediaLinkLevelObj>(12);
    registry.Register<AS_BitmapLevelObj>(13);
    registry.Register<AS_CommonSoundLevel>(15);
    registry.Register<AS_CommonBitmapDrawingLevel>(16);
    registry.Register<AS_MediaObj>(17, "AS_MediaObj");
    registry.Register<AS_EffectLevel>(18);
    registry.Register<AS_CommonEffect>(19);
    registry.Register<AS_ParamGroupLevel>(20);
    registry.Register<AS_CommonParamGroupLevel>(21);
}
