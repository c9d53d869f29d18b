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
    kCmdHelpAbout = 33510,
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
// The command with this identifier, or nullptr.
const GUT_CommandInfo* GUT_FindCommand(uint32_t id);
