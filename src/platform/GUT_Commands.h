#pragma once

#include <cstdint>
#include <span>

// Identifiers of the commands of the main window's menus and shortcuts.
enum GUT_CommandId : uint32_t {
    kCmdFileNew = 57600,
    kCmdFileOpen = 57601,
    kCmdFileClose = 57602,
    kCmdFileSave = 57603,
    kCmdFileSaveAs = 57604,
    kCmdFileSaveGlobalLibrary = 33325,
    kCmdFileProperties = 33226,
    kCmdAppExit = 57665,
    // The entries of the recent files list, one identifier each.
    kCmdRecentFileFirst = 57616,
    kCmdRecentFileLast = 57631,
    kCmdEditUndo = 57643,
    kCmdEditRedo = 57644,
    kCmdEditPreferences = 33500,
    kCmdSceneplanningMode = 33190,
    kCmdDrawingMode = 33191,
    kCmdViewSceneList = 33501,
    kCmdSceneAdd = 33502,
    kCmdSceneDelete = 33503,
    kCmdSceneRename = 33504,
    kCmdSceneToggleVisibility = 33505,
    kCmdViewPalettes = 33506,
    kCmdHelpAbout = 33510,
    // Elements of the current scene; the new element's kind by command.
    kCmdElementNewDrawing = 33530,
    kCmdElementNewImage = 33531,
    kCmdElementNewSound = 33532,
    kCmdElementNewPeg = 33533,
    kCmdElementNewCamera = 33534,
    kCmdElementNewMedia = 33535,
    kCmdElementRename = 33536,
    kCmdElementDelete = 33537,
    kCmdElementClone = 33538,
    kCmdElementNote = 33539,
    kCmdElementProperties = 33540,
    kCmdElementParent = 33541,
    kCmdElementMoveUp = 33542,
    kCmdElementMoveDown = 33543,
    // The cells of the timeline's selection.
    kCmdCellEdit = 33550,
    kCmdCellClear = 33551,
    kCmdCellRemove = 33552,
    kCmdCellInsert = 33553,
    kCmdCellOnes = 33554,
    kCmdCellTwos = 33555,
    kCmdCellThrees = 33556,
    kCmdCellExtendRun = 33557,
    kCmdCellShortenRun = 33558,
    // Palettes, their colours and flavours.
    kCmdPaletteNew = 33570,
    kCmdPaletteDuplicate = 33571,
    kCmdPaletteRename = 33572,
    kCmdPaletteDelete = 33573,
    kCmdColourNew = 33574,
    kCmdColourEdit = 33575,
    kCmdColourRename = 33576,
    kCmdColourDelete = 33577,
    kCmdFlavourRename = 33578,
    kCmdFlavourDelete = 33579,
    kCmdColourMoveBack = 33580,
    kCmdColourMoveForward = 33581,
    kCmdFlavourTint = 33582,
    // Playback: the commands of the playback control keep its identifiers (33017 to 33025,
    // 33180 to 33184 and 33250); these are the timeline's frame range.
    kCmdPlayRangeMode = 33590,
    kCmdPlaySetRange = 33591,
    kCmdPlayClearRange = 33592,
    // Export of SVG for the Plazmic media engine, shown only when the environment asks.
    kCmdExportPlazmic = 33369,
};

// One command as the menus and the shortcut page show it.
struct GUT_CommandInfo {
    uint32_t id;
    // The menu it belongs to ("File", "Edit", ...); "Other" for none.
    const char* group;
    // Menu text with an '&' before the mnemonic.
    const char* text;
    // Default shortcuts in Drawing and in Sceneplanning mode, in portable key text.
    const char* drawingKey;
    const char* sceneplanningKey;
};

// Every command with a fixed menu entry, in menu order.
std::span<const GUT_CommandInfo> GUT_AllCommands();
// Commands of the timeline's cells, whose shortcuts work only while the timeline has the
// focus: their keys (Delete, Insert) mean other things in lists and text fields.
bool GUT_IsTimelineCommand(uint32_t id);
// The command with this identifier, or nullptr.
const GUT_CommandInfo* GUT_FindCommand(uint32_t id);
