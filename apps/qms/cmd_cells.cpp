// qms cells: the exposure of one drawing element, shown frame by frame or run by run, and
// changed through the set's command history, then saved. Frames count from 1, as the
// exposure sheet shows them.

#include "QmsCommands.h"
#include "QmsHost.h"
#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"
#include "animationset/CSketchrunDoc.h"
#include "animationset/DC_ReLabelCellCommand.h"
#include "animationset/DC_RemoveCellsCommand.h"
#include "animationset/DC_RestoreTimingCommand.h"
#include "core/UT_NameRules.h"

#include <string>

namespace {

AS_DrawingLevelObj& ElementArgument(const CDopeSheetObj& scene, const std::string& text) {
    AS_DopeSheetLevelObj* element = scene.FindElementByName(UT_FromUtf8(text));
    const bool numeric =
        !text.empty() && text.size() <= 10 && text.find_first_not_of("0123456789") == std::string::npos;
    if (!element && numeric) {
        const uint64_t id = std::stoull(text);
        if (id <= UINT32_MAX && !scene.IsRemoved(static_cast<uint32_t>(id)))
            element = scene.FindElement(static_cast<uint32_t>(id));
    }
    if (!element)
        throw QmsFailure("Scene \"" + UT_ToUtf8(scene.Name()) + "\" has no element '" + text +
                         "'; 'qms info' shows the elements.");
    auto* cells = dynamic_cast<AS_DrawingLevelObj*>(element);
    if (!cells)
        throw QmsFailure("Element \"" + UT_ToUtf8(element->GetName()) +
                         "\" has no cells of its own: only drawing and image elements do.");
    return *cells;
}

// A frame as the user counts it, from 1, as the model's frame from 0.
int32_t FrameArgument(const std::string& text, const char* what) {
    const int64_t frame = QmsArgs::ParseInt(text, what);
    if (frame < 1 || frame > AS_kFrameLimit)
        throw QmsFailure(std::string(what) + " must lie between 1 and " + std::to_string(AS_kFrameLimit) +
                         ", not " + text + ".");
    return static_cast<int32_t>(frame - 1);
}

UT_WString DrawingNameArgument(const std::string& text) {
    const UT_WString name = UT_FromUtf8(text);
    switch (UT_CheckName(name)) {
    case UT_NameProblem::kNone:
        return name;
    case UT_NameProblem::kEmpty:
        throw QmsFailure("The name of a drawing cannot be empty.");
    case UT_NameProblem::kTooLong:
    case UT_NameProblem::kForbiddenCharacter:
        break;
    }
    throw QmsFailure("This name contains invalid characters; please choose a different one.");
}

UT_WString DrawingName(const AS_DrawingLevelObj& level, uint32_t id) {
    const AS_DopeSheetDrawingObj* drawing =
        level.CommonDrawing() ? level.CommonDrawing()->FindDrawing(id) : nullptr;
    return drawing ? drawing->GetName() : UT_WString();
}

// Every frame up to the last one that shows a drawing.
void PrintCells(QmsContext& context, const AS_DrawingLevelObj& level) {
    const int32_t end = level.GetDuration() > 0 ? level.GetLastFrame() + 1 : 0;
    if (context.json) {
        QmsJson json(context.out);
        json.BeginObject().Field("element", level.GetName()).Field("frames", end).Key("cells").BeginArray();
        for (int32_t frame = 0; frame < end; ++frame) {
            const uint32_t id = level.DrawingIdAt(frame);
            json.BeginObject().Field("frame", frame + 1).Key("drawing");
            if (id == AS_kInvalidId)
                json.Null();
            else
                json.Value(DrawingName(level, id));
            json.EndObject();
        }
        json.EndArray().EndObject();
        return;
    }
    if (end == 0)
        context.out << "no cells\n";
    for (int32_t frame = 0; frame < end; ++frame) {
        const uint32_t id = level.DrawingIdAt(frame);
        context.out << frame + 1 << "  " << (id == AS_kInvalidId ? "-" : UT_ToUtf8(DrawingName(level, id)))
                    << "\n";
    }
}

// Each run, and each stretch of blank frames between them.
void PrintRuns(QmsContext& context, const AS_DrawingLevelObj& level) {
    const int32_t end = level.GetDuration() > 0 ? level.GetLastFrame() + 1 : 0;
    struct Run {
        int32_t first;
        int32_t length;
        uint32_t drawing;
    };
    std::vector<Run> runs;
    for (int32_t frame = 0; frame < end;) {
        const uint32_t id = level.DrawingIdAt(frame);
        int32_t length = 1;
        if (id != AS_kInvalidId) {
            int32_t start = frame;
            length = level.GetRunLength(start);
        } else {
            while (frame + length < end && level.DrawingIdAt(frame + length) == AS_kInvalidId)
                ++length;
        }
        runs.push_back({frame, length, id});
        frame += length;
    }
    if (context.json) {
        QmsJson json(context.out);
        json.BeginObject().Field("element", level.GetName()).Key("runs").BeginArray();
        for (const Run& run : runs) {
            json.BeginObject()
                .Field("first", run.first + 1)
                .Field("last", run.first + run.length)
                .Key("drawing");
            if (run.drawing == AS_kInvalidId)
                json.Null();
            else
                json.Value(DrawingName(level, run.drawing));
            json.Field("length", run.length).EndObject();
        }
        json.EndArray().EndObject();
        return;
    }
    if (runs.empty())
        context.out << "no cells\n";
    for (const Run& run : runs)
        context.out << run.first + 1 << "-" << run.first + run.length << "  "
                    << (run.drawing == AS_kInvalidId ? "-" : UT_ToUtf8(DrawingName(level, run.drawing)))
                    << "  " << run.length << (run.length == 1 ? " frame" : " frames") << "\n";
}

void Apply(CSketchrunDoc& document, DC_Command& command, const UT_WString& name) {
    if (!command.Run(name))
        throw QmsFailure(UT_ToUtf8(name) + " failed; the project is unchanged.");
    QmsSaveProject(document);
}

} // namespace

