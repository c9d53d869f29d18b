// qms element: the elements of one scene, listed and changed through the set's command
// history, then saved.

#include "QmsCommands.h"
#include "QmsHost.h"
#include "QmsProjectSummary.h"
#include "animationset/AS_BaseLevelElement.h"
#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/AS_MediaLinkLevelObj.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"
#include "animationset/CSketchrunDoc.h"
#include "animationset/DC_CloneLevelCommand.h"
#include "animationset/DC_CreateLevelCommand.h"
#include "animationset/DC_ModifyElementNoteCommand.h"
#include "animationset/DC_RemoveLevelCommand.h"
#include "animationset/DC_RenameLevelCommand.h"
#include "animationset/DC_ReparentLevelCommand.h"
#include "animationset/DC_SwitchLevelCommand.h"
#include "animationset/DC_UpdateElementCommand.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <set>
#include <sstream>

namespace {

struct KindName {
    const char* name;
    uint32_t kind;
    // The sort for the creation command, or -1 where qms cannot make the kind.
    int createCode;
};

constexpr std::array<KindName, 8> kKinds = {{
    {"drawing", kLevelVectorDrawing, DC_CreateLevelCommand::kVectorDrawing},
    {"image", kLevelImage, DC_CreateLevelCommand::kBitmap},
    {"sound", kLevelSound, DC_CreateLevelCommand::kSound},
    {"peg", kLevelPeg, DC_CreateLevelCommand::kPeg},
    {"camera", kLevelCamera, DC_CreateLevelCommand::kCamera},
    {"media", kLevelMedia, DC_CreateLevelCommand::kMediaLink},
    {"effect", kLevelEffect, -1},
    {"group", kLevelParamGroup, -1},
}};

const char* KindText(uint32_t kind) {
    for (const KindName& k : kKinds)
        if (k.kind == kind)
            return k.name;
    return "unknown";
}

// The name a new element of the kind gets when none is given.
UT_WString DefaultName(const std::string& kind) {
    UT_WString name = UT_FromUtf8(kind);
    name[0] = static_cast<char16_t>(name[0] - u'a' + u'A');
    return name;
}

std::string Text(const UT_WString& text) {
    return UT_ToUtf8(text);
}

std::string Number(double value) {
    std::ostringstream out;
    out << value;
    return out.str();
}

std::string Point(const C3DPoint& p) {
    return Number(p.x) + " " + Number(p.y) + " " + Number(p.z);
}

const char* const kElementTypes[] = {"normal", "foreground", "background"};

// A scene by id, or by name when the argument is not a number.
CDopeSheetObj& SceneArgument(CAnimationSetObj& set, const std::string& text) {
    char* end = nullptr;
    const unsigned long long id = std::strtoull(text.c_str(), &end, 10);
    CDopeSheetObj* scene = nullptr;
    if (!text.empty() && *end == 0 && id <= UINT32_MAX) {
        scene = set.FindScene(static_cast<uint32_t>(id));
    } else {
        for (CDopeSheetObj* candidate : set.Sequence())
            if (candidate->Name() == UT_FromUtf8(text))
                scene = candidate;
    }
    if (!scene)
        throw QmsFailure("Unknown scene " + text + "; 'qms scene list' shows the scenes.");
    return *scene;
}

// An element of the scene by id, or by its name when that names one element only.
AS_DopeSheetLevelObj& ElementArgument(const CDopeSheetObj& scene, const std::string& text) {
    char* end = nullptr;
    const unsigned long long id = std::strtoull(text.c_str(), &end, 10);
    AS_DopeSheetLevelObj* found = nullptr;
    if (!text.empty() && *end == 0 && id <= UINT32_MAX) {
        if (!scene.IsRemoved(static_cast<uint32_t>(id)))
            found = scene.FindElement(static_cast<uint32_t>(id));
    } else {
        int matches = 0;
        for (const CDopeSheetObj::LevelEntry& entry : scene.Levels()) {
            if (entry.removed)
                continue;
            if (entry.level->GetDisplayName() == UT_FromUtf8(text)) {
                found = entry.level.get();
                matches = 1;
                break;
            }
            if (entry.level->GetName() == UT_FromUtf8(text)) {
                found = entry.level.get();
                ++matches;
            }
        }
        if (matches > 1)
            throw QmsFailure("The name \"" + text + "\" is shared by clones; give the element's id.");
    }
    if (!found)
        throw QmsFailure("Unknown element " + text + " in scene " + std::to_string(scene.SceneId()) +
                         "; 'qms element list' shows the elements.");
    return *found;
}

UT_WString NameArgument(const CDopeSheetObj& scene, const std::string& text, uint32_t self = AS_kInvalidId) {
    const UT_WString name = UT_FromUtf8(text);
    const UT_WString refusal = scene.CheckElementName(name, self);
    if (!refusal.empty())
        throw QmsFailure(refusal);
    return name;
}

uint32_t CountArgument(const std::string& text, const char* what, int64_t low, int64_t high) {
    const int64_t value = QmsArgs::ParseInt(text, what);
    if (value < low || value > high)
        throw QmsUsageError(std::string(what) + " must lie between " + std::to_string(low) + " and " +
                            std::to_string(high) + ", not " + text);
    return static_cast<uint32_t>(value);
}

// Runs the change through the set's history, as the desktop program does, and saves.
void Apply(CSketchrunDoc& document, DC_Command& command, const UT_WString& name) {
    if (!command.Run(name))
        throw QmsFailure(UT_ToUtf8(name) + " failed; the project is unchanged.");
    QmsSaveProject(document);
}

// The rows below `id` in the Sceneplanning order.
std::vector<uint32_t> Descendants(const CDopeSheetObj& scene, uint32_t id) {
    const AS_SPCompositionOrder& order = scene.SceneplanningOrder();
    std::vector<uint32_t> ids;
    const int row = order.FindRow(id);
    if (row < 0)
        return ids;
    for (int r = row + 1; r < order.SubtreeEnd(row); ++r)
        ids.push_back(order.GetLevelId(r));
    return ids;
}

void PrintPlacementJson(QmsJson& json, const AS_Placement& p) {
    auto point = [&json](const char* key, const C3DPoint& value) {
        json.Key(key)
            .BeginArray()
            .Value(double(value.x))
            .Value(double(value.y))
            .Value(double(value.z))
            .EndArray();
    };
    json.Key("placement").BeginObject();
    point("offset", p.offset);
    point("rotationPivot", p.rotationPivot);
    point("scalePivot", p.scalePivot);
    point("fourthPoint", p.fourthPoint);
    json.Field("startFrame", p.startFrame)
        .Field("rotation", p.rotation)
        .Field("verticalScale", p.verticalScale)
        .Field("horizontalScale", p.horizontalScale)
        .Field("elementType", p.elementType)
        .Field("keepProportions", p.keepProportions)
        .EndObject();
}

void PrintElements(QmsContext& context, const CSketchrunDoc& document, const CDopeSheetObj& scene) {
    if (context.json) {
        QmsJson json(context.out);
        json.BeginObject()
            .Field("project", document.ProjectFile().Utf8())
            .Field("scene", scene.SceneId())
            .Key("elements")
            .BeginArray();
        for (const CDopeSheetObj::LevelEntry& entry : scene.Levels()) {
            if (entry.removed)
                continue;
            const AS_DopeSheetLevelObj& level = *entry.level;
            json.BeginObject()
                .Field("id", level.GetId())
                .Field("kind", KindText(level.GetKind()))
                .Field("kindCode", level.GetKind())
                .Field("name", level.GetName())
                .Field("displayName", level.GetDisplayName())
                .Field("commonId", level.GetCommonId())
                .Field("note", level.GetNote());
            if (const auto* drawing = dynamic_cast<const AS_DrawingLevelObj*>(&level))
                json.Field("drawings", static_cast<int64_t>(drawing->CommonDrawing()->DrawingCount()))
                    .Field("frames", static_cast<int64_t>(drawing->Cells().size()));
            if (const auto* media = dynamic_cast<const AS_MediaLinkLevelObj*>(&level))
                json.Field("runs", static_cast<int64_t>(media->Cells().size()));
            if (const auto* element = dynamic_cast<const AS_BaseLevelElement*>(&level))
                PrintPlacementJson(json, element->Placement());
            json.EndObject();
        }
        json.EndArray();
        QmsPrintOrdersJson(json, scene);
        json.EndObject();
        return;
    }
    std::ostream& out = context.out;
    out << "scene " << scene.SceneId() << " \"" << Text(scene.Name()) << "\"\n";
    for (const CDopeSheetObj::LevelEntry& entry : scene.Levels()) {
        if (entry.removed)
            continue;
        const AS_DopeSheetLevelObj& level = *entry.level;
        out << "  " << level.GetId() << "  " << KindText(level.GetKind()) << "  \""
            << Text(level.GetDisplayName()) << "\"";
        if (!level.GetNote().empty())
            out << "  note \"" << Text(level.GetNote()) << "\"";
        out << "\n";
        if (const auto* element = dynamic_cast<const AS_BaseLevelElement*>(&level)) {
            const AS_Placement& p = element->Placement();
            out << "      offset " << Point(p.offset) << "  rotation " << Number(p.rotation) << "  scale "
                << Number(p.horizontalScale) << " " << Number(p.verticalScale)
                << (p.keepProportions ? " (kept)" : "") << "  start " << p.startFrame << "  "
                << (p.elementType < 3 ? kElementTypes[p.elementType] : "?") << "\n";
        }
    }
    QmsPrintOrdersText(out, scene);
}

// The value of `qms element set`: the field code and its value from the words after it.
std::pair<uint32_t, DC_UpdateElementCommand::Value> FieldArgument(const std::vector<std::string>& words) {
    using Cmd = DC_UpdateElementCommand;
    struct Field {
        const char* name;
        uint32_t code;
        // 0 no value, 1 a number, 3 a point, -1 a word of its own.
        int values;
    };
    static const Field kFields[] = {
        {"offset", Cmd::kOffset, 3},
        {"start", Cmd::kStartFrame, 1},
        {"rotation", Cmd::kRotation, 1},
        {"rotation-pivot-y", Cmd::kRotationPivotY, 1},
        {"rotation-pivot-x", Cmd::kRotationPivotX, 1},
        {"rotation-pivot-z", Cmd::kRotationPivotZ, 1},
        {"rotation-pivot", Cmd::kRotationPivot, 3},
        {"scale-pivot-y", Cmd::kScalePivotY, 1},
        {"scale-pivot-x", Cmd::kScalePivotX, 1},
        {"scale-pivot-z", Cmd::kScalePivotZ, 1},
        {"scale-pivot", Cmd::kScalePivot, 3},
        {"fourth-point", Cmd::kFourthPoint, 3},
        {"flip-vertical", Cmd::kFlipVertical, 0},
        {"flip-horizontal", Cmd::kFlipHorizontal, 0},
        {"vertical-scale", Cmd::kVerticalScale, 1},
        {"horizontal-scale", Cmd::kHorizontalScale, 1},
        {"type", Cmd::kElementType, -1},
        {"keep-proportions", Cmd::kKeepProportions, -1},
        {"name", Cmd::kElementName, -1},
    };
    const std::string& name = words.front();
    const Field* field = nullptr;
    for (const Field& f : kFields)
        if (name == f.name)
            field = &f;
    if (!field) {
        std::string names;
        for (const Field& f : kFields)
            names += std::string(names.empty() ? "" : ", ") + f.name;
        throw QmsUsageError("unknown field '" + name + "': use " + names);
    }
    const size_t wanted = field->values < 0 ? 1 : static_cast<size_t>(field->values);
    if (words.size() - 1 != wanted)
        throw QmsUsageError(name + " takes " + std::to_string(wanted) + " value" + (wanted == 1 ? "" : "s"));
    Cmd::Value value;
    if (field->values == 3)
        value.point = C3DPoint(QmsArgs::ParseDouble(words[1], "X"), QmsArgs::ParseDouble(words[2], "Y"),
                               QmsArgs::ParseDouble(words[3], "Z"));
    else if (field->code == Cmd::kStartFrame)
        value.number = CountArgument(words[1], "START", 0, UINT32_MAX);
    else if (field->values == 1)
        value.number = QmsArgs::ParseDouble(words[1], "VALUE");
    if (field->code == Cmd::kElementType) {
        int found = -1;
        for (int i = 0; i < 3; ++i)
            if (words[1] == kElementTypes[i])
                found = i;
        if (found < 0)
            throw QmsUsageError("type must be normal, foreground or background, not '" + words[1] + "'");
        value.number = found;
    } else if (field->code == Cmd::kKeepProportions) {
        if (words[1] != "on" && words[1] != "off")
            throw QmsUsageError("keep-proportions must be on or off, not '" + words[1] + "'");
        value.number = words[1] == "on" ? 1 : 0;
    } else if (field->code == Cmd::kElementName) {
        value.name = UT_FromUtf8(words[1]);
    }
    return {field->code, value};
}

} // namespace

