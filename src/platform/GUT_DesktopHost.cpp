#include "platform/GUT_DesktopHost.h"

#include "animationset/CAnimationSetObj.h"
#include "animationset/CNewAnimationDlg.h"
#include "animationset/CSketchrunDoc.h"
#include "animationset/DC_ChangeASPropertiesCommand.h"
#include "core/PR_Preferences.h"
#include "core/UT_CommandHistory.h"
#include "core/UT_Format.h"
#include "platform/CMainFrame.h"
#include "platform/GUT_Commands.h"
#include "platform/GUT_MessageHandler.h"
#include "platform/GUT_NewAnimationWnd.h"
#include "platform/GUT_ProgressWnd.h"
#include "platform/GUT_PropertiesWnd.h"
#include "platform/GUT_StringTable.h"
#include "platform/PR_PreferenceUI.h"
#include "platform/detail/GUT_Qt.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QLocale>
#include <QMessageBox>
#include <QPainter>
#include <QScreen>
#include <QSplashScreen>
#include <QTranslator>

// Commands of the open document.
class GUT_DesktopHost::DocumentCommands : public GUT_CommandTarget {
public:
    explicit DocumentCommands(GUT_DesktopHost& host) : host_(host) {}

    bool UpdateCommand(uint32_t id, State& state) override {
        CSketchrunDoc* document = Document();
        switch (id) {
        case kCmdFileClose:
        case kCmdFileSave:
        case kCmdFileSaveAs:
            state.enabled = document != nullptr;
            return true;
        case kCmdFileSaveGlobalLibrary:
            // Only while the template library is open, which this program does not show yet.
            state.enabled = false;
            return true;
        case kCmdFileProperties:
            state.enabled = document != nullptr;
            return true;
        case kCmdEditUndo:
        case kCmdEditRedo:
            UpdateHistoryCommand(id, state);
            return true;
        default:
            return false;
        }
    }

    bool OnCommand(uint32_t id) override {
        CSketchrunApp& app = *host_.app_;
        switch (id) {
        case kCmdFileClose:
            return app.CloseDocument(true);
        case kCmdFileSave:
            return app.OnFileSave();
        case kCmdFileSaveAs:
            return app.OnFileSaveAs();
        case kCmdFileProperties:
            return ChangeProperties();
        case kCmdEditUndo:
            Document()->Set()->History().Undo();
            return true;
        case kCmdEditRedo:
            Document()->Set()->History().Redo();
            return true;
        default:
            return false;
        }
    }

private:
    // "&Undo <name>\t<shortcut>" while there is something to undo, else "&Undo\t<shortcut>".
    void UpdateHistoryCommand(uint32_t id, State& state) const {
        const UT_CommandHistory* history = Document() ? &Document()->Set()->History() : nullptr;
        const bool undo = id == kCmdEditUndo;
        const UT_WString shortcut = host_.frame_->ShortcutText(id);
        state.enabled = history && (undo ? history->CanUndo() : history->CanRedo());
        if (state.enabled)
            state.text = undo ? history->UndoMenuText(shortcut) : history->RedoMenuText(shortcut);
        else
            state.text = (undo ? UT_WString(u"&Undo") : UT_WString(u"&Redo")) + u"\t" + shortcut;
    }

    // The Animation Properties sheet; a change runs through the history.
    bool ChangeProperties() {
        CAnimationSetObj& set = *Document()->Set();
        const GUT_PropertiesWnd::Values old{set.FrameRate(), set.CameraWidth(), set.CameraHeight()};
        GUT_PropertiesWnd window(host_.frame_.get(), old);
        if (window.exec() != QDialog::Accepted || window.Result() == old)
            return false;
        const GUT_PropertiesWnd::Values& values = window.Result();
        DC_ChangeASPropertiesCommand command(set, values.frameRate, values.cameraWidth, values.cameraHeight);
        return command.Run(DC_ChangeASPropertiesCommand::kName);
    }

