#pragma once

#include "core/UT_FilePath.h"
#include "core/UT_String.h"

#include <filesystem>
#include <memory>

class CAnimationSetObj;
class CSketchrunHost;
class SPO_SettingsMgr;

// One open animation set and its project folder, with the Open, Save, Save As and
// unsaved-changes flows.
class CSketchrunDoc {
public:
    explicit CSketchrunDoc(CSketchrunHost& host);
    ~CSketchrunDoc();
    CSketchrunDoc(const CSketchrunDoc&) = delete;
    CSketchrunDoc& operator=(const CSketchrunDoc&) = delete;

    // Takes a set made by the New flow together with its folder.
    void Attach(std::unique_ptr<CAnimationSetObj> set, const UT_FilePath& folder);
    // Loads the project at `path` (".qmp" is added when missing). Reports failures
    // through the message handler and returns false.
    bool OpenPath(const UT_FilePath& path);

    // Writes the project when it is dirty (or always when forced) through one file
    // transaction. False if anything failed; the files on disk then stay as they were.
    bool Save(bool libraryOnly = false, bool forced = false);
    // Save As with the dialog's answer: copies the project folder to location/name and
    // saves there. False, with the project unchanged, on any failure.
    bool SaveAsTo(const UT_WString& location, const UT_WString& name);
    // Save As with the host's dialog.
    bool SaveAs();
    // Asks about unsaved changes. False when the caller must not go on (Cancel, or a
    // save that failed).
    bool SaveModified();

    CAnimationSetObj* Set() const { return set_.get(); }
    // The scene-planning settings, made anew with each set.
    SPO_SettingsMgr* Settings() const { return settings_.get(); }
    const UT_FilePath& ProjectFolder() const { return folder_; }
    UT_FilePath ProjectFile() const;
    bool IsModified() const;

    // The conversion question for sets read from an earlier version. False on No.
    bool ConfirmConversion() const;

private:
    enum class CopyResult { kDone, kFailed, kCancelled };

    bool WriteProject();
    // Copies every file and folder of the project folder into `newFolder`.
    CopyResult CopyProjectFolder(const std::filesystem::path& newFolder);

    // Gives the set its own scene-planning settings, replacing those of the last one.
    void MakeSettings();

    CSketchrunHost& host_;
    // Declared first, so that the set dies before its settings.
    std::unique_ptr<SPO_SettingsMgr> settings_;
    std::unique_ptr<CAnimationSetObj> set_;
    UT_FilePath folder_;
};
