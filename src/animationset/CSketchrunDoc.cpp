#include "animationset/CSketchrunDoc.h"

#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"
#include "animationset/CNewAnimationDlg.h"
#include "animationset/CSketchrunHost.h"
#include "animationset/SPO_SettingsMgr.h"
#include "core/DB_Exception.h"
#include "core/DB_FileContainer.h"
#include "core/UT_ErrorCollector.h"
#include "core/UT_FileTransaction.h"
#include "core/UT_Format.h"
#include "core/UT_MessageHandler.h"

#include <algorithm>
#include <filesystem>
#include <vector>

namespace fs = std::filesystem;

namespace {

class WaitCursor {
public:
    explicit WaitCursor(CSketchrunHost& host) : host_(host) { host_.SetWaitCursor(true); }
    ~WaitCursor() { host_.SetWaitCursor(false); }

private:
    CSketchrunHost& host_;
};

// A save that was cut off between two renames leaves the project under a ".new" or
// ".deleted" name. Offer to put it back.
bool RecoverInterruptedSave(const UT_FilePath& path) {
    for (const char16_t* suffix : {u"new", u"deleted"}) {
        const UT_FilePath sibling = path.AppendSuffix(suffix);
        if (!sibling.IsFile())
            continue;
        const int answer = UT_MessageHandler::Ask(
            UT_MessageHandler::kYesNo,
            UT_Fmt(
                u"%1$S is missing, but %2$S was left by an interrupted save.\nRecover the project from it?",
                path.Wide(), sibling.Wide()),
            UT_MessageHandler::kNo);
        if (answer != UT_MessageHandler::kYes)
            return false;
        if (sibling.RenameTo(path) != 0)
            return false;
        UT_MessageHandler::Post(UT_MessageHandler::kInformation,
                                UT_Fmt(u"Recovered %1$S from %2$S", path.Wide(), sibling.Wide()));
        return true;
    }
    return false;
}

} // namespace

CSketchrunDoc::CSketchrunDoc(CSketchrunHost& host) : host_(host) {}

CSketchrunDoc::~CSketchrunDoc() {
    if (CAnimationSetObj::Current() == set_.get())
        CAnimationSetObj::SetCurrent(nullptr);
}

void CSketchrunDoc::MakeSettings() {
    settings_ = std::make_unique<SPO_SettingsMgr>(set_.get());
    set_->SetSettingsManager(settings_.get());
}

void CSketchrunDoc::Attach(std::unique_ptr<CAnimationSetObj> set, const UT_FilePath& folder) {
    set_ = std::move(set);
    MakeSettings();
    folder_ = folder;
    set_->SetProjectFolder(folder_);
    CAnimationSetObj::SetCurrent(set_.get());
}

UT_FilePath CSketchrunDoc::ProjectFile() const {
    return folder_.Append(set_ ? set_->Name() + u".qmp" : UT_WString(u".qmp"));
}

bool CSketchrunDoc::IsModified() const {
    return set_ && set_->IsDirty();
}

bool CSketchrunDoc::OpenPath(const UT_FilePath& requested) {
    std::error_code ec;
    fs::path absolute = fs::absolute(requested.Path(), ec);
    UT_FilePath path(ec ? requested.Path() : absolute.lexically_normal());

    set_ = std::make_unique<CAnimationSetObj>();
    CAnimationSetObj::SetCurrent(set_.get());
    MakeSettings();
    folder_ = path.Folder();
    set_->SetProjectFolder(folder_);
    set_->SetName(path.BaseName());
    if (path.Extension() != u"qmp")
        path = path.AppendSuffix(u"qmp");

    if (!path.IsFile() && !RecoverInterruptedSave(path)) {
        UT_MessageHandler::Post(
            UT_MessageHandler::kError,
            UT_Fmt(u"%S could not be found.\nThis file may have been moved, renamed or deleted.",
                   path.Wide()));
        return false;
    }
    try {
        DB_FileContainer::LoadBare(path, *set_, DB_FileContainer::kProject);
    } catch (const DB_Exception& e) {
        UT_MessageHandler::Post(UT_MessageHandler::kError, e.Message());
        return false;
    }
    set_->SetName(path.BaseName());
    host_.SetDocumentTitle(set_->Name());
    host_.AddRecentFile(path);
    if (!set_->Sequence().empty())
        set_->SetCurrentScene(set_->Sequence().front(), true);
    return true;
}

bool CSketchrunDoc::ConfirmConversion() const {
    if (set_->Version() >= CAnimationSetObj::kCurrentVersion)
        return true;
    const int answer =
        UT_MessageHandler::Ask(UT_MessageHandler::kYesNo,
                               u"Saving the animation will convert it to Quilmoor Studio V2.0 format.\nOnce "
                               u"converted, you will not be "
                               u"able to open this animation in V1.0.\nDo you want to continue?",
                               UT_MessageHandler::kYes);
    return answer == UT_MessageHandler::kYes;
}

