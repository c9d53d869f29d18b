// Feeds arbitrary bytes to the palette list reader, the body that a project file holds.
// Damage must surface as DB_Exception and nothing else.
#include "QmsCommands.h"
#include "colour/CM_PaletteList.h"
#include "core/DB_Archive.h"
#include "core/DB_Exception.h"
#include "core/DB_MemFile.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool registered = (QmsRegisterAllTypes(), true);
    (void)registered;
    DB_MemFile file;
    file.Write(data, size);
    file.Rewind();
    DB_Archive archive(&file, true);
    CM_PaletteList list;
    try {
        list.Read(archive);
        // What was read resolves and writes again.
        for (size_t i = 0; i < list.GetPaletteCount(); ++i)
            for (size_t e = 0; e < list.GetPalette(i)->GetEntryCount(); ++e)
                list.Resolve(list.GetPalette(i)->GetEntry(e)->GetId())->IsOpaque();
        DB_MemFile again;
        DB_Archive out(&again, true);
        list.Write(out);
    } catch (const DB_Exception&) {
    }
    return 0;
}