int QmsRunCells(QmsContext& context, const std::vector<std::string>& words) {
    QmsArgs args(words, {});
    args.Check(3, 7);
    const std::string verb = args.Count() > 3 ? args.At(3, "ACTION") : "show";
    auto requireCount = [&args](size_t count) {
        if (args.Count() != count)
            throw QmsUsageError(args.Count() < count ? "too few arguments"
                                                     : "unexpected argument '" + args.At(count, "") + "'");
    };
    if (verb != "show" && verb != "set" && verb != "runs" && verb != "clear" && verb != "remove" &&
        verb != "timing")
        throw QmsUsageError("unknown action '" + verb + "': use set, runs, clear, remove or timing");

    QmsHost host;
    CSketchrunDoc document(host);
    QmsOpenProject(document, args.At(0, "PROJECT"));
    CAnimationSetObj& set = *document.Set();
    CDopeSheetObj& scene = QmsSceneArgument(set, args.At(1, "SCENE"));
    AS_DrawingLevelObj& level = ElementArgument(scene, args.At(2, "ELEMENT"));
    const uint32_t sceneId = scene.SceneId();
    const uint32_t elementId = level.GetId();
    set.SetCurrentScene(&scene, true);

    std::string done;
    if (verb == "show" || verb == "runs") {
        requireCount(verb == "show" ? 3 : 4);
    } else if (verb == "set") {
        requireCount(6);
        const int32_t frame = FrameArgument(args.At(4, "FRAME"), "FRAME");
        const UT_WString name = DrawingNameArgument(args.At(5, "DRAWING"));
        const bool made = level.FindDrawingId(name) == AS_kInvalidId;
        DC_ReLabelCellCommand relabel(set, DC_CellSelection::OfElement(sceneId, elementId, frame, frame),
                                      name);
        Apply(document, relabel, DC_ReLabelCellCommand::kName);
        done = "frame " + std::to_string(frame + 1) + " shows drawing \"" + UT_ToUtf8(name) + "\"" +
               (made ? " (new)" : "");
    } else {
        requireCount(verb == "timing" ? 7 : 6);
        const int32_t from = FrameArgument(args.At(4, "FROM"), "FROM");
        const int32_t to = FrameArgument(args.At(5, "TO"), "TO");
        if (to < from)
            throw QmsFailure("TO (" + std::to_string(to + 1) + ") comes before FROM (" +
                             std::to_string(from + 1) + ").");
        const DC_CellSelection selection = DC_CellSelection::OfElement(sceneId, elementId, from, to);
        const std::string frames = "frames " + std::to_string(from + 1) + " to " + std::to_string(to + 1);
        if (verb == "timing") {
            const int64_t length = QmsArgs::ParseInt(args.At(6, "LENGTH"), "LENGTH");
            if (length < 1 || length > 1000)
                throw QmsFailure("LENGTH must lie between 1 and 1000, not " + args.At(6, "LENGTH") + ".");
            DC_RestoreTimingCommand timing(set, selection, static_cast<int32_t>(length));
            Apply(document, timing, DC_RestoreTimingCommand::kName);
            done = "held every run of " + frames + " for " + std::to_string(length) +
                   (length == 1 ? " frame" : " frames");
        } else {
            const bool shift = verb == "remove";
            DC_RemoveCellsCommand removal(set, selection, shift);
            Apply(document, removal,
                  shift ? DC_RemoveCellsCommand::kDeleteName : DC_RemoveCellsCommand::kCutName);
            done = shift ? "removed " + frames + "; the later frames moved back" : "cleared " + frames;
        }
    }

    // The element as it stands after the change (its object may be the same).
    const CDopeSheetObj* after = set.FindScene(sceneId);
    const auto* shown =
        after ? dynamic_cast<const AS_DrawingLevelObj*>(after->FindElement(elementId)) : nullptr;
    if (!shown)
        throw QmsFailure("The element went away while it was changed.");
    if (!context.json && !done.empty())
        context.out << done << "\n";
    if (verb == "runs")
        PrintRuns(context, *shown);
    else
        PrintCells(context, *shown);
    return 0;
}
