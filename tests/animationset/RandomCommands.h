#pragma once

// A random walk through the commands on a set, for property tests: commands of every
// kind in a table, undos, redos, groups of commands in one scope, saves and moves of the
// user between scenes and modes. After every step the set's state must be the one the
// walk recorded for that position of the history, so a wrong inverse shows at the step
// that undoes it.
//
// To test more commands, write a function that gives their kinds (see SceneCommandKinds)
// and add its kinds to the table of the walk in test_random_commands.cpp.

#include "SetTestUtil.h"
#include "core/UT_Command.h"
#include "core/UT_String.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <random>
#include <vector>

// A command made at random, and the name it goes into the history under.
struct RandomCommand {
    std::unique_ptr<UT_Command> command;
    UT_WString name;
};

// One kind of command of the walk. `make` builds a command for the set as it stands, or
// nothing when the set offers no target for the kind (no second scene to delete).
struct RandomCommandKind {
    const char* name;
    // How often the kind is drawn, relative to the others.
    unsigned weight;
    std::function<std::optional<RandomCommand>(CAnimationSetObj& set, std::mt19937& random)> make;
};

// A number in [low, high].
inline uint32_t RandomIn(std::mt19937& random, uint32_t low, uint32_t high) {
    return std::uniform_int_distribution<uint32_t>(low, high)(random);
}

// A random scene of the sequence; the set always has one.
CDopeSheetObj& RandomScene(CAnimationSetObj& set, std::mt19937& random);

// The commands on scenes and on the properties of the set.
std::vector<RandomCommandKind> SceneCommandKinds();
// The commands on cells.
std::vector<RandomCommandKind> CellCommandKinds();
// Gives every scene of the set a second drawing element with cells and a sound element, so
// that cell selections span rows of several kinds.
void AddCellElements(CAnimationSetObj& set);

// The commands on the palettes of the set.
std::vector<RandomCommandKind> PaletteCommandKinds();
// The commands on elements, their fields and their rows in the composition orders.
std::vector<RandomCommandKind> ElementCommandKinds();

// A start for the walk: a new set with three more scenes, some hidden, renamed and
// coloured, and a drawing that lives only in memory.
std::unique_ptr<CAnimationSetObj> MakeRandomWalkSet(std::mt19937& random);

struct RandomWalkReport {
    // How many commands of each kind ran, by the kind's index.
    std::vector<int> executed;
    int undos = 0;
    int redos = 0;
    int groups = 0;
    // Length of the undo list at the end, before the final undo of everything.
    size_t depth = 0;
};

// Runs `steps` random steps on `set` with commands of `kinds`, checking the state after
// each, then undoes everything (back to the state at the start) and redoes everything
// (to the state at the end). Failures are reported through GoogleTest; the walk stops at
// the first.
RandomWalkReport RunRandomWalk(CAnimationSetObj& set, const std::vector<RandomCommandKind>& kinds,
                               std::mt19937& random, int steps);