    CSketchrunDoc* Document() const { return host_.app_ ? host_.app_->Document() : nullptr; }

    GUT_DesktopHost& host_;
};

// Commands of the application, with or without a document.
class GUT_DesktopHost::ApplicationCommands : public GUT_CommandTarget {
public:
    explicit ApplicationCommands(GUT_DesktopHost& host) : host_(host) {}

    bool UpdateCommand(uint32_t id, State& state) override {
        if (id >= kCmdRecentFileFirst && id <= kCmdRecentFileLast) {
            state.enabled = host_.app_ && id - kCmdRecentFileFirst < host_.app_->RecentFiles().size();
            return true;
        }
        switch (id) {
        case kCmdFileNew:
        case kCmdFileOpen:
        case kCmdAppExit:
        case kCmdEditPreferences:
        case kCmdHelpAbout:
            state.enabled = host_.app_ != nullptr;
            return true;
        default:
            return false;
        }
    }

    bool OnCommand(uint32_t id) override {
        CSketchrunApp& app = *host_.app_;
        if (id >= kCmdRecentFileFirst && id <= kCmdRecentFileLast)
            return app.OnRecentFile(id - kCmdRecentFileFirst);
        switch (id) {
        case kCmdFileNew:
            return app.OnFileNew();
        case kCmdFileOpen:
            return app.OnFileOpen();
        case kCmdAppExit:
            // The window asks about unsaved changes as it closes.
            return host_.frame_->close();
        case kCmdEditPreferences:
            host_.RunPreferences();
            return true;
        case kCmdHelpAbout:
            QMessageBox::about(
                host_.frame_.get(), gut::Tr("About Quilmoor Studio"),
                gut::Tr("Quilmoor Studio 2.0\n\nA workstation for 2D vector character animation."));
            return true;
        default:
            return false;
        }
    }

private:
    GUT_DesktopHost& host_;
};

GUT_DesktopHost::GUT_DesktopHost()
    : documentCommands_(std::make_unique<DocumentCommands>(*this)),
      applicationCommands_(std::make_unique<ApplicationCommands>(*this)) {
    PR_Preferences& preferences = PR_Preferences::Instance();
    // There is no Direct3D here: OpenGL is the default, and only a user who asked for
    // Direct3D hears that it is missing.
    if (!preferences.Store().Get(PR_Preferences::Info(PR_Preferences::kDirect3D).section,
                                 PR_Preferences::Info(PR_Preferences::kDirect3D).name))
        preferences.SetNumber(PR_Preferences::kDirect3D, 0);
    accelerators_.Load(preferences.Store());
}

GUT_DesktopHost::~GUT_DesktopHost() {
    if (frame_ && DC_Command::ModeCommandTarget() == frame_.get())
        DC_Command::SetModeCommandTarget(nullptr);
}

void GUT_DesktopHost::WriteSetting(const char* section, const std::string& key, const std::string& value) {
    UT_SettingsStore& store = PR_Preferences::Instance().Store();
    if (auto* file = dynamic_cast<UT_IniSettingsStore*>(&store))
        file->Reload();
    if (value.empty())
        store.Remove(section, key);
    else
        store.Set(section, key, value);
    store.Flush();
}

bool GUT_DesktopHost::RunNewAnimationDialog(CNewAnimationDlg& dialog) {
    GUT_NewAnimationWnd window(frame_.get(), dialog);
    return window.exec() == QDialog::Accepted;
}

std::optional<UT_FilePath> GUT_DesktopHost::RunOpenDialog(const UT_FilePath& startFolder) {
    QFileDialog dialog(frame_.get(), gut::Tr("Open Animation Set"), gut::PathToQt(startFolder));
    dialog.setObjectName(QStringLiteral("OpenDialog"));
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setFileMode(QFileDialog::ExistingFile);
    dialog.setNameFilters({gut::Tr("Quilmoor Studio Project") + QStringLiteral(" (*.qmp)"),
                           gut::Tr("All Files") + QStringLiteral(" (*)")});
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    return gut::PathFromQt(dialog.selectedFiles().front());
}

