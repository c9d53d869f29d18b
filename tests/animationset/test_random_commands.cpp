// Thousands of random commands with random undos and redos, from a fixed seed: every
// state of the walk must come back exactly when the history reaches it again.

#include "RandomCommands.h"

namespace {

// Every kind of command on a set that the walk knows.
std::vector<RandomCommandKind> AllCommandKinds() {
    std::vector<RandomCommandKind> kinds = SceneCommandKinds();
    for (RandomCommandKind& kind : ElementCommandKinds())
        kinds.push_back(std::move(kind));
    return kinds;
}

class RandomCommandsTest : public SetCommandTest {};

TEST_F(RandomCommandsTest, EveryStateComesBackThroughUndoAndRedo) {
    std::mt19937 random(20261124);
    std::unique_ptr<CAnimationSetObj> set = MakeRandomWalkSet(random);
    const std::vector<RandomCommandKind> kinds = AllCommandKinds();
    const RandomWalkReport report = RunRandomWalk(*set, kinds, random, 3000);
    for (size_t i = 0; i < kinds.size(); ++i)
        EXPECT_GT(report.executed[i], 20) << kinds[i].name;
    EXPECT_GT(report.undos, 300);
    EXPECT_GT(report.redos, 100);
    EXPECT_GT(report.groups, 100);
    EXPECT_GT(report.depth, 100u);
}

} // namespace
