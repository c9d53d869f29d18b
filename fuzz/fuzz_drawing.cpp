// Feeds arbitrary bytes to the reader of vector drawing files: the container header, then
// the drawing, read with a palette list as context so that the colours it carries are
// recovered and a drawing of an older form is rebuilt. A drawing that reads has its zones
// built and is written and read once more.
#include "QmsCommands.h"
#include "colour/CM_PaletteList.h"
#include "core/DB_Archive.h"
#include "core/DB_Exception.h"
#include "core/DB_FileContainer.h"
#include "core/DB_MemFile.h"
#include "vector/GR_DrawingAccess.h"
#include "vector/GR_Layer.h"
#include "vector/GR_VectorDrawingObj.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool registered = (QmsRegisterAllTypes(), true);
    (void)registered;
    DB_MemFile file;
    file.Write(data, size);
    file.Rewind();
    CM_PaletteList palettes;
    DB_Archive archive(&file, false);
    archive.SetContext(&palettes);
    try {
        DB_FileContainer::ReadHeader(archive, DB_FileContainer::kVectorDrawing, u"fuzz.qmd");
        GR_VectorDrawingObj drawing;
        archive.ReadTyped(drawing);
        GR_DrawingAccess access(&palettes);
        access.SetDrawing(&drawing);
        for (GR_Layer* layer = drawing.FirstLayer(); layer; layer = drawing.NextLayer(layer)) {
            const GR_Box2d box = layer->Bounds();
            if (!box.empty)
                layer->ZoneAt({(box.xmin + box.xmax) / 2, (box.ymin + box.ymax) / 2});
        }
        DB_MemFile copy;
        DB_Archive writer(&copy, false);
        writer.SetContext(&palettes);
        writer.WriteTyped(drawing);
        copy.Rewind();
        DB_Archive reader(&copy, false);
        reader.SetContext(&palettes);
        GR_VectorDrawingObj again;
        reader.ReadTyped(again);
    } catch (const DB_Exception&) {
    }
    return 0;
}
