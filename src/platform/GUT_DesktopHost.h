#pragma once

#include "animationset/CSketchrunApp.h"
#include "platform/GUT_AcceleratorTable.h"

#include <memory>

class CMainFrame;
class QSplashScreen;
class QTranslator;

// The desktop under the application and its documents: the main window and its
// commands, the dialogs, the settings of the user (the preferences' store) and the
// language pack.
class GUT_DesktopHost : public CSketchrunAppHost {
public:
    static constexpr const char* kRecentSection = "Recent Files List";
    static constexpr const char* kRecentKey = "File%d";
    static constexpr const char* kSettingsSection = "Settings";
    static constexpr const char* kPlacementKey = "WindowPlacement";
    static constexpr const char* kSplashKey = "Splash";

    GUT_DesktopHost();
    ~GUT_DesktopHost() override;
    GUT_DesktopHost(const GUT_DesktopHost&) = delete;
    GUT_DesktopHost& operator=(const GUT_DesktopHost&) = delete;

    // The application whose commands the main window runs; set before InitInstance.
    void SetApplication(CSketchrunApp* app) { app_ = app; }
    CMainFrame* Frame() const { return frame_.get(); }
    GUT_AcceleratorTable& Accelerators() { return accelerators_; }

    // Shows the preferences sheet and puts what it changed in force.
    void RunPreferences();

    bool RunNewAnimationDialog(CNewAnimationDlg& dialog) override;
    std::optional<UT_FilePath> RunOpenDialog(const UT_FilePath& startFolder) override;
    void SetDocumentTitle(const UT_WString& title) override;
    void AddRecentFile(const UT_FilePath& path) override;
    void ShowDocument(bool open) override;
    void SetWaitCursor(bool on) override;
    std::unique_ptr<UT_Progress> CreateProgress(const UT_WString& title) override;
    int ScreenDepth() override;
    void ShowSplash() override;
    bool CreateMainFrame() override;
    void RemovePlazmicExport() override;
    void ShowMainFrame() override;
    std::vector<UT_FilePath> LoadRecentFiles() override;
    void StoreRecentFiles(const std::vector<UT_FilePath>& files) override;
    UT_FilePath ProjectDir() override;
    void SetProjectDir(const UT_FilePath& folder) override;
    bool WantsDirect3D() override;
    uint32_t UserDefaultLanguage() override;
    bool LoadLanguagePack(uint32_t languageId) override;

private:
    class DocumentCommands;
    class ApplicationCommands;

    // Writes one value to the settings file at once, over what another program may have
    // written to it meanwhile.
    void WriteSetting(const char* section, const std::string& key, const std::string& value);
    bool OnClose();
    void OnDropFile(const UT_FilePath& path);

    CSketchrunApp* app_ = nullptr;
    GUT_AcceleratorTable accelerators_;
    std::unique_ptr<CMainFrame> frame_;
    std::unique_ptr<DocumentCommands> documentCommands_;
    std::unique_ptr<ApplicationCommands> applicationCommands_;
    std::unique_ptr<QSplashScreen> splash_;
    std::unique_ptr<QTranslator> translator_;
};
