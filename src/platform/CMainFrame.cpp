#include "platform/CMainFrame.h"

#include "animationset/AS_CellIteratorObservable.h"
#include "animationset/AS_DopeSheetNotifProxy.h"
#include "animationset/CAnimationSetObj.h"
#include "core/PR_Preferences.h"
#include "platform/GUT_Commands.h"
#include "platform/GUT_ElementCommands.h"
#include "platform/GUT_PaletteWnd.h"
#include "platform/GUT_Playback.h"
#include "platform/GUT_PlaybackToolBar.h"
#include "platform/GUT_SceneListWnd.h"
#include "platform/GUT_SceneOverview.h"
#include "platform/GUT_StringTable.h"
#include "platform/GUT_TimelineWnd.h"
#include "platform/detail/GUT_Qt.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QDir>
#include <QDockWidget>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileInfo>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QSplitter>
#include <QStackedWidget>
#include <QTimer>
#include <QUrl>
#include <array>

namespace {

using Playback = CInteractivePlaybackControl;

constexpr uint32_t kSeparator = 0;
// Where the recent files list goes in a menu.
constexpr uint32_t kRecentFiles = 1;
// Where a submenu goes.
constexpr uint32_t kNewElementMenu = 2;
constexpr uint32_t kFrameRateMenu = 3;

struct MenuDefinition {
    const char* title;
    std::vector<uint32_t> items;
};

// The submenu of an item, or nullptr for a command.
const MenuDefinition* Submenu(uint32_t id) {
    static const MenuDefinition newElement{"&New Element",
                                           {kCmdElementNewDrawing, kCmdElementNewImage, kCmdElementNewSound,
                                            kCmdElementNewMedia, kSeparator, kCmdElementNewPeg,
                                            kCmdElementNewCamera}};
    static const MenuDefinition frameRate{"Frame &Rate",
                                          {Playback::kUseSetRate, kSeparator, Playback::kRate1,
                                           Playback::kRate2, Playback::kRate12, Playback::kRate24,
                                           Playback::kRate30}};
    switch (id) {
    case kNewElementMenu:
        return &newElement;
    case kFrameRateMenu:
        return &frameRate;
    default:
        return nullptr;
    }
}

// Menu 130, shown while no document is open.
const std::vector<MenuDefinition>& NoDocumentMenu() {
    static const std::vector<MenuDefinition> menu{
        {"&File", {kCmdFileNew, kCmdFileOpen, kSeparator, kRecentFiles, kSeparator, kCmdAppExit}},
        {"&Edit", {kCmdEditPreferences}},
        {"&Help", {kCmdHelpAbout}},
    };
    return menu;
}

// Menu 133, shown while a document is open.
const std::vector<MenuDefinition>& DocumentMenu() {
    static const std::vector<MenuDefinition> menu{
        {"&File",
         {kCmdFileNew, kCmdFileOpen, kCmdFileClose, kSeparator, kCmdFileSave, kCmdFileSaveAs,
          kCmdFileSaveGlobalLibrary, kSeparator, kCmdFileProperties, kSeparator, kRecentFiles, kSeparator,
          kCmdAppExit}},
        {"&Edit", {kCmdEditUndo, kCmdEditRedo, kSeparator, kCmdEditPreferences}},
        {"&View", {kCmdDrawingMode, kCmdSceneplanningMode, kSeparator, kCmdViewSceneList, kCmdViewPalettes}},
        {"&Scene", {kCmdSceneAdd, kCmdSceneDelete, kCmdSceneRename, kCmdSceneToggleVisibility}},
        {"E&lement",
         {kNewElementMenu, kSeparator, kCmdElementRename, kCmdElementNote, kCmdElementProperties, kSeparator,
          kCmdElementClone, kCmdElementDelete, kSeparator, kCmdElementParent, kCmdElementMoveUp,
          kCmdElementMoveDown}},
        {"E&xposure",
         {kCmdCellEdit, kSeparator, kCmdCellClear, kCmdCellRemove, kCmdCellInsert, kSeparator, kCmdCellOnes,
          kCmdCellTwos, kCmdCellThrees, kSeparator, kCmdCellExtendRun, kCmdCellShortenRun}},
        {"&Palette",
         {kCmdPaletteNew, kCmdPaletteDuplicate, kCmdPaletteRename, kCmdPaletteDelete, kSeparator,
          kCmdColourNew, kCmdColourEdit, kCmdColourRename, kCmdColourDelete, kCmdColourMoveBack,
          kCmdColourMoveForward, kSeparator, kCmdFlavourTint, kCmdFlavourRename, kCmdFlavourDelete}},
        {"Pl&ay",
         {Playback::kPlay, Playback::kStop, kSeparator, Playback::kFirstFrame, Playback::kPrevFrame,
          Playback::kNextFrame, Playback::kLastFrame, kSeparator, Playback::kToggleLoop, kCmdPlayRangeMode,
          kCmdPlaySetRange, kCmdPlayClearRange, kSeparator, kFrameRateMenu}},
        {"&Help", {kCmdHelpAbout}},
    };
    return menu;
}

// The menus of the timeline: of the row headers, and of the cells.
const std::vector<uint32_t>& HeaderMenu() {
    static const std::vector<uint32_t> items{kCmdElementRename,   kCmdElementNote,   kCmdElementProperties,
                                             kSeparator,          kCmdElementClone,  kCmdElementDelete,
                                             kSeparator,          kCmdElementParent, kCmdElementMoveUp,
                                             kCmdElementMoveDown, kSeparator,        kNewElementMenu};
    return items;
}

const std::vector<uint32_t>& CellMenu() {
    static const std::vector<uint32_t> items{
        kCmdCellEdit,       kSeparator,   kCmdCellClear,   kCmdCellRemove, kCmdCellInsert,
        kSeparator,         kCmdCellOnes, kCmdCellTwos,    kCmdCellThrees, kCmdCellExtendRun,
        kCmdCellShortenRun, kSeparator,   kCmdPlaySetRange};
    return items;
}

QString ProgramTitle() {
    return gut::Tr(UT_ToUtf8(GUT_LoadString(kStrProgramTitle)).c_str());
}

// "~/films/Reel/Reel.qmp" for a file under the home folder.
QString ShortPath(const UT_FilePath& path) {
    const QString text = QDir::toNativeSeparators(gut::PathToQt(path));
    const QString home = QDir::toNativeSeparators(QDir::homePath());
    if (text.startsWith(home + QDir::separator()))
        return QStringLiteral("~") + text.mid(home.size());
    return text;
}

} // namespace

