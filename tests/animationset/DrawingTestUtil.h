#pragma once

#include "colour/CM_PaletteList.h"
#include "core/DB_Archive.h"
#include "core/DB_Exception.h"
#include "core/DB_FileContainer.h"
#include "core/DB_MemFile.h"
#include "core/UT_FilePath.h"
#include "vector/GR_DrawingAccess.h"
#include "vector/GR_Layer.h"
#include "vector/GR_VectorDrawingObj.h"
#include "vector/GR_VectorStroke.h"

#include <memory>
#include <vector>

// Drawings that tests tell apart by a marker: one line from the origin to (marker, 1), in
// the given colour. A colour that no palette of the project holds is recovered when the
// drawing is read back, so tests that compare whole projects pass one of theirs.
inline std::unique_ptr<GR_VectorDrawingObj> MarkedDrawing(double marker, UT_UniqueId colour = UT_UniqueId()) {
    auto drawing = std::make_unique<GR_VectorDrawingObj>();
    GR_DrawingAccess access;
    access.SetDrawing(drawing.get());
    access.AddStrokes({GR_StrokeDesc(GR_BezierPath2d::Polyline({{0, 0}, {marker, 1}}),
                                     GR_LineStyle(GR_LineStyle::kPenLine, 1, colour))},
                      0);
    return drawing;
}

// The bytes of the file of such a drawing.
inline std::vector<uint8_t> MarkedDrawingFile(double marker) {
    DB_MemFile file;
    DB_Archive archive(&file, false);
    DB_FileContainer::WriteHeader(archive, DB_FileContainer::kVectorDrawing);
    archive.WriteTyped(*MarkedDrawing(marker));
    return {file.Data(), file.Data() + file.Size()};
}

// The marker of a drawing made by MarkedDrawing; -1 for any other drawing.
inline double MarkerOf(GR_DrawingObj* drawing) {
    auto* vector = dynamic_cast<GR_VectorDrawingObj*>(drawing);
    if (!vector || !vector->FirstLayer() || !vector->FirstLayer()->FirstStroke())
        return -1;
    return vector->FirstLayer()->FirstStroke()->Path().points.back().x;
}

// The marker of the drawing in a file, read as a level reads it; -1 if the file holds none.
inline double MarkerOfFile(const UT_FilePath& path) {
    GR_VectorDrawingObj drawing;
    try {
        DB_FileContainer::LoadTyped(path, drawing, DB_FileContainer::kVectorDrawing);
    } catch (const DB_Exception&) {
        return -1;
    }
    return MarkerOf(&drawing);
}

// The first colour of the first palette of a project.
inline UT_UniqueId FirstColour(const CM_PaletteList& palettes) {
    CM_Palette* palette = palettes.GetPalette(0);
    CM_BaseColorObj* entry = palette ? palette->GetEntry(0) : nullptr;
    return entry ? entry->GetId() : UT_UniqueId();
}
