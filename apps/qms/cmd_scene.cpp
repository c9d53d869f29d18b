// qms scene: the scenes of an animation set, listed and changed through the set's
// command history, then saved.

#include "QmsCommands.h"
#include "QmsHost.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"
#include "animationset/CSketchrunDoc.h"
#include "animationset/DC_AddSceneCommand.h"
#include "animationset/DC_ChangeSceneProperties.h"
#include "animationset/DC_DeleteSceneCommand.h"
#include "animationset/DC_ReorderScene.h"
#include "animationset/DC_ToggleSceneVisibility.h"

#include <string>

namespace {

// Positions in the sequence count from 1 on the command line, as in the scene list.
void PrintScenes(QmsContext& context, const CSketchrunDoc& document) {
    const CAnimationSetObj& set = *document.Set();
    if (context.json) {
        QmsJson json(context.out);
        json.BeginObject().Field("project", document.ProjectFile().Utf8()).Key("scenes").BeginArray();
        int position = 1;
        for (const CDopeSheetObj* scene : set.Sequence()) {
            size_t elements = 0;
            for (const CDopeSheetObj::LevelEntry& entry : scene->Levels())
                elements += entry.removed ? 0 : 1;
            json.BeginObject()
                .Field("position", position++)
                .Field("id", scene->SceneId())
                .Field("name", scene->Name())
                .Field("visible", scene->IsVisible())
                .Field("folder", CDopeSheetObj::SceneFolderName(scene->SceneId()))
                .Field("elements", static_cast<int64_t>(elements))
                .EndObject();
        }
        json.EndArray().EndObject();
        return;
    }
    int position = 1;
    for (const CDopeSheetObj* scene : set.Sequence())
        context.out << position++ << "  id " << scene->SceneId() << "  \"" << UT_ToUtf8(scene->Name()) << "\""
                    << (scene->IsVisible() ? "" : "  (hidden)") << "\n";
}

CDopeSheetObj& SceneArgument(CAnimationSetObj& set, const std::string& text) {
    const int64_t id = QmsArgs::ParseInt(text, "ID");
    CDopeSheetObj* scene = id >= 0 && id <= UINT32_MAX ? set.FindScene(static_cast<uint32_t>(id)) : nullptr;
    if (!scene)
        throw QmsFailure("Unknown scene id " + text + "; 'qms scene list' shows the scenes.");
    return *scene;
}

UT_WString NameArgument(const CAnimationSetObj& set, const std::string& text, uint32_t self = AS_kInvalidId) {
    const UT_WString name = UT_FromUtf8(text);
    const UT_WString refusal = set.CheckSceneName(name, self);
    if (!refusal.empty())
        throw QmsFailure(refusal);
    return name;
}

// Runs the change through the set's history, as the desktop program does, and saves.
void Apply(CSketchrunDoc& document, DC_Command& command, const UT_WString& name) {
    if (!command.Run(name))
        throw QmsFailure(UT_ToUtf8(name) + " failed; the project is unchanged.");
    QmsSaveProject(document);
}

} // namespace

int QmsRunScene(QmsContext& context, const std::vector<std::string>& words) {
    QmsArgs args(words, {"at"});
    args.Check(2, 4);
    const std::string verb = args.At(0, "ACTION");
    auto requireCount = [&args](size_t count) {
        if (args.Count() != count)
            throw QmsUsageError(args.Count() < count ? "too few arguments"
                                                     : "unexpected argument '" + args.At(count, "") + "'");
    };
    if (args.Option("at") && verb != "add")
        throw QmsUsageError("--at goes with add only");
    if (verb != "list" && verb != "add" && verb != "rename" && verb != "delete" && verb != "move" &&
        verb != "hide" && verb != "show")
        throw QmsUsageError("unknown action '" + verb +
                            "': use list, add, rename, delete, move, hide or show");

    QmsHost host;
    CSketchrunDoc document(host);
    QmsOpenProject(document, args.At(1, "PROJECT"));
    CAnimationSetObj& set = *document.Set();
    std::string done;

    if (verb == "list") {
        requireCount(2);
    } else if (verb == "add") {
        if (args.Count() > 3)
            requireCount(3);
        const UT_WString name =
            args.Count() == 3 ? NameArgument(set, args.At(2, "NAME")) : set.NewSceneName();
        const size_t index = args.Option("at")
                                 ? QmsArgs::ParsePosition(*args.Option("at"), set.Sequence().size() + 1)
                                 : set.Sequence().size();
        std::unique_ptr<DC_AddSceneCommand> add = DC_AddSceneCommand::NewScene(set, name, index);
        Apply(document, *add, DC_AddSceneCommand::kName);
        done = "added scene " + std::to_string(add->SceneId()) + " \"" + UT_ToUtf8(name) + "\" at position " +
               std::to_string(index + 1);
    } else if (verb == "rename") {
        requireCount(4);
        CDopeSheetObj& scene = SceneArgument(set, args.At(2, "ID"));
        const UT_WString name = NameArgument(set, args.At(3, "NAME"), scene.SceneId());
        DC_ChangeSceneProperties rename(set, scene.SceneId(), name, scene.BackgroundColour());
        Apply(document, rename, DC_ChangeSceneProperties::kName);
        done = "renamed scene " + std::to_string(scene.SceneId()) + " to \"" + UT_ToUtf8(name) + "\"";
    } else if (verb == "delete") {
        requireCount(3);
        CDopeSheetObj& scene = SceneArgument(set, args.At(2, "ID"));
        if (set.Sequence().size() < 2)
            throw QmsFailure("Scene " + std::to_string(scene.SceneId()) +
                             " is the only scene of the project; a project keeps at least one.");
        const uint32_t id = scene.SceneId();
        DC_DeleteSceneCommand remove(set, id, true);
        Apply(document, remove, DC_DeleteSceneCommand::kName);
        done = "deleted scene " + std::to_string(id);
    } else if (verb == "move") {
        requireCount(4);
        CDopeSheetObj& scene = SceneArgument(set, args.At(2, "ID"));
        const size_t target = QmsArgs::ParsePosition(args.At(3, "POSITION"), set.Sequence().size());
        const auto from = static_cast<size_t>(set.SequenceIndex(scene.SceneId()));
        DC_ReorderScene move(set, from, DC_ReorderScene::InsertionPointFor(from, target));
        Apply(document, move, DC_ReorderScene::kName);
        done =
            "moved scene " + std::to_string(scene.SceneId()) + " to position " + std::to_string(target + 1);
    } else {
        requireCount(3);
        CDopeSheetObj& scene = SceneArgument(set, args.At(2, "ID"));
        const bool hide = verb == "hide";
        if (scene.IsVisible() == hide) {
            DC_ToggleSceneVisibility toggle(set, scene.SceneId());
            Apply(document, toggle, DC_ToggleSceneVisibility::NameFor(set, scene.SceneId()));
        }
        done = (hide ? "hid scene " : "showed scene ") + std::to_string(scene.SceneId());
    }

    if (!context.json && !done.empty())
        context.out << done << "\n";
    PrintScenes(context, document);
    return 0;
}
