#pragma once

#include "core/UT_FilePath.h"
#include "core/UT_Progress.h"
#include "core/UT_String.h"

#include <memory>
#include <optional>

class CNewAnimationDlg;

// What the application and document flows need from the windows around them. The
// desktop program implements it with Qt; the command line and the tests with scripts.
class CSketchrunHost {
public:
    virtual ~CSketchrunHost() = default;

    // Shows the New Animation Set / Save As dialog. Returns false on Cancel. On OK the
    // host calls dialog.Accept() and keeps the dialog open while it returns a message.
    virtual bool RunNewAnimationDialog(CNewAnimationDlg& dialog) = 0;
    // The "Open Animation Set" file dialog; nothing on Cancel.
    virtual std::optional<UT_FilePath> RunOpenDialog(const UT_FilePath& startFolder) = 0;
    // Document title and recent files after an open or a rename.
    virtual void SetDocumentTitle(const UT_WString& title) = 0;
    virtual void AddRecentFile(const UT_FilePath& path) = 0;
    // Menu 130 (no document) or 133 (a document), and the views of a document.
    virtual void ShowDocument(bool open) = 0;
    virtual void SetWaitCursor(bool on) = 0;
    // A progress display for one long operation, gone when the pointer is released.
    // Hosts without a display give one that shows nothing and is never cancelled.
    virtual std::unique_ptr<UT_Progress> CreateProgress(const UT_WString& title) {
        (void)title;
        return std::make_unique<UT_NullProgress>();
    }
};
