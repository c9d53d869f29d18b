// The element commands of the random walk.

#include "RandomCommands.h"
#include "animationset/AS_BaseLevelElement.h"
#include "animationset/DC_CloneLevelCommand.h"
#include "animationset/DC_CreateLevelCommand.h"
#include "animationset/DC_ModifyElementNoteCommand.h"
#include "animationset/DC_RemoveLevelCommand.h"
#include "animationset/DC_RenameLevelCommand.h"
#include "animationset/DC_ReparentLevelCommand.h"
#include "animationset/DC_SwitchLevelCommand.h"
#include "animationset/DC_UpdateElementCommand.h"
#include "core/UT_Format.h"

namespace {

// The elements of the scene that are not removed, optionally only those that `keep` takes.
std::vector<AS_DopeSheetLevelObj*> PresentElements(const CDopeSheetObj& scene,
                                                   bool (*keep)(const AS_DopeSheetLevelObj&) = nullptr) {
    std::vector<AS_DopeSheetLevelObj*> elements;
    for (const CDopeSheetObj::LevelEntry& entry : scene.Levels())
        if (!entry.removed && (!keep || keep(*entry.level)))
            elements.push_back(entry.level.get());
    return elements;
}

AS_DopeSheetLevelObj* Pick(const std::vector<AS_DopeSheetLevelObj*>& elements, std::mt19937& random) {
    if (elements.empty())
        return nullptr;
    return elements[RandomIn(random, 0, static_cast<uint32_t>(elements.size() - 1))];
}

// A name from a small pool, so that names meet: some are taken, some are not.
UT_WString RandomName(std::mt19937& random) {
    static const char16_t* const kStems[] = {u"Arm", u"Leg", u"Head", u"Drawing", u"Peg"};
    UT_WString name = kStems[RandomIn(random, 0, 4)];
    if (RandomIn(random, 0, 1))
        name += UT_Fmt(u" %d", UT_Num(RandomIn(random, 2, 4)));
    return name;
}

double RandomNumber(std::mt19937& random) {
    return static_cast<double>(static_cast<int>(RandomIn(random, 0, 800)) - 400) / 8.0;
}

} // namespace

