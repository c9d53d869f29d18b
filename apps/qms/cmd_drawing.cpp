// qms drawing info and svg: a vector drawing file (.qmd) as the program sees it. The file
// is read with an empty palette list, so that the colours it carries are recovered and a
// drawing of an older form is rebuilt into its planar map, as on first use.

#include "QmsCommands.h"
#include "colour/CM_Color.h"
#include "colour/CM_PaletteList.h"
#include "core/DB_Exception.h"
#include "core/DB_File.h"
#include "core/DB_FileContainer.h"
#include "vector/GR_Layer.h"
#include "vector/GR_LayerNode.h"
#include "vector/GR_LayerSvg.h"
#include "vector/GR_VectorDrawingObj.h"
#include "vector/GR_VectorStroke.h"

#include <cstdio>
#include <fstream>
#include <sstream>

namespace {

struct LoadedDrawing {
    CM_PaletteList palettes;
    GR_VectorDrawingObj drawing;
    int32_t version = 0;
    bool rebuilt = false;
};

void Load(const std::string& file, LoadedDrawing& loaded) {
    const UT_FilePath path(file);
    if (!path.IsFile())
        throw QmsFailure("no such file: " + file);
    DB_File stream;
    if (!stream.Open(path, DB_File::Mode::Read))
        throw QmsFailure("unable to open " + file);
    DB_Archive archive(&stream, false);
    archive.SetContext(&loaded.palettes);
    DB_FileContainer::ReadHeader(archive, DB_FileContainer::kVectorDrawing, path.Wide());
    loaded.version = archive.Version();
    archive.ReadTyped(loaded.drawing);
    loaded.rebuilt = loaded.drawing.IsModified();
}

std::string Hex(UT_UniqueId id) {
    char text[24];
    std::snprintf(text, sizeof text, "0x%016llx", static_cast<unsigned long long>(id.Value()));
    return text;
}

std::string PathText(const GR_LayerPath& path) {
    std::string text;
    for (size_t i = 0; i < path.size(); ++i)
        text += (i ? "/" : "") + std::to_string(path[i]);
    return text;
}

struct LayerFacts {
    GR_LayerPath path;
    uint16_t kind = 0;
    size_t strokes = 0, vertices = 0, components = 0, zones = 0, painted = 0;
    bool planar = true;
    std::string problems;
};

LayerFacts FactsOf(GR_VectorDrawingObj& drawing, GR_Layer& layer) {
    LayerFacts facts;
    facts.path = drawing.PathOf(&layer);
    facts.kind = layer.GetKind();
    facts.strokes = layer.StrokeCount();
    facts.vertices = layer.Vertices().size();
    facts.components = layer.Components().size();
    for (GR_Zone* zone : layer.Zones()) {
        if (zone->IsOuter())
            continue;
        ++facts.zones;
        facts.painted += zone->Color() ? 1 : 0;
    }
    facts.planar = layer.CheckInvariants(&facts.problems) && layer.CheckZoneColors();
    return facts;
}

const char* ClassName(const CM_BaseColorObj& entry) {
    if (const auto* colour = dynamic_cast<const CM_Color*>(&entry)) {
        switch (colour->GetGradientKind()) {
        case CM_Color::kLinear:
            return "linear";
        case CM_Color::kRadial:
            return "radial";
        default:
            return "solid";
        }
    }
    return "texture";
}

int RunInfo(QmsContext& context, const QmsArgs& args) {
    args.Check(2, 2);
    const std::string file = args.At(1, "FILE");
    LoadedDrawing loaded;
    Load(file, loaded);
    GR_VectorDrawingObj& drawing = loaded.drawing;
    std::vector<LayerFacts> layers;
    for (GR_Layer* layer = drawing.FirstLayer(); layer; layer = drawing.NextLayer(layer))
        layers.push_back(FactsOf(drawing, *layer));
    const CM_Palette* recovered = loaded.palettes.GetRecoveredPalette();
    const GR_Box2d bounds = drawing.GetBounds();

    if (context.json) {
        QmsJson json(context.out);
        json.BeginObject()
            .Field("file", file)
            .Field("version", int64_t(loaded.version))
            .Field("rebuilt", loaded.rebuilt);
        json.Key("bounds");
        if (bounds.empty)
            json.Null();
        else
            json.BeginArray()
                .Value(bounds.xmin)
                .Value(bounds.ymin)
                .Value(bounds.xmax)
                .Value(bounds.ymax)
                .EndArray();
        json.Key("colours").BeginArray();
        for (size_t i = 0; recovered && i < recovered->GetEntryCount(); ++i) {
            const CM_BaseColorObj& entry = *recovered->GetEntry(i);
            json.BeginObject()
                .Field("id", Hex(entry.GetId()))
                .Field("name", entry.GetName())
                .Field("class", ClassName(entry))
                .EndObject();
        }
        json.EndArray().Key("layers").BeginArray();
        for (const LayerFacts& f : layers) {
            json.BeginObject()
                .Field("path", PathText(f.path))
                .Field("kind", uint32_t(f.kind))
                .Field("strokes", int64_t(f.strokes))
                .Field("vertices", int64_t(f.vertices))
                .Field("components", int64_t(f.components))
                .Field("zones", int64_t(f.zones))
                .Field("painted", int64_t(f.painted))
                .Field("planar", f.planar)
                .EndObject();
        }
        json.EndArray().EndObject();
        return 0;
    }
    context.out << file << ": version " << loaded.version
                << (loaded.rebuilt ? ", rebuilt from an older form" : "") << "\n";
    if (!bounds.empty)
        context.out << "bounds " << bounds.xmin << " " << bounds.ymin << " " << bounds.xmax << " "
                    << bounds.ymax << "\n";
    const size_t colourCount = recovered ? recovered->GetEntryCount() : 0;
    context.out << colourCount << (colourCount == 1 ? " colour" : " colours") << "\n";
    for (size_t i = 0; i < colourCount; ++i) {
        const CM_BaseColorObj& entry = *recovered->GetEntry(i);
        context.out << "  " << Hex(entry.GetId()) << " " << ClassName(entry) << " \""
                    << UT_ToUtf8(entry.GetName()) << "\"\n";
    }
    context.out << layers.size() << (layers.size() == 1 ? " layer" : " layers") << "\n";
    for (size_t i = 0; i < layers.size(); ++i) {
        const LayerFacts& f = layers[i];
        context.out << "  layer " << i << " at " << PathText(f.path) << ", kind " << f.kind << ": "
                    << f.strokes << " strokes, " << f.vertices << " vertices, " << f.components
                    << " components, " << f.zones << " zones (" << f.painted << " painted)"
                    << (f.planar ? "" : ", NOT PLANAR") << "\n";
        if (!f.planar)
            context.out << f.problems;
    }
    return 0;
}

// A layer by its index in drawing order, or by its path as numbers joined with "/".
GR_Layer* FindLayer(GR_VectorDrawingObj& drawing, const std::string& text) {
    if (text.find('/') == std::string::npos) {
        const int64_t index = QmsArgs::ParseInt(text, "LAYER");
        GR_Layer* layer = index >= 0 ? drawing.LayerAt(static_cast<size_t>(index)) : nullptr;
        if (!layer)
            throw QmsFailure("no layer " + text + " in a drawing of " + std::to_string(drawing.LayerCount()) +
                             " layers");
        return layer;
    }
    GR_LayerPath path;
    std::stringstream parts(text);
    std::string part;
    while (std::getline(parts, part, '/'))
        path.push_back(static_cast<uint32_t>(QmsArgs::ParseInt(part, "LAYER")));
    GR_Layer* layer = GR_LayerOf(drawing.LayerNodeAt(path));
    if (!layer)
        throw QmsFailure("no layer at " + text);
    return layer;
}

int RunSvg(QmsContext& context, const QmsArgs& args) {
    args.Check(4, 4);
    const std::string file = args.At(1, "FILE");
    const std::string layerText = args.At(2, "LAYER");
    const std::string out = args.At(3, "OUT.svg");
    LoadedDrawing loaded;
    Load(file, loaded);
    GR_Layer& layer = *FindLayer(loaded.drawing, layerText);
    const std::string svg = GR_LayerSvg(layer, &loaded.palettes);
    std::ofstream stream(out, std::ios::binary | std::ios::trunc);
    stream << svg;
    stream.close();
    if (!stream)
        throw QmsFailure("unable to write " + out);
    const LayerFacts facts = FactsOf(loaded.drawing, layer);
    if (context.json)
        QmsJson(context.out)
            .BeginObject()
            .Field("file", out)
            .Field("layer", PathText(facts.path))
            .Field("strokes", int64_t(facts.strokes))
            .Field("zones", int64_t(facts.zones))
            .EndObject();
    else
        context.out << out << ": layer " << PathText(facts.path) << ", " << facts.strokes << " strokes, "
                    << facts.zones << " zones\n";
    return 0;
}

} // namespace

int QmsRunDrawing(QmsContext& context, const std::vector<std::string>& words) {
    QmsArgs args(words, {});
    const std::string action = args.At(0, "ACTION");
    if (action == "info")
        return RunInfo(context, args);
    if (action == "svg")
        return RunSvg(context, args);
    throw QmsUsageError("unknown drawing action: " + action);
}