CMainFrame::CMainFrame(GUT_AcceleratorTable& accelerators) : accelerators_(accelerators) {
    setObjectName(QStringLiteral("MainFrame"));
    setAcceptDrops(true);
    resize(1024, 700);

    stack_ = new QStackedWidget(this);
    auto* start = new QLabel(stack_);
    start->setAlignment(Qt::AlignCenter);
    start->setWordWrap(true);
    start->setText(gut::Tr("Create an animation set with File > New, or open one with File > Open or by "
                           "dropping its project file here."));
    startPage_ = start;
    // The stage above the timeline.
    documentView_ = new QSplitter(Qt::Vertical, stack_);
    overview_ = new GUT_SceneOverview(documentView_);
    timeline_ = new GUT_TimelineWnd(documentView_);
    documentView_->addWidget(overview_);
    documentView_->addWidget(timeline_);
    documentView_->setStretchFactor(0, 3);
    documentView_->setStretchFactor(1, 2);
    documentView_->setChildrenCollapsible(false);
    stack_->addWidget(startPage_);
    stack_->addWidget(documentView_);
    setCentralWidget(stack_);
    elements_ = std::make_unique<GUT_ElementCommands>(this);
    timeline_->SetElementCommands(elements_.get());
    timeline_->onContextMenu = [this](const QPoint& where, bool onHeader) {
        const std::unique_ptr<QMenu> menu(MakeContextMenu(onHeader));
        menu->exec(where);
    };

    sceneList_ = new GUT_SceneListWnd;
    sceneDock_ = new QDockWidget(gut::Tr("Scenes"), this);
    sceneDock_->setObjectName(QStringLiteral("SceneListDock"));
    sceneDock_->setWidget(sceneList_);
    addDockWidget(Qt::LeftDockWidgetArea, sceneDock_);
    sceneDock_->hide();
    connect(sceneDock_, &QDockWidget::visibilityChanged, this, &CMainFrame::UpdateCommands);

    palettes_ = new GUT_PaletteWnd;
    palettes_->onChanged = [this] { ScheduleUpdate(); };
    paletteDock_ = new QDockWidget(gut::Tr("Palettes"), this);
    paletteDock_->setObjectName(QStringLiteral("PaletteDock"));
    paletteDock_->setWidget(palettes_);
    addDockWidget(Qt::RightDockWidgetArea, paletteDock_);
    paletteDock_->hide();
    connect(paletteDock_, &QDockWidget::visibilityChanged, this, &CMainFrame::UpdateCommands);

    playbackBar_ = new GUT_PlaybackToolBar(this);
    playbackBar_->onChanged = [this] { ScheduleUpdate(); };
    addToolBar(Qt::TopToolBarArea, playbackBar_);
    playbackBar_->hide();
    playback_ = std::make_unique<GUT_Playback>(*playbackBar_, PR_Preferences::Instance().Store());
    playback_->onPlaying = [this](bool playing) {
        timeline_->SetPlaying(playing);
        UpdateCommands();
    };
    playback_->onIdleWork = [this] { UpdateCommands(); };

    MakeActions();
    const auto actionOf = [this](uint32_t id) { return Action(id); };
    playbackBar_->SetActions(actionOf);
    palettes_->SetActions(actionOf);
    ShowMenu(kMenuNoDocument);
    UpdateTitle();
    AS_CellIteratorObservable::Instance().Attach(this);
}