void GUT_DesktopHost::SetDocumentTitle(const UT_WString& title) {
    frame_->SetDocumentTitle(title);
}

void GUT_DesktopHost::AddRecentFile(const UT_FilePath&) {
    // The application keeps the list and hands all of it to StoreRecentFiles.
}

void GUT_DesktopHost::ShowDocument(bool open) {
    CSketchrunDoc* document = app_ ? app_->Document() : nullptr;
    if (open && document) {
        frame_->AttachViews(document->Set());
        frame_->ShowMenu(CMainFrame::kMenuDocument);
    } else {
        frame_->DetachViews();
        frame_->ShowMenu(CMainFrame::kMenuNoDocument);
    }
}

void GUT_DesktopHost::SetWaitCursor(bool on) {
    frame_->SetWaitCursor(on);
}

std::unique_ptr<UT_Progress> GUT_DesktopHost::CreateProgress(const UT_WString& title) {
    return std::make_unique<GUT_ProgressWnd>(frame_.get(), title);
}

int GUT_DesktopHost::ScreenDepth() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen ? screen->depth() : 0;
}

void GUT_DesktopHost::ShowSplash() {
    const std::optional<int64_t> enabled =
        PR_Preferences::Instance().Store().GetInt(kSettingsSection, kSplashKey);
    if (enabled && *enabled == 0)
        return;
    QPixmap picture(360, 200);
    picture.fill(QColor(0x20, 0x2a, 0x44));
    {
        QPainter painter(&picture);
        const QIcon icon = QApplication::windowIcon();
        if (!icon.isNull())
            icon.paint(&painter, QRect(20, 52, 96, 96));
        painter.setPen(Qt::white);
        QFont font = painter.font();
        font.setPointSize(18);
        font.setBold(true);
        painter.setFont(font);
        painter.drawText(QRect(130, 60, 220, 40), Qt::AlignLeft | Qt::AlignVCenter,
                         QStringLiteral("Quilmoor Studio"));
        font.setPointSize(10);
        font.setBold(false);
        painter.setFont(font);
        painter.drawText(QRect(130, 100, 220, 30), Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("2.0"));
    }
    splash_ = std::make_unique<QSplashScreen>(picture);
    splash_->show();
    QApplication::processEvents();
}

bool GUT_DesktopHost::CreateMainFrame() {
    frame_ = std::make_unique<CMainFrame>(accelerators_);
    frame_->SetCommandTargets(documentCommands_.get(), applicationCommands_.get());
    frame_->onClose = [this] { return OnClose(); };
    frame_->onDropFile = [this](const UT_FilePath& path) { OnDropFile(path); };
    frame_->isModified = [this] { return app_ && app_->Document() && app_->Document()->IsModified(); };
    // An undo or redo made in the other mode switches the window back to it.
    DC_Command::SetModeCommandTarget(frame_.get());
    if (app_)
        frame_->SetRecentFiles(app_->RecentFiles());
    // Message boxes from now on sit over the main window.
    if (auto* messages = dynamic_cast<GUT_MessageHandler*>(UT_MessageHandler::Current()))
        messages->SetParent(frame_.get());
    return true;
}

void GUT_DesktopHost::RemovePlazmicExport() {
    frame_->RemoveCommand(kCmdExportPlazmic);
}

void GUT_DesktopHost::ShowMainFrame() {
    const std::optional<std::string> placement =
        PR_Preferences::Instance().Store().Get(kSettingsSection, kPlacementKey);
    if (placement)
        frame_->RestorePlacement(*placement);
    frame_->show();
    if (splash_) {
        splash_->finish(frame_.get());
        splash_.reset();
    }
}

