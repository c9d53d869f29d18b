#include "QmsHost.h"

#include "QmsCli.h"

#include "animationset/CNewAnimationDlg.h"
#include "animationset/CSketchrunDoc.h"

bool QmsHost::RunNewAnimationDialog(CNewAnimationDlg& dialog) {
    const UT_WString message = dialog.Accept();
    if (!message.empty())
        throw QmsFailure(message);
    return true;
}

void QmsOpenProject(CSketchrunDoc& document, const std::string& path) {
    if (!document.OpenPath(UT_FilePath(path.c_str())))
        throw QmsFailure(std::string()); // the message handler has shown why
}

void QmsSaveProject(CSketchrunDoc& document) {
    if (!document.Save())
        throw QmsFailure(std::string()); // the error collector has shown why
}
