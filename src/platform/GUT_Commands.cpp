#include "platform/GUT_Commands.h"

#include <algorithm>
#include <array>

namespace {

// F6 switches to the other mode: the one difference between the two default tables.
constexpr std::array kCommands{
    GUT_CommandInfo{kCmdFileNew, "File", "&New", "Ctrl+N", "Ctrl+N"},
    GUT_CommandInfo{kCmdFileOpen, "File", "&Open", "Ctrl+O", "Ctrl+O"},
    GUT_CommandInfo{kCmdFileClose, "File", "&Close", "Ctrl+W", "Ctrl+W"},
    GUT_CommandInfo{kCmdFileSave, "File", "&Save", "Ctrl+S", "Ctrl+S"},
    GUT_CommandInfo{kCmdFileSaveAs, "File", "Save &As", "Ctrl+Shift+S", "Ctrl+Shift+S"},
    GUT_CommandInfo{kCmdFileSaveGlobalLibrary, "File", "Save Global &Library", "", ""},
    GUT_CommandInfo{kCmdFileProperties, "File", "&Properties", "", ""},
    GUT_CommandInfo{kCmdAppExit, "File", "E&xit", "Ctrl+Q", "Ctrl+Q"},
    GUT_CommandInfo{kCmdEditUndo, "Edit", "&Undo", "Ctrl+Z", "Ctrl+Z"},
    GUT_CommandInfo{kCmdEditRedo, "Edit", "&Redo", "Ctrl+Y", "Ctrl+Y"},
    GUT_CommandInfo{kCmdEditPreferences, "Edit", "Pre&ferences", "", ""},
    GUT_CommandInfo{kCmdDrawingMode, "View", "&Drawing Mode", "", "F6"},
    GUT_CommandInfo{kCmdSceneplanningMode, "View", "S&ceneplanning Mode", "F6", ""},
    GUT_CommandInfo{kCmdViewSceneList, "View", "Scene &List", "", ""},
    GUT_CommandInfo{kCmdSceneAdd, "Scene", "&Add Scene", "Ctrl+Shift+N", "Ctrl+Shift+N"},
    GUT_CommandInfo{kCmdSceneDelete, "Scene", "&Delete Scene", "", ""},
    GUT_CommandInfo{kCmdSceneRename, "Scene", "&Rename Scene", "F2", "F2"},
    GUT_CommandInfo{kCmdSceneToggleVisibility, "Scene", "&Hide Scene", "", ""},
    GUT_CommandInfo{kCmdHelpAbout, "Help", "&About Quilmoor Studio", "", ""},
};

} // namespace

std::span<const GUT_CommandInfo> GUT_AllCommands() {
    return kCommands;
}

const GUT_CommandInfo* GUT_FindCommand(uint32_t id) {
    const auto it =
        std::find_if(kCommands.begin(), kCommands.end(), [id](const auto& c) { return c.id == id; });
    return it == kCommands.end() ? nullptr : &*it;
}