CMainFrame::~CMainFrame() {
    AS_CellIteratorObservable::Instance().Detach(this);
    // Playback ends before the views it moves go.
    playback_.reset();
    if (set_)
        set_->NotifProxy().Detach(this);
    timeline_->SetSet(nullptr);
    sceneList_->SetSet(nullptr);
    palettes_->SetSet(nullptr);
}

void CMainFrame::MakeActions() {
    for (const GUT_CommandInfo& command : GUT_AllCommands()) {
        auto* action = new QAction(gut::Tr(command.text), this);
        action->setData(command.id);
        connect(action, &QAction::triggered, this, [this, id = command.id] { ExecuteCommand(id); });
        actions_[command.id] = action;
        if (GUT_IsTimelineCommand(command.id)) {
            // Their keys work while the timeline has the focus.
            action->setShortcutContext(Qt::WidgetWithChildrenShortcut);
            timeline_->addAction(action);
        }
    }
    for (uint32_t id = kCmdRecentFileFirst; id <= kCmdRecentFileLast; ++id) {
        auto* action = new QAction(this);
        action->setData(id);
        connect(action, &QAction::triggered, this, [this, id] { ExecuteCommand(id); });
        recentActions_.push_back(action);
    }
    ApplyAccelerators();
}

void CMainFrame::SetCommandTargets(GUT_CommandTarget* document, GUT_CommandTarget* application) {
    document_ = document;
    application_ = application;
    UpdateCommands();
}

std::vector<GUT_CommandTarget*> CMainFrame::Targets() {
    std::vector<GUT_CommandTarget*> targets = views_;
    for (GUT_CommandTarget* target : {document_, static_cast<GUT_CommandTarget*>(this), application_})
        if (target)
            targets.push_back(target);
    return targets;
}

