#pragma once

#include "animationset/CNewAnimationDlg.h"
#include "animationset/CSketchrunApp.h"
#include "core/UT_MessageHandler.h"

#include <deque>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

// Records every message and answers questions from a script (default: the caller's
// default answer is not known here, so Cancel unless scripted).
class ScriptedMessages : public UT_MessageHandler {
public:
    void Message(int severity, const UT_WString& text) override { messages.push_back({severity, text}); }
    int Question(int, const UT_WString& text) override {
        questions.push_back(text);
        if (answers.empty())
            return kCancel;
        const int answer = answers.front();
        answers.pop_front();
        return answer;
    }
    void MessageOnce(int severity, const UT_WString& text, bool*) override { Message(severity, text); }
    void MessageOnceById(int, uint32_t, bool*) override {}
    int QuestionOnceById(int, uint32_t, bool*) override { return kCancel; }

    struct Entry {
        int severity;
        UT_WString text;
    };
    std::vector<Entry> messages;
    std::vector<UT_WString> questions;
    std::deque<int> answers;
};

// A progress that reports itself cancelled once it has been moved `steps` times.
class CancellingProgress : public UT_NullProgress {
public:
    explicit CancellingProgress(int steps) : left_(steps) {}
    void SetPosition(int64_t) override { --left_; }
    bool IsCancelled() override { return left_ <= 0; }

private:
    int left_;
};

// The desktop as a test sees it: dialogs answered from fields, calls recorded.
class FakeAppHost : public CSketchrunAppHost {
public:
    bool RunNewAnimationDialog(CNewAnimationDlg& dialog) override {
        if (!newDialogOk)
            return false;
        dialog.name = newName;
        dialog.location = newLocation;
        lastDialogMessage = dialog.Accept();
        return lastDialogMessage.empty();
    }
    std::optional<UT_FilePath> RunOpenDialog(const UT_FilePath&) override { return openAnswer; }
    void SetDocumentTitle(const UT_WString& text) override { title = text; }
    void AddRecentFile(const UT_FilePath&) override {}
    void ShowDocument(bool open) override { documentShown = open; }
    void SetWaitCursor(bool) override {}
    int ScreenDepth() override { return depth; }
    void ShowSplash() override {}
    bool CreateMainFrame() override { return frameOk; }
    void RemovePlazmicExport() override { plazmicRemoved = true; }
    void ShowMainFrame() override { frameShown = true; }
    std::vector<UT_FilePath> LoadRecentFiles() override { return storedRecent; }
    void StoreRecentFiles(const std::vector<UT_FilePath>& files) override { storedRecent = files; }
    UT_FilePath ProjectDir() override { return projectDir; }
    void SetProjectDir(const UT_FilePath& folder) override { projectDir = folder; }
    bool WantsDirect3D() override { return direct3D; }
    uint32_t UserDefaultLanguage() override { return language; }
    bool LoadLanguagePack(uint32_t languageId) override {
        requestedPack = languageId;
        return packLoads;
    }
    std::unique_ptr<UT_Progress> CreateProgress(const UT_WString& title) override {
        progressTitles.push_back(title);
        if (cancelProgressAfter >= 0)
            return std::make_unique<CancellingProgress>(cancelProgressAfter);
        return std::make_unique<UT_NullProgress>();
    }

    bool newDialogOk = true;
    UT_WString newName = u"Film";
    UT_WString newLocation;
    UT_WString lastDialogMessage;
    std::optional<UT_FilePath> openAnswer;
    UT_WString title;
    bool documentShown = false;
    int depth = 32;
    bool frameOk = true;
    bool plazmicRemoved = false;
    bool frameShown = false;
    std::vector<UT_FilePath> storedRecent;
    UT_FilePath projectDir;
    bool direct3D = false;
    uint32_t language = 0x0409;
    bool packLoads = true;
    uint32_t requestedPack = 0;
    std::vector<UT_WString> progressTitles;
    int cancelProgressAfter = -1;
};

// A fresh folder for one test, removed afterwards.
class TempFolder {
public:
    explicit TempFolder(const std::string& name) {
        path_ =
            std::filesystem::temp_directory_path() / ("qms-as-" + name + "-" + std::to_string(::getpid()));
        std::filesystem::remove_all(path_);
        std::filesystem::create_directories(path_);
    }
    ~TempFolder() { std::filesystem::remove_all(path_); }
    const std::filesystem::path& Path() const { return path_; }
    UT_WString Wide() const { return UT_FromUtf8(path_.string()); }

private:
    std::filesystem::path path_;
};
