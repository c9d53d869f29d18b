// Opening a large project: 500 scenes of 40 elements each, through the document's Open
// flow, from a file written once in the setup.

#include "animationset/AS_CameraLevelObj.h"
#include "animationset/AS_CommonDrawingLevel.h"
#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/AS_PegLevelObj.h"
#include "animationset/AS_SoundLevel.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"
#include "animationset/CSketchrunDoc.h"
#include "core/UT_Format.h"
#include "qms/QmsCommands.h"
#include "qms/QmsHost.h"

#include <benchmark/benchmark.h>
#include <filesystem>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

constexpr int kScenes = 500;
constexpr int kElementsPerScene = 40;

// Next to the three default elements of a scene: 25 drawing elements of 24 cells over 12
// drawings, each under one of 6 pegs, 1 more camera and 5 sound elements.
void FillScene(CDopeSheetObj& scene, uint32_t width, uint32_t height) {
    std::vector<uint32_t> pegs;
    for (int i = 0; i < 6; ++i) {
        const uint32_t id = scene.NewElementId();
        scene.AddElement(AS_PegLevelObj::Create(id, scene.UniqueName(u"Peg"), 24));
        pegs.push_back(id);
    }
    for (int i = 0; i < 25; ++i) {
        const uint32_t id = scene.NewElementId();
        auto level = AS_VectorGraphicLevelObj::Create(id, scene.UniqueName(u"Drawing"));
        for (int d = 1; d <= 12; ++d)
            level->CommonDrawing()->AddDrawing(UT_Fmt(u"%1$d", UT_Num(d)));
        for (uint32_t frame = 0; frame < 24; ++frame)
            level->Cells().push_back({1001 + frame / 2, frame % 6 == 0 ? u"key" : u""});
        scene.AddElement(std::move(level));
        AS_SPCompositionOrder& order = scene.SceneplanningOrder();
        order.Reparent(order.FindRow(id), order.FindRow(pegs[size_t(i) % pegs.size()]));
    }
    const uint32_t camera = scene.NewElementId();
    scene.AddElement(AS_CameraLevelObj::Create(camera, scene.UniqueName(u"Camera"), 24, width, height));
    for (int i = 0; i < 5; ++i) {
        const uint32_t id = scene.NewElementId();
        scene.AddElement(AS_SoundLevel::Create(id, scene.UniqueName(u"Voice")));
    }
}

// Writes the project once per run and removes it at exit.
class LargeProject {
public:
    LargeProject() {
        QmsRegisterAllTypes();
        folder_ = fs::temp_directory_path() / ("qms-bench-project-" + std::to_string(::getpid()));
        fs::remove_all(folder_);
        fs::create_directories(folder_);
        auto set = std::make_unique<CAnimationSetObj>();
        set->InitialiseNew(24, 640, 480);
        FillScene(*set->Sequence().front(), 640, 480);
        for (int i = 1; i < kScenes; ++i) {
            auto scene = std::make_unique<CDopeSheetObj>();
            scene->Initialise(set->TakeNextSceneId(), UT_Fmt(u"Scene-%1$d", UT_Num(i + 1)),
                              &set->PaletteList());
            scene->InitialiseDefaultElements(640, 480);
            FillScene(*scene, 640, 480);
            set->AddScene(std::move(scene), set->Sequence().size());
        }
        set->SetName(u"Large");
        set->SetForcedDirty(true);
        CSketchrunDoc document(host_);
        document.Attach(std::move(set), UT_FilePath(folder_ / "Large"));
        if (!document.Save())
            throw std::runtime_error("the benchmark project could not be saved");
        path_ = UT_FilePath(folder_ / "Large" / "Large.qmp");
    }
    ~LargeProject() { fs::remove_all(folder_); }

    const UT_FilePath& Path() const { return path_; }
    QmsHost& Host() { return host_; }

private:
    QmsHost host_;
    fs::path folder_;
    UT_FilePath path_;
};

LargeProject& Project() {
    static LargeProject project;
    return project;
}

void OpenLargeProject(benchmark::State& state) {
    LargeProject& project = Project();
    size_t elements = 0;
    for (auto _ : state) {
        auto document = std::make_unique<CSketchrunDoc>(project.Host());
        if (!document->OpenPath(project.Path())) {
            state.SkipWithError("open failed");
            break;
        }
        // Counting and closing are not part of opening: they run outside the timed part.
        state.PauseTiming();
        elements = 0;
        for (const CDopeSheetObj* scene : document->Set()->Sequence())
            elements += scene->Levels().size();
        document.reset();
        state.ResumeTiming();
    }
    if (elements != size_t(kScenes) * kElementsPerScene)
        state.SkipWithError("the project does not have the expected elements");
    state.counters["bytes"] = double(fs::file_size(project.Path().Path()));
}
BENCHMARK(OpenLargeProject)->Unit(benchmark::kMillisecond);

} // namespace

BENCHMARK_MAIN();