bool CMainFrame::ExecuteCommand(uint32_t id) {
    if (removed_.count(id))
        return false;
    for (GUT_CommandTarget* target : Targets()) {
        State state;
        if (!target->UpdateCommand(id, state))
            continue;
        const bool done = state.enabled && target->OnCommand(id);
        UpdateCommands();
        return done;
    }
    return false;
}

void CMainFrame::UpdateCommands() {
    const std::vector<GUT_CommandTarget*> targets = Targets();
    auto update = [&](uint32_t id, QAction* action, const QString& defaultText) {
        State state;
        bool handled = false;
        for (GUT_CommandTarget* target : targets)
            if ((handled = target->UpdateCommand(id, state)))
                break;
        action->setEnabled(handled && state.enabled);
        action->setCheckable(state.checkable);
        action->setChecked(state.checkable && state.checked);
        action->setText(state.text ? gut::ToQt(*state.text) : defaultText);
    };
    for (const auto& [id, action] : actions_)
        update(id, action, gut::Tr(GUT_FindCommand(id)->text));
    for (QAction* action : recentActions_)
        update(action->data().toUInt(), action, action->text());
    setWindowModified(set_ && isModified && isModified());
}

QAction* CMainFrame::Action(uint32_t id) const {
    const auto it = actions_.find(id);
    if (it != actions_.end())
        return it->second;
    if (id >= kCmdRecentFileFirst && id <= kCmdRecentFileLast)
        return recentActions_[id - kCmdRecentFileFirst];
    return nullptr;
}

QMenu* CMainFrame::MakeRecentMenu(QWidget* parent) {
    auto* menu = new QMenu(gut::Tr("Recent Files"), parent);
    for (size_t i = 0; i < recentFiles_.size() && i < recentActions_.size(); ++i)
        menu->addAction(recentActions_[i]);
    menu->setEnabled(!recentFiles_.empty());
    return menu;
}

void CMainFrame::AddMenuItems(QMenu* popup, const std::vector<uint32_t>& items) {
    connect(popup, &QMenu::aboutToShow, this, &CMainFrame::UpdateCommands);
    bool separatorDue = false;
    for (const uint32_t id : items) {
        if (id == kSeparator) {
            separatorDue = !popup->isEmpty();
            continue;
        }
        if (removed_.count(id))
            continue;
        if (separatorDue)
            popup->addSeparator();
        separatorDue = false;
        if (id == kRecentFiles) {
            popup->addMenu(MakeRecentMenu(popup));
        } else if (const MenuDefinition* submenu = Submenu(id)) {
            AddMenuItems(popup->addMenu(gut::Tr(submenu->title)), submenu->items);
        } else {
            popup->addAction(actions_.at(id));
        }
    }
}

void CMainFrame::ShowMenu(MenuId menu) {
    menu_ = menu;
    auto* bar = new QMenuBar(this);
    for (const MenuDefinition& definition : menu == kMenuDocument ? DocumentMenu() : NoDocumentMenu()) {
        QMenu* popup = bar->addMenu(gut::Tr(definition.title));
        AddMenuItems(popup, definition.items);
        if (popup->isEmpty())
            bar->removeAction(popup->menuAction());
    }
    // The old bar goes with its menus; the actions stay with the window.
    setMenuBar(bar);
    UpdateCommands();
}

QMenu* CMainFrame::MakeContextMenu(bool onHeader) {
    auto* menu = new QMenu(this);
    menu->setObjectName(onHeader ? QStringLiteral("ElementMenu") : QStringLiteral("CellMenu"));
    AddMenuItems(menu, onHeader ? HeaderMenu() : CellMenu());
    UpdateCommands();
    return menu;
}

void CMainFrame::RemoveCommand(uint32_t id) {
    removed_.insert(id);
    ShowMenu(menu_);
}

