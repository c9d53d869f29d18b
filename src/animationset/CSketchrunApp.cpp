#include "animationset/CSketchrunApp.h"

#include "animationset/AS_CellIteratorObservable.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CNewAnimationDlg.h"
#include "animationset/CSketchrunDoc.h"
#include "core/PR_Preferences.h"
#include "core/UT_MessageHandler.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fenv.h>

namespace {

// Primary language codes of the identifiers the program knows.
constexpr uint32_t kPrimaryChinese = 4;
constexpr uint32_t kPrimaryEnglish = 9;
constexpr uint32_t kPrimaryFrench = 12;
constexpr uint32_t kPrimaryJapanese = 17;
constexpr uint32_t kPrimaryKorean = 18;

} // namespace

CSketchrunApp::CSketchrunApp(CSketchrunAppHost& host) : host_(host) {}

CSketchrunApp::~CSketchrunApp() = default;

uint32_t CSketchrunApp::SelectLanguagePack(uint32_t userLanguage) {
    const uint32_t primary = userLanguage & 0x3FF;
    switch (primary) {
    case kPrimaryEnglish:
        return kEnglish;
    case kPrimaryFrench:
        return 1036;
    case kPrimaryJapanese:
    case kPrimaryKorean:
        return userLanguage;
    case kPrimaryChinese:
        return userLanguage >= 2048 && userLanguage <= 3071 ? 2052 : 1028;
    default:
        return kEnglish;
    }
}

uint32_t CSketchrunApp::LanguageFromLocale(const char* locale) {
    if (!locale || !*locale)
        return kEnglish;
    std::string text(locale);
    const size_t end = text.find_first_of(".@");
    text = text.substr(0, end);
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    const std::string language = text.substr(0, text.find('_'));
    const std::string region = text.find('_') == std::string::npos ? "" : text.substr(text.find('_') + 1);
    if (language == "fr")
        return region == "ca" ? 0x0C0C : 0x040C;
    if (language == "ja")
        return 0x0411;
    if (language == "ko")
        return 0x0412;
    if (language == "zh") {
        if (region == "cn" || region == "sg")
            return region == "cn" ? 0x0804 : 0x1004;
        return region == "hk" ? 0x0C04 : 0x0404;
    }
    if (language == "de")
        return 0x0407;
    if (language == "es")
        return 0x0C0A;
    if (language == "it")
        return 0x0410;
    return 0x0409;
}

std::string CSketchrunApp::LanguagePackName(uint32_t languageId) {
    char name[32];
    std::snprintf(name, sizeof name, "res%x.dll", languageId);
    return name;
}

bool CSketchrunApp::IsNonZeroNumber(const char* text) {
    if (!text || !*text)
        return false;
    char* end = nullptr;
    const double value = std::strtod(text, &end);
    while (end && std::isspace(static_cast<unsigned char>(*end)))
        ++end;
    return end && *end == '\0' && end != text && value != 0.0;
}

bool CSketchrunApp::InitInstance(const std::vector<std::string>& arguments, const char* plazmicVariable) {
    // The command line names at most one project file.
    std::optional<UT_FilePath> fileToOpen;
    for (const std::string& word : arguments) {
        if (!word.empty() && word[0] != '-') {
            fileToOpen = UT_FilePath(word.c_str());
            break;
        }
    }

    // The application's current cell exists before any model does, first among the
    // observers of every set's changes.
    AS_CellIteratorObservable::Instance();

    // A pack that does not load leaves the program's own English texts, without a word.
    languageId_ = SelectLanguagePack(host_.UserDefaultLanguage());
    if (languageId_ != kEnglish && !host_.LoadLanguagePack(languageId_))
        languageId_ = kEnglish;

    host_.ShowSplash();
    if (host_.ScreenDepth() < 24) {
        UT_MessageHandler::Post(
            UT_MessageHandler::kError,
            u"Quilmoor Studio requires that the monitor be set to 24 or 32 bit color depth.");
        return false;
    }

    recentFiles_ = host_.LoadRecentFiles();
    if (recentFiles_.size() > kRecentFileCount)
        recentFiles_.resize(kRecentFileCount);

    if (!host_.CreateMainFrame()) {
        UT_MessageHandler::Post(UT_MessageHandler::kError, u"Cannot initialize QMS from registry.");
        return false;
    }

    plazmicExport_ = IsNonZeroNumber(plazmicVariable);
    if (!plazmicExport_)
        host_.RemovePlazmicExport();

    // Geometry relies on infinities and NaNs passing quietly through arithmetic.
    fedisableexcept(FE_ALL_EXCEPT);

    if (host_.WantsDirect3D())
        UT_MessageHandler::Post(UT_MessageHandler::kWarning,
                                u"Failed to initialize DX7.0.\nOpenGL will be used for rendering.");

    host_.ShowMainFrame();
    if (fileToOpen)
        return OpenDocumentFile(*fileToOpen);
    return true;
}

