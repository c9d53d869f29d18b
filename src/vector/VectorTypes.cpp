#include "vector/VectorTypes.h"

#include "core/CPersistentType.h"
#include "vector/CPenStyle.h"
#include "vector/CPenStyleList.h"

void VectorRegisterTypes() {
    CPersistentTypeRegistry& registry = CPersistentTypeRegistry::Instance();
    registry.Register<CPenStyle>(200, "CPenStyle");
    registry.Register<CPenStyleList>(201, "CPenStyleList");
}