std::vector<UT_FilePath> GUT_DesktopHost::LoadRecentFiles() {
    const UT_SettingsStore& store = PR_Preferences::Instance().Store();
    std::vector<UT_FilePath> files;
    for (size_t i = 1; i <= CSketchrunApp::kRecentFileCount; ++i) {
        const std::optional<std::string> path =
            store.Get(kRecentSection, UT_ToUtf8(UT_Fmt(u"File%d", UT_Num(i))));
        if (path && !path->empty())
            files.push_back(UT_FilePath(std::filesystem::path(*path)));
    }
    return files;
}

void GUT_DesktopHost::StoreRecentFiles(const std::vector<UT_FilePath>& files) {
    UT_SettingsStore& store = PR_Preferences::Instance().Store();
    if (auto* file = dynamic_cast<UT_IniSettingsStore*>(&store))
        file->Reload();
    store.RemoveSection(kRecentSection);
    for (size_t i = 0; i < files.size() && i < CSketchrunApp::kRecentFileCount; ++i)
        store.Set(kRecentSection, UT_ToUtf8(UT_Fmt(u"File%d", UT_Num(i + 1))), files[i].Utf8());
    store.Flush();
    if (frame_)
        frame_->SetRecentFiles(files);
}

UT_FilePath GUT_DesktopHost::ProjectDir() {
    const UT_FilePath folder = UT_FilePath::FromWide(PR_Preferences::Instance().ProjectDir());
    if (!folder.IsEmpty() && folder.IsFolder())
        return folder;
    return gut::PathFromQt(QDir::homePath());
}

void GUT_DesktopHost::SetProjectDir(const UT_FilePath& folder) {
    PR_Preferences& preferences = PR_Preferences::Instance();
    preferences.SetText(PR_Preferences::kProjectDir, folder.Wide());
    const PR_Preferences::KeyInfo& info = PR_Preferences::Info(PR_Preferences::kProjectDir);
    WriteSetting(info.section, info.name, folder.Utf8());
}

bool GUT_DesktopHost::WantsDirect3D() {
    return PR_Preferences::Instance().Direct3D();
}

uint32_t GUT_DesktopHost::UserDefaultLanguage() {
    return CSketchrunApp::LanguageFromLocale(QLocale::system().name().toUtf8().constData());
}

bool GUT_DesktopHost::LoadLanguagePack(uint32_t languageId) {
    // "res40c.dll" on the original platform is "res40c.qm" here, beside the program or
    // in the shared data folder of an installation.
    QString name = QString::fromStdString(CSketchrunApp::LanguagePackName(languageId));
    name.replace(QStringLiteral(".dll"), QStringLiteral(".qm"));
    const QString programFolder = QCoreApplication::applicationDirPath();
    auto translator = std::make_unique<QTranslator>();
    for (const QString& folder :
         {programFolder, programFolder + QStringLiteral("/../share/qmstudio/translations")}) {
        if (translator->load(name, folder)) {
            QCoreApplication::installTranslator(translator.get());
            translator_ = std::move(translator);
            return true;
        }
    }
    return false;
}

void GUT_DesktopHost::RunPreferences() {
    PR_PreferenceUI sheet(frame_.get(), PR_Preferences::Instance(), accelerators_);
    if (sheet.exec() != QDialog::Accepted)
        return;
    frame_->ApplyAccelerators();
    frame_->RefreshViews();
}

bool GUT_DesktopHost::OnClose() {
    if (app_ && !app_->OnAppExit())
        return false;
    WriteSetting(kSettingsSection, kPlacementKey, frame_->SavedPlacement());
    return true;
}

void GUT_DesktopHost::OnDropFile(const UT_FilePath& path) {
    if (!app_)
        return;
    if (app_->Document() && !app_->Document()->SaveModified())
        return;
    app_->OpenDocumentFile(path);
    frame_->UpdateCommands();
}
