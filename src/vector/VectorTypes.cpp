#include "vector/VectorTypes.h"

#include "core/CPersistentType.h"
#include "vector/CPenStyle.h"
#include "vector/CPenStyleList.h"
#include "vector/GR_BitmapDrawingObj.h"
#include "vector/GR_Color.h"
#include "vector/GR_VectorDrawingObj.h"

void VectorRegisterTypes() {
    CPersistentTypeRegistry& registry = CPersistentTypeRegistry::Instance();
    registry.Register<CPenStyle>(200, "CPenStyle");
    registry.Register<CPenStyleList>(201, "CPenStyleList");
    registry.Register<GR_VectorDrawingObj>(202, "VectorDrawingObj");
    registry.Register<GR_BitmapDrawingObj>(203, "BitmapDrawingObj");
    registry.Register<GR_Color>(205, "GR_Color");
}
