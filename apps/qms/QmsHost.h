#pragma once

#include "animationset/CSketchrunHost.h"

#include <ostream>

// The host of the document flows on the command line: no windows, every dialog
// answered by the command's own arguments.
class QmsHost : public CSketchrunHost {
public:
    bool RunNewAnimationDialog(CNewAnimationDlg& dialog) override;
    std::optional<UT_FilePath> RunOpenDialog(const UT_FilePath&) override { return std::nullopt; }
    void SetDocumentTitle(const UT_WString&) override {}
    void AddRecentFile(const UT_FilePath&) override {}
    void ShowDocument(bool) override {}
    void SetWaitCursor(bool) override {}
};

class CAnimationSetObj;
class CDopeSheetObj;
class CSketchrunDoc;

// Opens the project at `path` through the document's Open flow; throws QmsFailure (the
// message has already gone to the error output) when it cannot be opened.
void QmsOpenProject(CSketchrunDoc& document, const std::string& path);
// Saves through the document's Save flow; throws QmsFailure when the save failed.
void QmsSaveProject(CSketchrunDoc& document);
// The scene that `text` names, by id or, failing that, by name; throws QmsFailure when
// there is none.
CDopeSheetObj& QmsSceneArgument(const CAnimationSetObj& set, const std::string& text);
