#pragma once

#include "animationset/AS_CellIteratorObservable.h"
#include "animationset/AS_DopeSheetObservable.h"
#include "animationset/DC_Command.h"
#include "core/UT_FilePath.h"
#include "platform/GUT_AcceleratorTable.h"
#include "platform/GUT_CommandTarget.h"

#include <QMainWindow>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

class CAnimationSetObj;
class GUT_ElementCommands;
class GUT_PaletteWnd;
class GUT_Playback;
class GUT_PlaybackToolBar;
class GUT_SceneListWnd;
class GUT_SceneOverview;
class GUT_TimelineWnd;
class QAction;
class QDockWidget;
class QMenu;
class QSplitter;
class QStackedWidget;

// The main window: the menu bar of the state (no document or a document), the commands
// with their shortcuts, the mode, the title, the views of the open document, and the
// project files dropped on it. The views of a document are the stage above the timeline,
// the scene list and the palettes beside them, and the playback toolbar. Commands go to
// the views, the document, the window itself and the application, in this order. The
// window follows the changes of the open set, and switches the mode when an undo or redo
// goes back to the other one.
class CMainFrame : public QMainWindow,
                   public GUT_CommandTarget,
                   public AS_DopeSheetObserverInterface,
                   public AS_CellIteratorObserverInterface,
                   public DC_ModeCommandTarget {
public:
    enum MenuId { kMenuNoDocument = 130, kMenuDocument = 133 };

    explicit CMainFrame(GUT_AcceleratorTable& accelerators);
    ~CMainFrame() override;

    // The targets after the views and before and after the window itself.
    void SetCommandTargets(GUT_CommandTarget* document, GUT_CommandTarget* application);

    // Runs a command through the targets; false when none handled it or it is disabled.
    bool ExecuteCommand(uint32_t id);
    // Asks the targets for the state of every command and shows it in the actions.
    void UpdateCommands();
    // The action of a command, or nullptr for one that no menu shows.
    QAction* Action(uint32_t id) const;
    // The shortcut of a command as the menus show it ("Ctrl+Z"), or empty.
    UT_WString ShortcutText(uint32_t id) const;

    void ShowMenu(MenuId menu);
    MenuId CurrentMenu() const { return menu_; }
    // Takes a command out of every menu for good.
    void RemoveCommand(uint32_t id);

    void SetRecentFiles(const std::vector<UT_FilePath>& files);
    // The document's name, or empty for none; the title marks a modified document.
    void SetDocumentTitle(const UT_WString& name);
    void SetWaitCursor(bool on);

    bool IsSceneplanningMode() const { return sceneplanning_; }
    // Puts the shortcuts of the mode in force, rearranges the views and tells the set.
    void SetSceneplanningMode(bool on);
    // After the shortcuts changed in the preferences.
    void ApplyAccelerators();

    // The views of a set, and their removal.
    void AttachViews(CAnimationSetObj* set);
    void DetachViews();
    CAnimationSetObj* AttachedSet() const { return set_; }
    // Redraws the views after a change of the set or of the preferences.
    void RefreshViews();
    GUT_SceneOverview* Overview() const { return overview_; }
    GUT_TimelineWnd* Timeline() const { return timeline_; }
    GUT_ElementCommands* Elements() const { return elements_.get(); }
    GUT_SceneListWnd* SceneList() const { return sceneList_; }
    QDockWidget* SceneListDock() const { return sceneDock_; }
    GUT_PaletteWnd* Palettes() const { return palettes_; }
    QDockWidget* PaletteDock() const { return paletteDock_; }
    GUT_PlaybackToolBar* PlaybackBar() const { return playbackBar_; }
    GUT_Playback* Playback() const { return playback_.get(); }

    // The menu of the timeline's row headers (the element's commands) or of its cells
    // (the cell commands, then the element's), up to date. The caller owns it.
    QMenu* MakeContextMenu(bool onHeader);

    // The window's size and place as text for the settings, and back.
    std::string SavedPlacement() const;
    void RestorePlacement(const std::string& text);

    // What happens with a project file dropped on the window.
    std::function<void(const UT_FilePath&)> onDropFile;
    // Asked before the window closes; false keeps it open.
    std::function<bool()> onClose;
    // Whether the open document has unsaved changes, for the title.
    std::function<bool()> isModified;

    // The project file a drop carries: a ".qmp" file, or a folder holding one of its name.
    static std::optional<UT_FilePath> ProjectOfDrop(const std::vector<UT_FilePath>& paths);

    bool UpdateCommand(uint32_t id, State& state) override;
    bool OnCommand(uint32_t id) override;
    void DopeSheetChanged(const void* sender, const AS_DopeSheetUpdateData& data) override;
    void DopeSheetObservableGone(const void* observable) override;
    // A move of the current cell changes what the cell commands and their keys can do.
    void CellIteratorChanged(const void* sender, const AS_CellIteratorObserverData& data) override;
    void OnModeCommand(CAnimationSetObj& set, uint32_t commandId) override;

protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void MakeActions();
    QMenu* MakeRecentMenu(QWidget* parent);
    void AddMenuItems(QMenu* popup, const std::vector<uint32_t>& items);
    void UpdateTitle();
    // The menus follow a change once it is complete: a command tells of its change
    // before the history records it.
    void ScheduleUpdate();
    std::vector<GUT_CommandTarget*> Targets();

    GUT_AcceleratorTable& accelerators_;
    std::map<uint32_t, QAction*> actions_;
    std::vector<QAction*> recentActions_;
    std::vector<UT_FilePath> recentFiles_;
    std::set<uint32_t> removed_;
    // The views asked first, while a document is open.
    std::vector<GUT_CommandTarget*> views_;
    GUT_CommandTarget* document_ = nullptr;
    GUT_CommandTarget* application_ = nullptr;
    MenuId menu_ = kMenuNoDocument;
    QStackedWidget* stack_ = nullptr;
    QWidget* startPage_ = nullptr;
    QSplitter* documentView_ = nullptr;
    GUT_SceneOverview* overview_ = nullptr;
    GUT_TimelineWnd* timeline_ = nullptr;
    std::unique_ptr<GUT_ElementCommands> elements_;
    GUT_SceneListWnd* sceneList_ = nullptr;
    QDockWidget* sceneDock_ = nullptr;
    GUT_PaletteWnd* palettes_ = nullptr;
    QDockWidget* paletteDock_ = nullptr;
    GUT_PlaybackToolBar* playbackBar_ = nullptr;
    std::unique_ptr<GUT_Playback> playback_;
    CAnimationSetObj* set_ = nullptr;
    UT_WString documentName_;
    bool sceneplanning_ = false;
    int waitDepth_ = 0;
    bool updatePending_ = false;
};
