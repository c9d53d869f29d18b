#include "QmsProjectSummary.h"

#include "animationset/AS_CompositionOrder.h"
#include "animationset/AS_DopeSheetLevelObj.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"
#include "animationset/CSketchrunDoc.h"

namespace {

void PrintOrderJson(QmsJson& json, const char* key, const AS_CompositionOrder& order) {
    json.Key(key).BeginArray();
    for (const AS_CompositionRow& row : order.Rows()) {
        json.BeginObject()
            .Field("id", row.id)
            .Field("shown", row.shown)
            .Field("depth", static_cast<int64_t>(row.depth))
            .Field("collapsed", row.collapsed)
            .Field("enabled", row.enabled)
            .EndObject();
    }
    json.EndArray();
}

void PrintOrderText(std::ostream& out, const char* title, const CDopeSheetObj& scene,
                    const AS_CompositionOrder& order) {
    out << "    " << title << ":\n";
    for (const AS_CompositionRow& row : order.Rows()) {
        const AS_DopeSheetLevelObj* level = scene.FindElement(row.id);
        out << "      " << std::string(static_cast<size_t>(std::max(row.depth, 1)) * 2, ' ') << row.id << " "
            << (level ? UT_ToUtf8(level->GetDisplayName()) : std::string("?"))
            << (row.shown ? "" : " (hidden)") << (row.enabled ? "" : " (disabled)") << "\n";
    }
}

} // namespace

void QmsPrintOrdersText(std::ostream& out, const CDopeSheetObj& scene) {
    PrintOrderText(out, "drawing order", scene, scene.DrawingOrder());
    PrintOrderText(out, "sceneplanning order", scene, scene.SceneplanningOrder());
}

void QmsPrintOrdersJson(QmsJson& json, const CDopeSheetObj& scene) {
    PrintOrderJson(json, "drawingOrder", scene.DrawingOrder());
    PrintOrderJson(json, "sceneplanningOrder", scene.SceneplanningOrder());
}

void QmsPrintProject(QmsContext& context, const CSketchrunDoc& document) {
    const CAnimationSetObj& set = *document.Set();
    if (context.json) {
        QmsJson json(context.out);
        json.BeginObject()
            .Field("project", document.ProjectFile().Utf8())
            .Field("version", static_cast<int64_t>(set.Version()))
            .Field("name", set.Name())
            .Field("frameRate", set.FrameRate())
            .Field("cameraWidth", set.CameraWidth())
            .Field("cameraHeight", set.CameraHeight());
        json.Key("scenes").BeginArray();
        for (const CDopeSheetObj* scene : set.Sequence()) {
            json.BeginObject()
                .Field("id", scene->SceneId())
                .Field("name", scene->Name())
                .Field("visible", scene->IsVisible());
            json.Key("elements").BeginArray();
            for (const CDopeSheetObj::LevelEntry& entry : scene->Levels()) {
                if (entry.removed)
                    continue;
                json.BeginObject()
                    .Field("id", entry.level->GetId())
                    .Field("kind", entry.level->GetKind())
                    .Field("name", entry.level->GetDisplayName())
                    .EndObject();
            }
            json.EndArray();
            QmsPrintOrdersJson(json, *scene);
            json.EndObject();
        }
        json.EndArray();
        json.EndObject();
        return;
    }
    std::ostream& out = context.out;
    out << document.ProjectFile().Utf8() << "\n"
        << "  name: " << UT_ToUtf8(set.Name()) << "\n"
        << "  file version: " << set.Version() << "\n"
        << "  frame rate: " << set.FrameRate() << " fps\n"
        << "  camera: " << set.CameraWidth() << " x " << set.CameraHeight() << "\n"
        << "  scenes: " << set.Sequence().size() << "\n";
    for (const CDopeSheetObj* scene : set.Sequence()) {
        out << "  scene " << scene->SceneId() << " \"" << UT_ToUtf8(scene->Name()) << "\""
            << (scene->IsVisible() ? "" : " (hidden)") << "\n";
        for (const CDopeSheetObj::LevelEntry& entry : scene->Levels()) {
            if (entry.removed)
                continue;
            out << "    element " << entry.level->GetId() << " kind " << entry.level->GetKind() << " \""
                << UT_ToUtf8(entry.level->GetDisplayName()) << "\"\n";
        }
        QmsPrintOrdersText(out, *scene);
    }
}
