// Feeds arbitrary bytes to the readers of the clipboard form of an element: the first
// byte picks the kind of element, the rest is the store's payload, read as the paste
// reads it (header, then the element's own part). Damage must surface as DB_Exception.
#include "QmsCommands.h"
#include "animationset/AS_CameraLevelObj.h"
#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/AS_EffectLevel.h"
#include "animationset/AS_MediaLinkLevelObj.h"
#include "animationset/AS_ParamGroupLevel.h"
#include "animationset/AS_PegLevelObj.h"
#include "animationset/AS_SoundLevel.h"
#include "core/DB_Archive.h"
#include "core/DB_Exception.h"
#include "core/DB_MemFile.h"
#include "core/DD_DragDataStore.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool registered = (QmsRegisterAllTypes(), true);
    (void)registered;
    if (size < 2)
        return 0;
    std::unique_ptr<AS_DopeSheetLevelObj> level;
    switch (data[0] % 8) {
    case 0:
        level = AS_VectorGraphicLevelObj::Create(1, u"V");
        break;
    case 1:
        level = AS_BitmapLevelObj::Create(1, u"B");
        break;
    case 2:
        level = AS_SoundLevel::Create(1, u"S");
        break;
    case 3:
        level = AS_PegLevelObj::Create(1, u"P");
        break;
    case 4:
        level = AS_CameraLevelObj::Create(1, u"C");
        break;
    case 5:
        level = AS_MediaLinkLevelObj::Create(1, u"M");
        break;
    case 6:
        level = AS_EffectLevel::Create(1, u"E", std::make_unique<DB_MemFile>());
        break;
    default:
        level = AS_ParamGroupLevel::Create(1, u"G");
        break;
    }
    // The payload travels as a store in a stream of version 51 or 40.
    DB_MemFile outer;
    {
        DB_Archive writer(&outer, true);
        writer.WriteI32(static_cast<int32_t>(size - 2));
        writer.WriteRaw(data + 2, size - 2);
    }
    outer.Rewind();
    DB_Archive reader(&outer, true);
    reader.SetVersion(data[1] % 2 ? 51 : 40);
    DD_DragDataStore store;
    try {
        store.Read(reader);
        AS_DopeSheetLevelObj::ReadDragHeader(store.Archive());
        level->ReadFromDragData(store);
        level->WriteToDragData();
    } catch (const DB_Exception&) {
    }
    return 0;
}