int QmsRunElement(QmsContext& context, const std::vector<std::string>& words) {
    QmsArgs args(words, {"count", "frames", "before", "after", "order"});
    const std::string verb = args.At(0, "ACTION");
    static const std::set<std::string> kVerbs = {"list", "add", "rename", "delete", "clone",
                                                 "note", "set", "parent", "move"};
    if (!kVerbs.count(verb))
        throw QmsUsageError("unknown action '" + verb +
                            "': use list, add, rename, delete, clone, note, set, parent or move");
    args.Check(3, verb == "delete" || verb == "set" ? SIZE_MAX : 6, {"with-children", "top"});
    auto requireCount = [&args](size_t low, size_t high) {
        if (args.Count() < low)
            throw QmsUsageError("too few arguments");
        if (args.Count() > high)
            throw QmsUsageError("unexpected argument '" + args.At(high, "") + "'");
    };
    auto onlyWith = [&args, &verb](const char* option, const char* allowed) {
        if ((args.Option(option) || args.Flag(option)) && verb != allowed)
            throw QmsUsageError(std::string("--") + option + " goes with " + allowed + " only");
    };
    onlyWith("count", "add");
    onlyWith("frames", "add");
    onlyWith("with-children", "delete");
    onlyWith("before", "move");
    onlyWith("after", "move");
    onlyWith("top", "move");
    onlyWith("order", "move");

    QmsHost host;
    CSketchrunDoc document(host);
    QmsOpenProject(document, args.At(1, "PROJECT"));
    CAnimationSetObj& set = *document.Set();
    CDopeSheetObj& scene = SceneArgument(set, args.At(2, "SCENE"));
    const uint32_t sceneId = scene.SceneId();
    std::string done;

    if (verb == "list") {
        requireCount(3, 3);
    } else if (verb == "add") {
        requireCount(4, 5);
        const std::string kind = args.At(3, "KIND");
        int code = -1;
        for (const KindName& k : kKinds)
            if (kind == k.name)
                code = k.createCode;
        if (code < 0)
            throw QmsUsageError("unknown kind '" + kind +
                                "': use drawing, image, sound, peg, camera or media");
        const uint32_t count =
            args.Option("count") ? CountArgument(*args.Option("count"), "COUNT", 1, 1000) : 1;
        const uint32_t frames =
            args.Option("frames") ? CountArgument(*args.Option("frames"), "FRAMES", 2, 100000) : 10;
        // Without a name, the kind's name, numbered on when taken.
        const UT_WString name =
            args.Count() == 5 ? NameArgument(scene, args.At(4, "NAME")) : DefaultName(kind);
        DC_CreateLevelCommand create(set, sceneId, count, name, static_cast<uint32_t>(code), frames);
        Apply(document, create, DC_CreateLevelCommand::kName);
        done = "added";
        for (uint32_t id : create.CreatedIds())
            done += " " + std::to_string(id) + " \"" + Text(scene.FindElement(id)->GetName()) + "\"";
    } else if (verb == "rename") {
        requireCount(5, 5);
        const AS_DopeSheetLevelObj& element = ElementArgument(scene, args.At(3, "ELEMENT"));
        const UT_WString name = NameArgument(scene, args.At(4, "NAME"), element.GetId());
        DC_RenameLevelCommand rename(set, sceneId, element.GetId(), name);
        Apply(document, rename, DC_RenameLevelCommand::kName);
        done = "renamed " + std::to_string(element.GetId()) + " to \"" + Text(name) + "\"";
    } else if (verb == "delete") {
        requireCount(4, SIZE_MAX);
        std::vector<uint32_t> ids;
        for (size_t i = 3; i < args.Count(); ++i) {
            const uint32_t id = ElementArgument(scene, args.At(i, "ELEMENT")).GetId();
            if (std::find(ids.begin(), ids.end(), id) == ids.end())
                ids.push_back(id);
        }
        // Rows below a deleted row would leave the Sceneplanning order with it.
        const std::vector<uint32_t> named = ids;
        for (uint32_t id : named)
            for (uint32_t below : Descendants(scene, id)) {
                if (std::find(ids.begin(), ids.end(), below) != ids.end())
                    continue;
                if (!args.Flag("with-children"))
                    throw QmsFailure("Element " + std::to_string(id) + " \"" +
                                     Text(scene.FindElement(id)->GetDisplayName()) +
                                     "\" has elements below it in the sceneplanning order; delete them "
                                     "with --with-children, or give them another parent first.");
                ids.push_back(below);
            }
        DC_RemoveLevelCommand remove(set, sceneId, ids);
        Apply(document, remove, DC_RemoveLevelCommand::kName);
        done = "deleted";
        for (uint32_t id : ids)
            done += " " + std::to_string(id);
    } else if (verb == "clone") {
        requireCount(4, 4);
        const AS_DopeSheetLevelObj& element = ElementArgument(scene, args.At(3, "ELEMENT"));
        if (element.GetKind() == kLevelParamGroup)
            throw QmsFailure("A parameter group cannot be cloned.");
        DC_CloneLevelCommand clone(set, sceneId, element.GetId());
        Apply(document, clone, DC_CloneLevelCommand::kName);
        done = "cloned " + std::to_string(element.GetId()) + " as " + std::to_string(clone.CloneId());
    } else if (verb == "note") {
        requireCount(5, 5);
        const AS_DopeSheetLevelObj& element = ElementArgument(scene, args.At(3, "ELEMENT"));
        DC_ModifyElementNoteCommand note(set, sceneId, element.GetId(), UT_FromUtf8(args.At(4, "TEXT")));
        Apply(document, note, DC_ModifyElementNoteCommand::kName);
        done = "noted " + std::to_string(element.GetId());
    } else if (verb == "set") {
        requireCount(5, 8);
        const AS_DopeSheetLevelObj& element = ElementArgument(scene, args.At(3, "ELEMENT"));
        const std::vector<std::string> rest(args.Positionals().begin() + 4, args.Positionals().end());
        auto [field, value] = FieldArgument(rest);
        if (field == DC_UpdateElementCommand::kElementName) {
            value.name = NameArgument(scene, rest[1], element.GetId());
        } else if (!dynamic_cast<const AS_BaseLevelElement*>(&element)) {
            throw QmsFailure("Element " + std::to_string(element.GetId()) + " is a " +
                             KindText(element.GetKind()) +
                             "; only drawing, image and media elements have these fields.");
        }
        DC_UpdateElementCommand update(set, sceneId, element.GetId(), field, value);
        Apply(document, update, DC_UpdateElementCommand::kName);
        done = "changed " + rest.front() + " of " + std::to_string(element.GetId());
    } else if (verb == "parent") {
        requireCount(5, 5);
        const AS_DopeSheetLevelObj& element = ElementArgument(scene, args.At(3, "ELEMENT"));
        const std::string parentText = args.At(4, "PARENT");
        uint32_t parent = AS_kInvalidId;
        if (parentText != "none") {
            parent = ElementArgument(scene, parentText).GetId();
            const std::vector<uint32_t> below = Descendants(scene, element.GetId());
            if (parent == element.GetId() || std::find(below.begin(), below.end(), parent) != below.end())
                throw QmsFailure("Element " + std::to_string(parent) + " lies below element " +
                                 std::to_string(element.GetId()) + "; an element cannot hang below itself.");
        }
        if (scene.SceneplanningOrder().FindRow(element.GetId()) < 0 ||
            (parent != AS_kInvalidId && scene.SceneplanningOrder().FindRow(parent) < 0))
            throw QmsFailure("The element has no row in the sceneplanning order.");
        DC_ReparentLevelCommand reparent(set, sceneId, element.GetId(), parent);
        Apply(document, reparent, DC_ReparentLevelCommand::kName);
        done = "hung " + std::to_string(element.GetId()) + " below " +
               (parent == AS_kInvalidId ? std::string("nothing") : std::to_string(parent));
    } else {
        requireCount(4, 4);
        const AS_DopeSheetLevelObj& element = ElementArgument(scene, args.At(3, "ELEMENT"));
        const std::string order = args.Option("order").value_or("drawing");
        if (order != "drawing" && order != "sceneplanning")
            throw QmsUsageError("--order must be drawing or sceneplanning, not '" + order + "'");
        const int orderIndex = order == "drawing" ? 0 : 1;
        const int places =
            (args.Option("before") ? 1 : 0) + (args.Option("after") ? 1 : 0) + (args.Flag("top") ? 1 : 0);
        if (places != 1)
            throw QmsUsageError("move takes one of --before ELEMENT, --after ELEMENT or --top");
        DC_SwitchLevelCommand::Move move;
        move.element = element.GetId();
        if (!args.Flag("top")) {
            move.target =
                ElementArgument(scene, args.Option("before").value_or(args.Option("after").value_or("")))
                    .GetId();
            move.before = args.Option("before").has_value();
        }
        const AS_CompositionOrder& rows = orderIndex == 0
                                              ? static_cast<const AS_CompositionOrder&>(scene.DrawingOrder())
                                              : scene.SceneplanningOrder();
        if (rows.FindRow(move.element) < 0 || (move.target != AS_kInvalidId && rows.FindRow(move.target) < 0))
            throw QmsFailure("The element has no row in the " + order + " order.");
        DC_SwitchLevelCommand switchRows(set, sceneId, orderIndex, {move});
        Apply(document, switchRows, DC_SwitchLevelCommand::kName);
        done = "moved " + std::to_string(element.GetId()) + " in the " + order + " order";
    }

    if (!context.json && !done.empty())
        context.out << done << "\n";
    PrintElements(context, document, *set.FindScene(sceneId));
    return 0;
}
