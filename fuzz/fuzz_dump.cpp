// Feeds arbitrary bytes to qms dump's reader: the container header of any kind, then
// its content, with every object traced. Damage must end in a result with its error,
// and nothing else.
#include "QmsCommands.h"
#include "QmsDump.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool registered = (QmsRegisterAllTypes(), true);
    (void)registered;
    const QmsDumpResult result = QmsDumpObjects(std::vector<uint8_t>(data, data + size), u"fuzz");
    for (const QmsDumpNode& node : result.nodes)
        if (node.size > static_cast<int64_t>(size) || node.offset > size)
            __builtin_trap();
    return 0;
}
