#include "platform/GUT_Commands.h"

#include "render/CInteractivePlaybackControl.h"

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
    GUT_CommandInfo{kCmdViewPalettes, "View", "&Palettes", "", ""},
    GUT_CommandInfo{kCmdSceneAdd, "Scene", "&Add Scene", "Ctrl+Shift+N", "Ctrl+Shift+N"},
    GUT_CommandInfo{kCmdSceneDelete, "Scene", "&Delete Scene", "", ""},
    GUT_CommandInfo{kCmdSceneRename, "Scene", "&Rename Scene", "F2", "F2"},
    GUT_CommandInfo{kCmdSceneToggleVisibility, "Scene", "&Hide Scene", "", ""},
    GUT_CommandInfo{kCmdElementNewDrawing, "Element", "&Drawing", "Ctrl+Shift+D", "Ctrl+Shift+D"},
    GUT_CommandInfo{kCmdElementNewImage, "Element", "&Image", "", ""},
    GUT_CommandInfo{kCmdElementNewSound, "Element", "&Sound", "", ""},
    GUT_CommandInfo{kCmdElementNewPeg, "Element", "&Peg", "Ctrl+Shift+P", "Ctrl+Shift+P"},
    GUT_CommandInfo{kCmdElementNewCamera, "Element", "&Camera", "", ""},
    GUT_CommandInfo{kCmdElementNewMedia, "Element", "&Media", "", ""},
    GUT_CommandInfo{kCmdElementRename, "Element", "&Rename Element", "Ctrl+F2", "Ctrl+F2"},
    GUT_CommandInfo{kCmdElementNote, "Element", "&Note", "", ""},
    GUT_CommandInfo{kCmdElementProperties, "Element", "&Properties", "Alt+Return", "Alt+Return"},
    GUT_CommandInfo{kCmdElementClone, "Element", "&Clone Element", "", ""},
    GUT_CommandInfo{kCmdElementDelete, "Element", "&Delete Element", "", ""},
    GUT_CommandInfo{kCmdElementParent, "Element", "Change P&arent", "", ""},
    GUT_CommandInfo{kCmdElementMoveUp, "Element", "Move &Up", "Alt+Up", "Alt+Up"},
    GUT_CommandInfo{kCmdElementMoveDown, "Element", "Move Do&wn", "Alt+Down", "Alt+Down"},
    GUT_CommandInfo{kCmdCellEdit, "Exposure", "&Edit Cell", "", ""},
    GUT_CommandInfo{kCmdCellClear, "Exposure", "&Clear Cells", "Del", "Del"},
    GUT_CommandInfo{kCmdCellRemove, "Exposure", "&Remove Cells", "Ctrl+Del", "Ctrl+Del"},
    GUT_CommandInfo{kCmdCellInsert, "Exposure", "&Insert Blank Cells", "Ins", "Ins"},
    GUT_CommandInfo{kCmdCellOnes, "Exposure", "Hold on &Ones", "Ctrl+1", "Ctrl+1"},
    GUT_CommandInfo{kCmdCellTwos, "Exposure", "Hold on &Twos", "Ctrl+2", "Ctrl+2"},
    GUT_CommandInfo{kCmdCellThrees, "Exposure", "Hold on T&hrees", "Ctrl+3", "Ctrl+3"},
    GUT_CommandInfo{kCmdCellExtendRun, "Exposure", "E&xtend Run", "Ctrl+]", "Ctrl+]"},
    GUT_CommandInfo{kCmdCellShortenRun, "Exposure", "&Shorten Run", "Ctrl+[", "Ctrl+["},
    GUT_CommandInfo{kCmdPaletteNew, "Palette", "&New Palette", "", ""},
    GUT_CommandInfo{kCmdPaletteDuplicate, "Palette", "D&uplicate Palette", "", ""},
    GUT_CommandInfo{kCmdPaletteRename, "Palette", "&Rename Palette", "", ""},
    GUT_CommandInfo{kCmdPaletteDelete, "Palette", "&Delete Palette", "", ""},
    GUT_CommandInfo{kCmdColourNew, "Palette", "New &Color", "", ""},
    GUT_CommandInfo{kCmdColourEdit, "Palette", "&Edit Color", "", ""},
    GUT_CommandInfo{kCmdColourRename, "Palette", "Rena&me Color", "", ""},
    GUT_CommandInfo{kCmdColourDelete, "Palette", "Dele&te Color", "", ""},
    GUT_CommandInfo{kCmdColourMoveBack, "Palette", "Move Color &Back", "", ""},
    GUT_CommandInfo{kCmdColourMoveForward, "Palette", "Move Color For&ward", "", ""},
    GUT_CommandInfo{kCmdFlavourTint, "Palette", "T&int Flavor", "", ""},
    GUT_CommandInfo{kCmdFlavourRename, "Palette", "Rename &Flavor", "", ""},
    GUT_CommandInfo{kCmdFlavourDelete, "Palette", "Delete F&lavor", "", ""},
    GUT_CommandInfo{CInteractivePlaybackControl::kPlay, "Play", "&Play", "Ctrl+Return", "Ctrl+Return"},
    GUT_CommandInfo{CInteractivePlaybackControl::kStop, "Play", "&Stop", "Ctrl+Shift+Return",
                    "Ctrl+Shift+Return"},
    GUT_CommandInfo{CInteractivePlaybackControl::kFirstFrame, "Play", "&First Frame", "Ctrl+Home",
                    "Ctrl+Home"},
    GUT_CommandInfo{CInteractivePlaybackControl::kPrevFrame, "Play", "P&revious Frame", "Ctrl+Left",
                    "Ctrl+Left"},
    GUT_CommandInfo{CInteractivePlaybackControl::kNextFrame, "Play", "&Next Frame", "Ctrl+Right",
                    "Ctrl+Right"},
    GUT_CommandInfo{CInteractivePlaybackControl::kLastFrame, "Play", "&Last Frame", "Ctrl+End", "Ctrl+End"},
    GUT_CommandInfo{CInteractivePlaybackControl::kToggleLoop, "Play", "L&oop", "", ""},
    GUT_CommandInfo{kCmdPlayRangeMode, "Play", "Play the Frame R&ange", "", ""},
    GUT_CommandInfo{kCmdPlaySetRange, "Play", "Set Frame Range to the Se&lection", "", ""},
    GUT_CommandInfo{kCmdPlayClearRange, "Play", "&Clear the Frame Range", "", ""},
    GUT_CommandInfo{CInteractivePlaybackControl::kUseSetRate, "Play", "&Animation Set's Rate", "", ""},
    GUT_CommandInfo{CInteractivePlaybackControl::kRate1, "Play", "&1 Frame a Second", "", ""},
    GUT_CommandInfo{CInteractivePlaybackControl::kRate2, "Play", "&2 Frames a Second", "", ""},
    GUT_CommandInfo{CInteractivePlaybackControl::kRate12, "Play", "1&2 Frames a Second", "", ""},
    GUT_CommandInfo{CInteractivePlaybackControl::kRate24, "Play", "2&4 Frames a Second", "", ""},
    GUT_CommandInfo{CInteractivePlaybackControl::kRate30, "Play", "&30 Frames a Second", "", ""},
    GUT_CommandInfo{kCmdHelpAbout, "Help", "&About Quilmoor Studio", "", ""},
};

} // namespace

std::span<const GUT_CommandInfo> GUT_AllCommands() {
    return kCommands;
}

bool GUT_IsTimelineCommand(uint32_t id) {
    return id >= kCmdCellEdit && id <= kCmdCellShortenRun;
}

const GUT_CommandInfo* GUT_FindCommand(uint32_t id) {
    const auto it =
        std::find_if(kCommands.begin(), kCommands.end(), [id](const auto& c) { return c.id == id; });
    return it == kCommands.end() ? nullptr : &*it;
}