std::vector<RandomCommandKind> ElementCommandKinds() {
    return {
        {"create elements", 4,
         [](CAnimationSetObj& set, std::mt19937& random) -> std::optional<RandomCommand> {
             CDopeSheetObj& scene = RandomScene(set, random);
             return RandomCommand{std::make_unique<DC_CreateLevelCommand>(
                                      set, scene.SceneId(), RandomIn(random, 1, 2), RandomName(random),
                                      RandomIn(random, 0, 5), RandomIn(random, 2, 40)),
                                  DC_CreateLevelCommand::kName};
         }},
        {"remove elements", 4,
         [](CAnimationSetObj& set, std::mt19937& random) -> std::optional<RandomCommand> {
             CDopeSheetObj& scene = RandomScene(set, random);
             std::vector<AS_DopeSheetLevelObj*> elements = PresentElements(scene);
             if (elements.empty())
                 return std::nullopt;
             std::shuffle(elements.begin(), elements.end(), random);
             std::vector<uint32_t> ids;
             for (size_t i = 0; i < std::min<size_t>(elements.size(), RandomIn(random, 1, 3)); ++i)
                 ids.push_back(elements[i]->GetId());
             return RandomCommand{std::make_unique<DC_RemoveLevelCommand>(set, scene.SceneId(), ids),
                                  DC_RemoveLevelCommand::kName};
         }},
        {"clone element", 3,
         [](CAnimationSetObj& set, std::mt19937& random) -> std::optional<RandomCommand> {
             CDopeSheetObj& scene = RandomScene(set, random);
             const AS_DopeSheetLevelObj* element =
                 Pick(PresentElements(scene,
                                      [](const AS_DopeSheetLevelObj& level) {
                                          return level.GetKind() != kLevelParamGroup;
                                      }),
                      random);
             if (!element)
                 return std::nullopt;
             return RandomCommand{
                 std::make_unique<DC_CloneLevelCommand>(set, scene.SceneId(), element->GetId()),
                 DC_CloneLevelCommand::kName};
         }},
        {"rename element", 3,
         [](CAnimationSetObj& set, std::mt19937& random) -> std::optional<RandomCommand> {
             CDopeSheetObj& scene = RandomScene(set, random);
             const AS_DopeSheetLevelObj* element = Pick(PresentElements(scene), random);
             const UT_WString name = RandomName(random);
             if (!element || !scene.CheckElementName(name, element->GetId()).empty())
                 return std::nullopt;
             return RandomCommand{
                 std::make_unique<DC_RenameLevelCommand>(set, scene.SceneId(), element->GetId(), name),
                 DC_RenameLevelCommand::kName};
         }},
        {"element note", 1,
         [](CAnimationSetObj& set, std::mt19937& random) -> std::optional<RandomCommand> {
             CDopeSheetObj& scene = RandomScene(set, random);
             const AS_DopeSheetLevelObj* element = Pick(PresentElements(scene), random);
             if (!element)
                 return std::nullopt;
             return RandomCommand{std::make_unique<DC_ModifyElementNoteCommand>(
                                      set, scene.SceneId(), element->GetId(), RandomName(random)),
                                  DC_ModifyElementNoteCommand::kName};
         }},
        {"update element", 6,
         [](CAnimationSetObj& set, std::mt19937& random) -> std::optional<RandomCommand> {
             CDopeSheetObj& scene = RandomScene(set, random);
             const AS_DopeSheetLevelObj* element =
                 Pick(PresentElements(scene,
                                      [](const AS_DopeSheetLevelObj& level) {
                                          return dynamic_cast<const AS_BaseLevelElement*>(&level) != nullptr;
                                      }),
                      random);
             if (!element)
                 return std::nullopt;
             const uint32_t field = RandomIn(random, 0, DC_UpdateElementCommand::kElementName);
             DC_UpdateElementCommand::Value value;
             value.point = C3DPoint(RandomNumber(random), RandomNumber(random), RandomNumber(random));
             value.number = RandomNumber(random);
             value.name = RandomName(random);
             if (field == DC_UpdateElementCommand::kStartFrame)
                 value.number = RandomIn(random, 0, 30);
             else if (field == DC_UpdateElementCommand::kElementType)
                 value.number = RandomIn(random, 0, 2);
             else if (field == DC_UpdateElementCommand::kKeepProportions)
                 value.number = RandomIn(random, 0, 1);
             return RandomCommand{std::make_unique<DC_UpdateElementCommand>(set, scene.SceneId(),
                                                                            element->GetId(), field, value),
                                  DC_UpdateElementCommand::kName};
         }},
        {"move rows", 3,
         [](CAnimationSetObj& set, std::mt19937& random) -> std::optional<RandomCommand> {
             CDopeSheetObj& scene = RandomScene(set, random);
             const int order = static_cast<int>(RandomIn(random, 0, 1));
             const AS_CompositionOrder& rows = order == 0
                                                   ? static_cast<AS_CompositionOrder&>(scene.DrawingOrder())
                                                   : scene.SceneplanningOrder();
             if (rows.GetRowCount() < 2)
                 return std::nullopt;
             std::vector<DC_SwitchLevelCommand::Move> moves;
             for (uint32_t n = RandomIn(random, 1, 2); n > 0; --n) {
                 const auto last = static_cast<uint32_t>(rows.GetRowCount() - 1);
                 DC_SwitchLevelCommand::Move move;
                 move.element = rows.GetLevelId(static_cast<int>(RandomIn(random, 0, last)));
                 move.target = RandomIn(random, 0, 5) == 0
                                   ? AS_kInvalidId
                                   : rows.GetLevelId(static_cast<int>(RandomIn(random, 0, last)));
                 move.before = RandomIn(random, 0, 1) == 1;
                 moves.push_back(move);
             }
             return RandomCommand{std::make_unique<DC_SwitchLevelCommand>(set, scene.SceneId(), order, moves),
                                  DC_SwitchLevelCommand::kName};
         }},
        {"change parent", 3,
         [](CAnimationSetObj& set, std::mt19937& random) -> std::optional<RandomCommand> {
             CDopeSheetObj& scene = RandomScene(set, random);
             const AS_SPCompositionOrder& rows = scene.SceneplanningOrder();
             if (rows.GetRowCount() < 2)
                 return std::nullopt;
             const auto last = static_cast<uint32_t>(rows.GetRowCount() - 1);
             const int row = static_cast<int>(RandomIn(random, 0, last));
             const int parent =
                 RandomIn(random, 0, 4) == 0 ? -1 : static_cast<int>(RandomIn(random, 0, last));
             // Nothing hangs below itself.
             if (parent >= row && parent < rows.SubtreeEnd(row))
                 return std::nullopt;
             return RandomCommand{std::make_unique<DC_ReparentLevelCommand>(
                                      set, scene.SceneId(), rows.GetLevelId(row), rows.GetLevelId(parent)),
                                  DC_ReparentLevelCommand::kName};
         }},
    };
}