void CMainFrame::SetRecentFiles(const std::vector<UT_FilePath>& files) {
    recentFiles_ = files;
    for (size_t i = 0; i < recentActions_.size(); ++i) {
        QAction* action = recentActions_[i];
        if (i < files.size()) {
            action->setText(QStringLiteral("&%1 %2").arg(i + 1).arg(ShortPath(files[i])));
            action->setStatusTip(gut::PathToQt(files[i]));
        } else {
            action->setText(QString());
        }
    }
    ShowMenu(menu_);
}

void CMainFrame::SetDocumentTitle(const UT_WString& name) {
    documentName_ = name;
    UpdateTitle();
}

void CMainFrame::UpdateTitle() {
    if (documentName_.empty())
        setWindowTitle(ProgramTitle());
    else
        setWindowTitle(gut::ToQt(documentName_) + QStringLiteral("[*] - ") + ProgramTitle());
}

void CMainFrame::SetWaitCursor(bool on) {
    if (on) {
        if (waitDepth_++ == 0)
            QApplication::setOverrideCursor(Qt::WaitCursor);
    } else if (waitDepth_ > 0 && --waitDepth_ == 0) {
        QApplication::restoreOverrideCursor();
    }
}

void CMainFrame::ApplyAccelerators() {
    const auto mode = sceneplanning_ ? GUT_AcceleratorTable::kSceneplanning : GUT_AcceleratorTable::kDrawing;
    for (const auto& [id, action] : actions_)
        action->setShortcut(QKeySequence::fromString(QString::fromStdString(accelerators_.Key(mode, id)),
                                                     QKeySequence::PortableText));
    UpdateCommands();
}

UT_WString CMainFrame::ShortcutText(uint32_t id) const {
    const QAction* action = Action(id);
    return action ? gut::FromQt(action->shortcut().toString(QKeySequence::NativeText)) : UT_WString();
}

void CMainFrame::SetSceneplanningMode(bool on) {
    sceneplanning_ = on;
    if (set_)
        set_->SetSceneplanningMode(on);
    overview_->SetSceneplanningMode(on);
    // The current cell stands in the other order now: every view of it hears so.
    timeline_->Reload();
    if (set_)
        AS_CellIteratorObservable::Instance().NotifyMove(this);
    ApplyAccelerators();
}

void CMainFrame::AttachViews(CAnimationSetObj* set) {
    playback_->SetSet(nullptr);
    if (set_)
        set_->NotifProxy().Detach(this);
    set_ = set;
    set_->SetSceneplanningMode(sceneplanning_);
    set_->NotifProxy().Attach(this);
    overview_->SetSet(set);
    overview_->SetSceneplanningMode(sceneplanning_);
    timeline_->SetSet(set);
    elements_->SetSet(set);
    stack_->setCurrentWidget(documentView_);
    sceneList_->SetSet(set);
    sceneDock_->show();
    palettes_->SetSet(set);
    paletteDock_->show();
    playback_->SetSet(set);
    playbackBar_->show();
    views_ = {sceneList_, timeline_, elements_.get(), palettes_, playback_.get()};
    UpdateCommands();
}

void CMainFrame::DetachViews() {
    // Playback ends before the set it plays goes.
    playback_->SetSet(nullptr);
    playbackBar_->hide();
    if (set_)
        set_->NotifProxy().Detach(this);
    set_ = nullptr;
    views_.clear();
    timeline_->SetSet(nullptr);
    elements_->SetSet(nullptr);
    sceneList_->SetSet(nullptr);
    sceneDock_->hide();
    palettes_->SetSet(nullptr);
    paletteDock_->hide();
    overview_->SetSet(nullptr);
    stack_->setCurrentWidget(startPage_);
    documentName_.clear();
    setWindowModified(false);
    UpdateTitle();
    UpdateCommands();
}

void CMainFrame::RefreshViews() {
    overview_->update();
    timeline_->Reload();
}