bool CSketchrunDoc::WriteProject() {
    UT_ErrorCollector::Handle errors = UT_ErrorCollector::Get();
    if (folder_.CreateFolders() != 0) {
        errors->Add(u"Unable to create the project folder.");
        return false;
    }
    set_->SetProjectFolder(folder_);
    UT_FileTransaction::Handle transaction = UT_FileTransaction::Get();
    const UT_FilePath temporary = transaction->AddReplace(ProjectFile());
    try {
        DB_FileContainer::SaveBare(temporary, *set_, DB_FileContainer::kProject);
    } catch (const DB_Exception& e) {
        errors->Add(e.Message());
        return false;
    }
    return true;
}

bool CSketchrunDoc::Save(bool libraryOnly, bool forced) {
    if (!set_)
        return false;
    UT_ErrorCollector::Handle errors = UT_ErrorCollector::Get();
    errors->SetHeading(u"Error while saving the animation set.");
    UT_FileTransaction::Handle transaction = UT_FileTransaction::Get();
    WaitCursor wait(host_);

    const bool dirty = set_->IsDirty();
    if (dirty && !libraryOnly && !forced && !ConfirmConversion())
        return false;
    if ((!libraryOnly && dirty) || forced)
        WriteProject();

    bool clean = false;
    if (!errors->IsEmpty()) {
        transaction->Rollback();
    } else if (transaction->Commit()) {
        clean = true;
        if (libraryOnly) {
            set_->MarkLibrarySaved();
        } else {
            set_->MarkSaved();
            set_->MarkLibrarySaved();
        }
    } else {
        errors->Add(transaction->ErrorText());
    }
    return clean;
}

bool CSketchrunDoc::SaveAsTo(const UT_WString& location, const UT_WString& name) {
    const UT_FilePath target = UT_FilePath::FromWide(location).Append(name);
    std::error_code ec;
    const fs::path newFolder = fs::weakly_canonical(fs::absolute(target.Path()), ec);
    const fs::path oldFolder = fs::weakly_canonical(fs::absolute(folder_.Path()), ec);
    auto refuse = [&] {
        UT_MessageHandler::Post(UT_MessageHandler::kError, UT_Fmt(u"Unable to save in %S", target.Wide()));
        return false;
    };
    // Copying a folder into itself would never end, and would mix two projects.
    const auto [oldEnd, newIt] =
        std::mismatch(oldFolder.begin(), oldFolder.end(), newFolder.begin(), newFolder.end());
    if (!oldFolder.empty() && oldEnd == oldFolder.end())
        return refuse();

    const UT_WString oldName = set_->Name();
    if (folder_.IsFolder()) {
        const bool existed = fs::exists(newFolder, ec);
        const CopyResult copied = CopyProjectFolder(newFolder);
        if (copied != CopyResult::kDone) {
            // What this Save As made goes again; a folder that was there stays.
            if (!existed)
                fs::remove_all(newFolder, ec);
            return copied == CopyResult::kFailed ? refuse() : false;
        }
        fs::remove(newFolder / UT_ToUtf8(oldName + u".qmp"), ec);
    }
    folder_ = UT_FilePath(newFolder);
    set_->SetName(name);
    set_->SetProjectFolder(folder_);
    host_.SetDocumentTitle(name);
    host_.AddRecentFile(ProjectFile());
    return Save(false, true);
}

CSketchrunDoc::CopyResult CSketchrunDoc::CopyProjectFolder(const fs::path& newFolder) {
    std::error_code ec;
    std::vector<fs::directory_entry> entries;
    for (auto it = fs::recursive_directory_iterator(folder_.Path(), ec);
         !ec && it != fs::recursive_directory_iterator(); it.increment(ec))
        entries.push_back(*it);
    if (ec)
        return CopyResult::kFailed;
    fs::create_directories(newFolder, ec);
    if (ec)
        return CopyResult::kFailed;

    // Sound files make a project folder large: the copy shows its progress and may be
    // cancelled between two files.
    const std::unique_ptr<UT_Progress> progress = host_.CreateProgress(u"Save As");
    progress->SetRange(0, static_cast<int64_t>(entries.size()), 0);
    int64_t done = 0;
    for (const fs::directory_entry& entry : entries) {
        progress->ProcessEvents();
        if (progress->IsCancelled())
            return CopyResult::kCancelled;
        const fs::path to = newFolder / fs::relative(entry.path(), folder_.Path(), ec);
        if (ec)
            return CopyResult::kFailed;
        if (entry.is_directory(ec))
            fs::create_directories(to, ec);
        else
            fs::copy_file(entry.path(), to, fs::copy_options::overwrite_existing, ec);
        if (ec)
            return CopyResult::kFailed;
        progress->SetPosition(++done);
    }
    return CopyResult::kDone;
}

bool CSketchrunDoc::SaveAs() {
    if (!ConfirmConversion())
        return false;
    CNewAnimationDlg dialog(u"Save As", set_->Name(), folder_.Folder().Wide());
    if (!host_.RunNewAnimationDialog(dialog))
        return false;
    return SaveAsTo(dialog.location, dialog.name);
}

bool CSketchrunDoc::SaveModified() {
    if (!IsModified())
        return true;
    const int answer =
        UT_MessageHandler::Ask(UT_MessageHandler::kYesNoCancel,
                               UT_Fmt(u"Save changes to %1$S?", set_->Name()), UT_MessageHandler::kNo);
    if (answer == UT_MessageHandler::kCancel)
        return false;
    if (answer == UT_MessageHandler::kYes)
        return Save();
    return true;
}