bool CSketchrunApp::OnFileNew() {
    if (document_ && !document_->SaveModified())
        return false;
    const PR_Preferences& prefs = PR_Preferences::Instance();
    auto set = std::make_unique<CAnimationSetObj>();
    set->InitialiseNew(prefs.FrameRate(), prefs.CameraWidth(), prefs.CameraHeight());

    CNewAnimationDlg dialog(u"New Animation Set", set->Name(), host_.ProjectDir().Wide());
    if (!host_.RunNewAnimationDialog(dialog))
        return false;
    CloseDocument(false);

    set->SetName(dialog.name);
    document_ = std::make_unique<CSketchrunDoc>(*this);
    document_->Attach(std::move(set), dialog.Folder());
    CAnimationSetObj* attached = document_->Set();
    if (!attached->Sequence().empty())
        attached->SetCurrentScene(attached->Sequence().front(), true);
    host_.ShowDocument(true);
    host_.SetDocumentTitle(attached->Name());
    attached->SetForcedDirty(true);
    return true;
}

bool CSketchrunApp::OnFileOpen() {
    if (document_ && !document_->SaveModified())
        return false;
    const std::optional<UT_FilePath> path = host_.RunOpenDialog(host_.ProjectDir());
    if (!path)
        return false;
    // The next New and Open start beside this project.
    host_.SetProjectDir(path->Folder().Folder());
    return OpenDocumentFile(*path);
}

bool CSketchrunApp::OpenDocumentFile(const UT_FilePath& path) {
    CloseDocument(false);
    document_ = std::make_unique<CSketchrunDoc>(*this);
    if (!document_->OpenPath(path)) {
        document_.reset();
        return false;
    }
    host_.ShowDocument(true);
    return true;
}

bool CSketchrunApp::OnFileSave() {
    return document_ && document_->Save();
}

bool CSketchrunApp::OnFileSaveAs() {
    return document_ && document_->SaveAs();
}

bool CSketchrunApp::CloseDocument(bool ask) {
    if (!document_)
        return true;
    if (ask && !document_->SaveModified())
        return false;
    host_.ShowDocument(false);
    CAnimationSetObj::SetCurrent(nullptr);
    document_.reset();
    return true;
}

bool CSketchrunApp::OnAppExit() {
    return CloseDocument(true);
}

bool CSketchrunApp::OnRecentFile(size_t index) {
    if (index >= recentFiles_.size())
        return false;
    if (document_ && !document_->SaveModified())
        return false;
    const UT_FilePath path = recentFiles_[index];
    if (OpenDocumentFile(path))
        return true;
    recentFiles_.erase(recentFiles_.begin() + static_cast<std::ptrdiff_t>(index));
    host_.StoreRecentFiles(recentFiles_);
    return false;
}

bool CSketchrunApp::RunNewAnimationDialog(CNewAnimationDlg& dialog) {
    return host_.RunNewAnimationDialog(dialog);
}

std::optional<UT_FilePath> CSketchrunApp::RunOpenDialog(const UT_FilePath& startFolder) {
    return host_.RunOpenDialog(startFolder);
}

void CSketchrunApp::SetDocumentTitle(const UT_WString& title) {
    host_.SetDocumentTitle(title);
}

void CSketchrunApp::AddRecentFile(const UT_FilePath& path) {
    std::erase(recentFiles_, path);
    recentFiles_.insert(recentFiles_.begin(), path);
    if (recentFiles_.size() > kRecentFileCount)
        recentFiles_.resize(kRecentFileCount);
    host_.StoreRecentFiles(recentFiles_);
}

void CSketchrunApp::ShowDocument(bool open) {
    host_.ShowDocument(open);
}

void CSketchrunApp::SetWaitCursor(bool on) {
    host_.SetWaitCursor(on);
}

std::unique_ptr<UT_Progress> CSketchrunApp::CreateProgress(const UT_WString& title) {
    return host_.CreateProgress(title);
}
