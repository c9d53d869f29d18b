#include "QmsCommands.h"

const std::vector<QmsCommand>& QmsCommandTable() {
    static const std::vector<QmsCommand> table = {
        {"new", "qms new LOCATION NAME", "create an animation set in LOCATION/NAME", QmsRunNew},
        {"info", "qms info PROJECT [--json]", "show an animation set", QmsRunInfo},
        {"save", "qms save PROJECT", "open an animation set and save it again", QmsRunSave},
        {"demo", "qms demo FOLDER", "create, save, reopen and show a demo animation set", QmsRunDemo},
        {"scene",
         "qms scene list PROJECT | add PROJECT [NAME] [--at POSITION] | rename PROJECT ID NAME | delete "
         "PROJECT ID "
         "| move PROJECT ID POSITION | hide PROJECT ID | show PROJECT ID [--json]",
         "list the scenes of an animation set, or change them with undoable commands and save", QmsRunScene},
        {"cells",
         "qms cells PROJECT SCENE ELEMENT [set FRAME DRAWING | runs | clear FROM TO | remove FROM TO | "
         "timing FROM "
         "TO LENGTH] [--json]",
         "show the exposure of a drawing element, or change it with undoable commands and save", QmsRunCells},
        {"play", "qms play PROJECT SCENE [--fps N] [--from F --to T] [--loop N] [--json]",
         "run a scene at its frame rate and print each frame shown with its time", QmsRunPlay},
        {"element",
         "qms element list PROJECT SCENE | add PROJECT SCENE KIND [NAME] [--count N] [--frames N] | "
         "rename PROJECT SCENE ELEMENT NAME | delete PROJECT SCENE ELEMENT... [--with-children] | "
         "clone PROJECT SCENE ELEMENT | note PROJECT SCENE ELEMENT TEXT | "
         "set PROJECT SCENE ELEMENT FIELD VALUE... | parent PROJECT SCENE ELEMENT PARENT|none | "
         "move PROJECT SCENE ELEMENT --before ELEMENT|--after ELEMENT|--top [--order drawing|sceneplanning] "
         "[--json]",
         "list the elements of a scene with both composition orders, or change them with undoable commands "
         "and save",
         QmsRunElement},
        {"dump", "qms dump FILE [--json]",
         "print the objects of a project, drawing or catalog file with their offsets; damage stops the "
         "listing where it lies",
         QmsRunDump},
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
        {"palette",
         "qms palette list PROJECT [PALETTE] | add PROJECT NAME [--flavour NAME] [--at POSITION] | "
         "add-colour "
         "PROJECT PALETTE NAME #RRGGBB[AA] [--at POSITION] | set PROJECT COLOUR #RRGGBB[AA] | rename PROJECT "
         "ID "
         "NAME | remove PROJECT ID | duplicate PROJECT PALETTE [NAME] | move PROJECT COLOUR POSITION | "
         "flavour "
         "PROJECT PALETTE FLAVOUR | rename-flavour PROJECT PALETTE FLAVOUR NAME | remove-flavour PROJECT "
         "PALETTE "
         "FLAVOUR | tint PROJECT PALETTE (--rgb R,G,B | --hsv H,S,V | --blend #RRGGBB[AA]) [--alpha A] "
         "[--amount "
         "PERCENT] [--from FLAVOUR] [--into NAME] [--json]",
         "list the palettes of an animation set with their flavours (styles) and colours, or change them "
         "with "
         "undoable commands and save",
         QmsRunPalette},
    };
    return table;
}
