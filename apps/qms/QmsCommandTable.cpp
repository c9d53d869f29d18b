#include "QmsCommands.h"

const std::vector<QmsCommand>& QmsCommandTable() {
    static const std::vector<QmsCommand> table = {
        {"new", "qms new LOCATION NAME", "create an animation set in LOCATION/NAME", QmsRunNew},
        {"info", "qms info PROJECT [--json]", "show an animation set", QmsRunInfo},
        {"save", "qms save PROJECT", "open an animation set and save it again", QmsRunSave},
        {"demo", "qms demo FOLDER", "create, save, reopen and show a demo animation set", QmsRunDemo},
        {"prefs", "qms prefs [get KEY | set KEY VALUE | reset [--messages]] [--json]",
         "show or change the user's preferences", QmsRunPrefs},
        {"curve", "qms curve eval FILE|JSON [--frames A..B] [--step S] [--svg FILE] [--store FILE] [--json]",
         "print a function curve's value per frame; draw it with its keys and handles", QmsRunCurve},
        {"path",
         "qms path eval FILE|JSON [--velocity FILE|JSON] [--frames A..B] [--step S] [--svg FILE] [--store "
         "FILE] "
         "[--json]",
         "print a motion path's position per frame; draw it with its keys", QmsRunPath},
        {"lipsync", "qms lipsync AUDIO [--fps N] [--json]",
         "print one mouth shape (A-G, X) per frame of a sound", QmsRunLipsync},
        {"geom",
         "qms geom fit|intersect|flatten INPUT.json [--tolerance T] [--scale S] [--svg FILE] [--json]",
         "fit, intersect or flatten paths given as JSON points; draw them", QmsRunGeom},
        {"drawing", "qms drawing info FILE.qmd [--json] | qms drawing svg FILE.qmd LAYER OUT.svg [--json]",
         "show a vector drawing file's layers, planar maps and colours; draw one layer's map as SVG (LAYER "
         "is an "
         "index or a path such as 0/1/0)",
         QmsRunDrawing},
        {"image", "qms image convert IN OUT [--json]",
         "read any image file and write it as TGA (our codec) or PNG, by OUT's extension", QmsRunImage},
    };
    return table;
}
