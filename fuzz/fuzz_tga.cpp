// Feeds arbitrary bytes to the TGA reader. Damage must end in a message, never a crash.
#include "render/BM_PixelMap.h"
#include "render/BM_TgaCodec.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    BM_PixelMap<BM_PixelRgba32> map;
    UT_WString error;
    if (BM_TgaCodec::Decode(data, size, map, error) && map.Size() != size_t(map.Width()) * map.Height() * 4)
        __builtin_trap();
    return 0;
}