bool CMainFrame::UpdateCommand(uint32_t id, State& state) {
    switch (id) {
    case kCmdViewSceneList:
    case kCmdViewPalettes:
        state.enabled = set_ != nullptr;
        state.checkable = true;
        state.checked = !(id == kCmdViewSceneList ? sceneDock_ : paletteDock_)->isHidden();
        return true;
    case kCmdDrawingMode:
    case kCmdSceneplanningMode:
        state.enabled = set_ != nullptr;
        state.checkable = true;
        state.checked = (id == kCmdSceneplanningMode) == sceneplanning_;
        return true;
    default:
        return false;
    }
}

bool CMainFrame::OnCommand(uint32_t id) {
    switch (id) {
    case kCmdDrawingMode:
        SetSceneplanningMode(false);
        return true;
    case kCmdSceneplanningMode:
        SetSceneplanningMode(true);
        return true;
    case kCmdViewSceneList:
        sceneDock_->setVisible(sceneDock_->isHidden());
        return true;
    case kCmdViewPalettes:
        paletteDock_->setVisible(paletteDock_->isHidden());
        return true;
    default:
        return false;
    }
}

void CMainFrame::DopeSheetChanged(const void*, const AS_DopeSheetUpdateData&) {
    overview_->update();
    ScheduleUpdate();
}

void CMainFrame::ScheduleUpdate() {
    if (!updatePending_) {
        updatePending_ = true;
        QTimer::singleShot(0, this, [this] {
            updatePending_ = false;
            UpdateCommands();
        });
    }
}

void CMainFrame::CellIteratorChanged(const void*, const AS_CellIteratorObserverData& data) {
    // Playback tells when it starts and ends; its frames change no command.
    if (data.code != AS_CellIteratorObserverData::kPlaybackFrame)
        ScheduleUpdate();
}

void CMainFrame::DopeSheetObservableGone(const void*) {
    set_ = nullptr;
    views_.clear();
    overview_->SetSet(nullptr);
}

void CMainFrame::OnModeCommand(CAnimationSetObj& set, uint32_t commandId) {
    if (&set == set_)
        SetSceneplanningMode(commandId == DC_Command::kSceneplanningModeCommand);
    else
        set.SetSceneplanningMode(commandId == DC_Command::kSceneplanningModeCommand);
}

std::string CMainFrame::SavedPlacement() const {
    return saveGeometry().toBase64().toStdString();
}

void CMainFrame::RestorePlacement(const std::string& text) {
    if (!text.empty())
        restoreGeometry(QByteArray::fromBase64(QByteArray::fromStdString(text)));
}

std::optional<UT_FilePath> CMainFrame::ProjectOfDrop(const std::vector<UT_FilePath>& paths) {
    for (const UT_FilePath& path : paths) {
        if (path.IsFile() &&
            QString::fromStdU16String(path.Extension()).compare(QStringLiteral("qmp"), Qt::CaseInsensitive) ==
                0)
            return path;
        if (path.IsFolder()) {
            const UT_FilePath inside = path.Append(path.FileName() + u".qmp");
            if (inside.IsFile())
                return inside;
        }
    }
    return std::nullopt;
}

namespace {

std::vector<UT_FilePath> LocalFiles(const QMimeData* data) {
    std::vector<UT_FilePath> paths;
    if (data && data->hasUrls())
        for (const QUrl& url : data->urls())
            if (url.isLocalFile())
                paths.push_back(gut::PathFromQt(url.toLocalFile()));
    return paths;
}

} // namespace

void CMainFrame::dragEnterEvent(QDragEnterEvent* event) {
    if (ProjectOfDrop(LocalFiles(event->mimeData())))
        event->acceptProposedAction();
}

void CMainFrame::dropEvent(QDropEvent* event) {
    const std::optional<UT_FilePath> project = ProjectOfDrop(LocalFiles(event->mimeData()));
    if (!project)
        return;
    event->acceptProposedAction();
    if (onDropFile)
        onDropFile(*project);
}

void CMainFrame::closeEvent(QCloseEvent* event) {
    if (onClose && !onClose()) {
        event->ignore();
        return;
    }
    event->accept();
}
