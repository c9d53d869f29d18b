// qms new, info, save and demo: whole animation sets.

#include "QmsCommands.h"
#include "QmsHost.h"
#include "QmsProjectSummary.h"

#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"
#include "animationset/CNewAnimationDlg.h"
#include "animationset/CSketchrunDoc.h"
#include "core/PR_Preferences.h"

#include <filesystem>
#include <functional>

namespace {

// The New flow without windows: the dialog's rules, a new set with the preferences'
// frame rate and camera size, and the first save.
UT_FilePath CreateProject(CSketchrunHost& host, const std::string& location, const std::string& name,
                          const std::function<void(CAnimationSetObj&)>& fill = {}) {
    CNewAnimationDlg dialog(u"New Animation Set", UT_FromUtf8(name), UT_FromUtf8(location));
    host.RunNewAnimationDialog(dialog);
    const PR_Preferences& prefs = PR_Preferences::Instance();
    auto set = std::make_unique<CAnimationSetObj>();
    set->InitialiseNew(prefs.FrameRate(), prefs.CameraWidth(), prefs.CameraHeight());
    set->SetName(dialog.name);
    if (fill)
        fill(*set);
    set->SetForcedDirty(true);
    CSketchrunDoc document(host);
    document.Attach(std::move(set), dialog.Folder());
    QmsSaveProject(document);
    return document.ProjectFile();
}

} // namespace

int QmsRunNew(QmsContext& context, const std::vector<std::string>& words) {
    QmsArgs args(words, {});
    args.Check(2, 2);
    QmsHost host;
    const UT_FilePath path = CreateProject(host, args.At(0, "LOCATION"), args.At(1, "NAME"));
    if (context.json)
        QmsJson(context.out).BeginObject().Field("project", path.Utf8()).EndObject();
    else
        context.out << path.Utf8() << "\n";
    return 0;
}

int QmsRunInfo(QmsContext& context, const std::vector<std::string>& words) {
    QmsArgs args(words, {});
    args.Check(1, 1);
    QmsHost host;
    CSketchrunDoc document(host);
    QmsOpenProject(document, args.At(0, "PROJECT"));
    QmsPrintProject(context, document);
    return 0;
}

int QmsRunSave(QmsContext& context, const std::vector<std::string>& words) {
    QmsArgs args(words, {});
    args.Check(1, 1);
    QmsHost host;
    CSketchrunDoc document(host);
    QmsOpenProject(document, args.At(0, "PROJECT"));
    const bool modified = document.IsModified();
    QmsSaveProject(document);
    if (context.json)
        QmsJson(context.out)
            .BeginObject()
            .Field("project", document.ProjectFile().Utf8())
            .Field("written", modified)
            .EndObject();
    else
        context.out << (modified ? "saved " : "unchanged ") << document.ProjectFile().Utf8() << "\n";
    return 0;
}

int QmsRunDemo(QmsContext& context, const std::vector<std::string>& words) {
    QmsArgs args(words, {});
    args.Check(1, 1);
    const std::string folder = args.At(0, "FOLDER");
    std::error_code ec;
    std::filesystem::create_directories(folder, ec);
    if (ec)
        throw QmsFailure("unable to create " + folder + ": " + ec.message());
    QmsHost host;
    const UT_FilePath path = CreateProject(host, folder, "Demo", [](CAnimationSetObj& set) {
        // A second and third scene, so that the sequence shows its order.
        for (const char16_t* name : {u"Walk cycle", u"Title"}) {
            auto scene = std::make_unique<CDopeSheetObj>();
            scene->Initialise(set.TakeNextSceneId(), name, &set.PaletteList());
            scene->InitialiseDefaultElements(set.CameraWidth(), set.CameraHeight());
            set.AddScene(std::move(scene), set.Sequence().size());
        }
    });
    CSketchrunDoc document(host);
    QmsOpenProject(document, path.Utf8());
    QmsPrintProject(context, document);
    return 0;
}
