// Feeds arbitrary bytes to the project loader: the container header, then the body of
// an animation set. Damage must surface as DB_Exception and nothing else.
#include "QmsCommands.h"

#include "animationset/CAnimationSetObj.h"
#include "core/DB_Archive.h"
#include "core/DB_Exception.h"
#include "core/DB_FileContainer.h"
#include "core/DB_MemFile.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool registered = (QmsRegisterAllTypes(), true);
    (void)registered;
    DB_MemFile file;
    file.Write(data, size);
    file.Rewind();
    DB_Archive archive(&file, false);
    CAnimationSetObj set;
    try {
        DB_FileContainer::ReadHeader(archive, DB_FileContainer::kProject, u"fuzz.qmp");
        set.Read(archive);
    } catch (const DB_Exception&) {
    }
    return 0;
}
