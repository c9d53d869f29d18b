#pragma once

#include "animationset/CSketchrunHost.h"
#include "core/UT_FilePath.h"
#include "core/UT_String.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class CSketchrunDoc;

// What the application object needs of the desktop beyond the document flows: the
// main window, the screen, the remembered files. Qt implements it in the desktop
// program; tests implement it with scripts.
class CSketchrunAppHost : public CSketchrunHost {
public:
    // Bits per pixel of the screen the main window opens on.
    virtual int ScreenDepth() = 0;
    virtual void ShowSplash() = 0;
    // Creates the main window; false when that is impossible.
    virtual bool CreateMainFrame() = 0;
    // Removes the SVG export command from the Export menu.
    virtual void RemovePlazmicExport() = 0;
    virtual void ShowMainFrame() = 0;
    // The recent files list as stored, newest first, and its storing.
    virtual std::vector<UT_FilePath> LoadRecentFiles() = 0;
    virtual void StoreRecentFiles(const std::vector<UT_FilePath>& files) = 0;
    // The folder in which New and Open start (the "ProjectDir" setting).
    virtual UT_FilePath ProjectDir() = 0;
    virtual void SetProjectDir(const UT_FilePath& folder) = 0;
    // Whether the preferences ask for Direct3D rendering.
    virtual bool WantsDirect3D() = 0;
    // The user's default language identifier (see CSketchrunApp::LanguageFromLocale).
    virtual uint32_t UserDefaultLanguage() = 0;
    // Replaces the program's English texts by those of a language pack; false when the
    // pack cannot be loaded, and the English texts stay.
    virtual bool LoadLanguagePack(uint32_t languageId) {
        (void)languageId;
        return false;
    }
};

// The application: at most one open document, the start-up sequence and the New, Open,
// Close and Exit flows.
class CSketchrunApp : public CSketchrunHost {
public:
    static constexpr size_t kRecentFileCount = 4;
    static constexpr uint32_t kEnglish = 1033;

    explicit CSketchrunApp(CSketchrunAppHost& host);
    ~CSketchrunApp() override;
    CSketchrunApp(const CSketchrunApp&) = delete;
    CSketchrunApp& operator=(const CSketchrunApp&) = delete;

    // Runs the start-up sequence. `arguments` are the command line words after the
    // program name; `plazmicVariable` the value of QMS_ENABLE_PLAZMIC_EXPORT, if set.
    // False when start-up failed; the reason has gone to the message handler.
    bool InitInstance(const std::vector<std::string>& arguments, const char* plazmicVariable);

    bool OnFileNew();
    bool OnFileOpen();
    // Opens `path` as the application's one document, closing the one that is open.
    bool OpenDocumentFile(const UT_FilePath& path);
    bool OnFileSave();
    bool OnFileSaveAs();
    // Closes the document; with `ask`, after the unsaved-changes check, which may refuse.
    bool CloseDocument(bool ask);
    // Close with the check. True when the program may end.
    bool OnAppExit();
    bool OnRecentFile(size_t index);

    CSketchrunDoc* Document() const { return document_.get(); }
    const std::vector<UT_FilePath>& RecentFiles() const { return recentFiles_; }
    bool PlazmicExportEnabled() const { return plazmicExport_; }
    bool UsesDirect3D() const { return false; }
    uint32_t LanguageId() const { return languageId_; }

    // The language resources for a user's default language identifier (primary
    // language in the low 10 bits). kEnglish means the program's own resources.
    static uint32_t SelectLanguagePack(uint32_t userLanguage);
    // The language identifier of a POSIX locale name such as "fr_CA.UTF-8".
    static uint32_t LanguageFromLocale(const char* locale);
    // The module name of a language pack: "res%x.dll".
    static std::string LanguagePackName(uint32_t languageId);
    // True when the variable's value is a non-zero number.
    static bool IsNonZeroNumber(const char* text);

    // CSketchrunHost, passed on to the desktop host, with the recent files kept here.
    bool RunNewAnimationDialog(CNewAnimationDlg& dialog) override;
    std::optional<UT_FilePath> RunOpenDialog(const UT_FilePath& startFolder) override;
    void SetDocumentTitle(const UT_WString& title) override;
    void AddRecentFile(const UT_FilePath& path) override;
    void ShowDocument(bool open) override;
    void SetWaitCursor(bool on) override;
    std::unique_ptr<UT_Progress> CreateProgress(const UT_WString& title) override;

private:
    CSketchrunAppHost& host_;
    std::unique_ptr<CSketchrunDoc> document_;
    std::vector<UT_FilePath> recentFiles_;
    bool plazmicExport_ = false;
    uint32_t languageId_ = kEnglish;
};
