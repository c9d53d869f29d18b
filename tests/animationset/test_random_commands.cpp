// Thousands of random commands with random undos and redos, from a fixed seed: every
// state of the walk must come back exactly when the history reaches it again.

#include "RandomCommands.h"
#include "animationset/AS_MediaLinkLevelObj.h"

namespace {

// Every kind of command on a set that the walk knows.
std::vector<RandomCommandKind> AllCommandKinds() {
    std::vector<RandomCommandKind> kinds = SceneCommandKinds();
    for (RandomCommandKind& kind : CellCommandKinds())
        kinds.push_back(std::move(kind));
    for (RandomCommandKind& kind : PaletteCommandKinds())
        kinds.push_back(std::move(kind));
    for (RandomCommandKind& kind : ElementCommandKinds())
        kinds.push_back(std::move(kind));
    return kinds;
}

class RandomCommandsTest : public SetCommandTest {};

TEST_F(RandomCommandsTest, EveryStateComesBackThroughUndoAndRedo) {
    std::mt19937 random(20261124);
    std::unique_ptr<CAnimationSetObj> set = MakeRandomWalkSet(random);
    AddCellElements(*set);
    // The application's current cell follows the set, and the cell commands move it.
    CAnimationSetObj::SetCurrent(set.get());
    // A media element whose runs share a template, so that snapshots carry the set's
    // media entries and must find them again when they come back.
    CDopeSheetObj& first = *set->Sequence().front();
    auto media = AS_MediaLinkLevelObj::Create(first.NewElementId(), u"Walk");
    auto walk = std::make_shared<AS_MediaObj>(UT_UniqueId(11), u"Walk");
    ASSERT_TRUE(media->SetCells({{0, 5, 0, walk}, {7, 9, 2, walk}}));
    first.AddElement(std::move(media));
    const std::vector<RandomCommandKind> kinds = AllCommandKinds();
    const RandomWalkReport report = RunRandomWalk(*set, kinds, random, 4000);
    for (size_t i = 0; i < kinds.size(); ++i)
        EXPECT_GT(report.executed[i], 15) << kinds[i].name;
    EXPECT_GT(report.undos, 300);
    // A redo only finds something after an undo with no command in between: about three in
    // a hundred steps, and fewer from some seeds.
    EXPECT_GT(report.redos, 60);
    EXPECT_GT(report.groups, 100);
    EXPECT_GT(report.depth, 100u);
}

} // namespace
