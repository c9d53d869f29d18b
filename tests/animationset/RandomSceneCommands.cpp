// The scene commands of the random walk, and the set it starts from.

#include "DrawingTestUtil.h"
#include "RandomCommands.h"
#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/DC_AddSceneCommand.h"
#include "animationset/DC_ChangeASPropertiesCommand.h"
#include "animationset/DC_ChangeSceneProperties.h"
#include "animationset/DC_DeleteSceneCommand.h"
#include "animationset/DC_ReorderScene.h"
#include "animationset/DC_SetSceneVisibleCommand.h"
#include "animationset/DC_ToggleSceneVisibility.h"
#include "core/DB_FileContainer.h"
#include "core/UT_Format.h"

namespace {

// A name that no scene of the set has.
UT_WString FreeSceneName(const CAnimationSetObj& set, std::mt19937& random) {
    for (;;) {
        UT_WString name = UT_Fmt(u"Take %d", UT_Num(RandomIn(random, 1, 99)));
        if (set.IsSceneNameFree(name))
            return name;
    }
}

std::array<uint8_t, 4> RandomColour(std::mt19937& random) {
    return {static_cast<uint8_t>(RandomIn(random, 0, 255)), static_cast<uint8_t>(RandomIn(random, 0, 255)),
            static_cast<uint8_t>(RandomIn(random, 0, 255)), static_cast<uint8_t>(RandomIn(random, 0, 255))};
}

} // namespace

std::vector<RandomCommandKind> SceneCommandKinds() {
    return {
        {"add scene", 3,
         [](CAnimationSetObj& set, std::mt19937& random) -> std::optional<RandomCommand> {
             const size_t index = RandomIn(random, 0, static_cast<uint32_t>(set.Sequence().size() + 1));
             const UT_WString name = RandomIn(random, 0, 1) ? UT_WString() : FreeSceneName(set, random);
             return RandomCommand{DC_AddSceneCommand::NewScene(set, name, index), DC_AddSceneCommand::kName};
         }},
        {"delete scene", 3,
         [](CAnimationSetObj& set, std::mt19937& random) -> std::optional<RandomCommand> {
             if (set.Sequence().size() < 2)
                 return std::nullopt;
             const uint32_t id = RandomScene(set, random).SceneId();
             return RandomCommand{
                 std::make_unique<DC_DeleteSceneCommand>(set, id, RandomIn(random, 0, 1) == 1),
                 DC_DeleteSceneCommand::kName};
         }},
        {"reorder scene", 3,
         [](CAnimationSetObj& set, std::mt19937& random) -> std::optional<RandomCommand> {
             const auto count = static_cast<uint32_t>(set.Sequence().size());
             return RandomCommand{std::make_unique<DC_ReorderScene>(set, RandomIn(random, 0, count - 1),
                                                                    RandomIn(random, 0, count)),
                                  DC_ReorderScene::kName};
         }},
        {"toggle scene visibility", 2,
         [](CAnimationSetObj& set, std::mt19937& random) -> std::optional<RandomCommand> {
             const uint32_t id = RandomScene(set, random).SceneId();
             return RandomCommand{std::make_unique<DC_ToggleSceneVisibility>(set, id),
                                  DC_ToggleSceneVisibility::NameFor(set, id)};
         }},
        {"show or hide a row", 3,
         [](CAnimationSetObj& set, std::mt19937& random) -> std::optional<RandomCommand> {
             CDopeSheetObj& scene = RandomScene(set, random);
             const int order = static_cast<int>(RandomIn(random, 0, 1));
             const AS_CompositionOrder& rows = order == 0
                                                   ? static_cast<AS_CompositionOrder&>(scene.DrawingOrder())
                                                   : scene.SceneplanningOrder();
             if (rows.GetRowCount() == 0)
                 return std::nullopt;
             const uint32_t element = rows.Rows()[RandomIn(random, 0, rows.GetRowCount() - 1)].id;
             return RandomCommand{std::make_unique<DC_SetSceneVisibleCommand>(
                                      set, scene.SceneId(), element, order, RandomIn(random, 0, 1) == 1),
                                  u"Show Row"};
         }},
        {"scene properties", 3,
         [](CAnimationSetObj& set, std::mt19937& random) -> std::optional<RandomCommand> {
             CDopeSheetObj& scene = RandomScene(set, random);
             const UT_WString name = RandomIn(random, 0, 2) == 0 ? scene.Name() : FreeSceneName(set, random);
             return RandomCommand{
                 std::make_unique<DC_ChangeSceneProperties>(set, scene.SceneId(), name, RandomColour(random)),
                 DC_ChangeSceneProperties::kName};
         }},
        {"set properties", 1,
         [](CAnimationSetObj& set, std::mt19937& random) -> std::optional<RandomCommand> {
             static const uint32_t kRates[] = {6, 12, 24, 25, 30};
             return RandomCommand{std::make_unique<DC_ChangeASPropertiesCommand>(
                                      set, kRates[RandomIn(random, 0, 4)], RandomIn(random, 16, 4096),
                                      RandomIn(random, 16, 4096)),
                                  DC_ChangeASPropertiesCommand::kName};
         }},
    };
}

std::unique_ptr<CAnimationSetObj> MakeRandomWalkSet(std::mt19937& random) {
    std::unique_ptr<CAnimationSetObj> set = MakeNewSet();
    for (int i = 0; i < 3; ++i) {
        auto scene = std::make_unique<CDopeSheetObj>();
        scene->Initialise(set->TakeNextSceneId(), FreeSceneName(*set, random), &set->PaletteList());
        scene->InitialiseDefaultElements(set->CameraWidth(), set->CameraHeight());
        scene->SetBackgroundColour(RandomColour(random));
        scene->SetVisible(i != 1);
        set->AddScene(std::move(scene), set->Sequence().size());
    }
    // A drawing that exists nowhere but in memory: a deleted scene must bring it back.
    for (const auto& entry : set->Sequence()[2]->Levels()) {
        if (auto* drawing = dynamic_cast<AS_DrawingLevelObj*>(entry.level.get())) {
            drawing->CommonDrawing()
                ->AddDrawingWithId(1001, u"1")
                ->SetDrawing(MarkedDrawing(0x5A, FirstColour(set->PaletteList())));
        }
    }
    return set;
}
