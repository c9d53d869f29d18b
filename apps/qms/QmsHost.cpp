#include "QmsHost.h"

#include "QmsCli.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"
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

CDopeSheetObj& QmsSceneArgument(const CAnimationSetObj& set, const std::string& text) {
    const bool numeric = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
    if (numeric && text.size() <= 10) {
        const uint64_t id = std::stoull(text);
        if (id <= UINT32_MAX)
            if (CDopeSheetObj* scene = set.FindScene(static_cast<uint32_t>(id)))
                return *scene;
    }
    const UT_WString name = UT_FromUtf8(text);
    for (CDopeSheetObj* scene : set.Sequence())
        if (scene->Name() == name)
            return *scene;
    throw QmsFailure("There is no scene '" + text + "' in the project; 'qms scene list' shows the scenes.");
}
