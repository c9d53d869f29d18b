// Feeds arbitrary bytes to the container header of a drawing file and, when the header
// passes, to the typed object reader that follows it.
#include "QmsCommands.h"

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
    try {
        DB_FileContainer::ReadHeader(archive, DB_FileContainer::kVectorDrawing, u"fuzz.qmd");
        archive.ReadNew();
    } catch (const DB_Exception&) {
    }
    return 0;
}
