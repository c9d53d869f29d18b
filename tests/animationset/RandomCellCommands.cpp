// The commands on cells in the random walk: drawings put on frames, frames cut or taken
// out, and runs retimed, over selections of one or more rows.

#include "RandomCommands.h"
#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/AS_SoundLevel.h"
#include "animationset/DC_ReLabelCellCommand.h"
#include "animationset/DC_RemoveCellsCommand.h"
#include "animationset/DC_RestoreTimingCommand.h"
#include "core/UT_Format.h"

namespace {

// A selection of a few rows of the Drawing order and a few frames, somewhere in the first
// twenty; nothing when the scene has no row there.
std::optional<DC_CellSelection> RandomSelection(CDopeSheetObj& scene, std::mt19937& random) {
    AS_CompositionOrder& order = scene.DrawingOrder();
    if (order.GetShownCount() == 0)
        return std::nullopt;
    const auto rows = static_cast<int32_t>(order.GetShownCount());
    const auto top = static_cast<int32_t>(RandomIn(random, 0, static_cast<uint32_t>(rows - 1)));
    const int32_t bottom = std::min(rows - 1, top + static_cast<int32_t>(RandomIn(random, 0, 1)));
    const auto first = static_cast<int32_t>(RandomIn(random, 0, 20));
    const int32_t last = first + static_cast<int32_t>(RandomIn(random, 0, 4));
    AS_DopeSheetCellIterator iterator;
    iterator.Set(&scene, &order, {first, top}, {last, bottom}, {first, top});
    return DC_CellSelection(iterator);
}

bool HasDrawingElement(const CDopeSheetObj& scene, const DC_CellSelection& selection) {
    for (const DC_CellSelection::Level& level : selection.Levels())
        if (dynamic_cast<const AS_DrawingLevelObj*>(scene.FindElement(level.element)))
            return true;
    return false;
}

} // namespace

void AddCellElements(CAnimationSetObj& set) {
    for (CDopeSheetObj* scene : set.Sequence()) {
        auto* hand = static_cast<AS_DrawingLevelObj*>(scene->AddElement(
            AS_VectorGraphicLevelObj::Create(scene->NewElementId(), scene->UniqueName(u"Hand"))));
        const uint32_t id = hand->CreateDrawing(u"1");
        hand->SetCells(id, 2, 3);
        hand->SetCell(hand->CreateDrawing(u"2"), 5);
        scene->AddElement(AS_SoundLevel::Create(scene->NewElementId(), scene->UniqueName(u"Voice")));
    }
}

std::vector<RandomCommandKind> CellCommandKinds() {
    return {
        {"change drawing", 5,
         [](CAnimationSetObj& set, std::mt19937& random) -> std::optional<RandomCommand> {
             CDopeSheetObj& scene = RandomScene(set, random);
             std::optional<DC_CellSelection> selection = RandomSelection(scene, random);
             if (!selection || !HasDrawingElement(scene, *selection))
                 return std::nullopt;
             // Mostly names the elements have or will soon have, sometimes a new one.
             const UT_WString name = RandomIn(random, 0, 4) == 0
                                         ? UT_Fmt(u"N%d", UT_Num(RandomIn(random, 1, 1000)))
                                         : UT_Fmt(u"%d", UT_Num(RandomIn(random, 1, 4)));
             return RandomCommand{std::make_unique<DC_ReLabelCellCommand>(set, *selection, name),
                                  DC_ReLabelCellCommand::kName};
         }},
        {"cut or delete cells", 4,
         [](CAnimationSetObj& set, std::mt19937& random) -> std::optional<RandomCommand> {
             CDopeSheetObj& scene = RandomScene(set, random);
             std::optional<DC_CellSelection> selection = RandomSelection(scene, random);
             if (!selection)
                 return std::nullopt;
             const bool shift = RandomIn(random, 0, 1) == 1;
             return RandomCommand{std::make_unique<DC_RemoveCellsCommand>(set, *selection, shift),
                                  shift ? DC_RemoveCellsCommand::kDeleteName
                                        : DC_RemoveCellsCommand::kCutName};
         }},
        {"change exposure", 4,
         [](CAnimationSetObj& set, std::mt19937& random) -> std::optional<RandomCommand> {
             CDopeSheetObj& scene = RandomScene(set, random);
             std::optional<DC_CellSelection> selection = RandomSelection(scene, random);
             if (!selection ||
                 !dynamic_cast<AS_DrawingLevelObj*>(scene.FindElement(selection->Levels().front().element)))
                 return std::nullopt;
             const auto length = static_cast<int32_t>(RandomIn(random, 1, 3));
             const bool whole = RandomIn(random, 0, 3) == 0;
             return RandomCommand{std::make_unique<DC_RestoreTimingCommand>(set, *selection, length, whole),
                                  DC_RestoreTimingCommand::kName};
         }},
    };
}
