#include "RandomCommands.h"

#include "animationset/DC_CommandScope.h"
#include "core/UT_CommandHistory.h"

#include <sstream>
#include <string>

namespace {

// The walk's own account of the history: the state at each position of the undo list
// and of the redo list behind it, and where the last save stands.
class Shadow {
public:
    explicit Shadow(CAnimationSetObj& set) : set_(set) { states_.push_back(StateOf(set)); }

    void Pushed() {
        states_.resize(position_ + 1);
        // The history forgets a save that only a redo could have reached.
        if (saved_ > static_cast<int64_t>(position_))
            saved_ = -1;
        states_.push_back(StateOf(set_));
        ++position_;
    }
    void Undone() { --position_; }
    void Redone() { ++position_; }
    void Saved() { saved_ = static_cast<int64_t>(position_); }

    // Empty when the set and its history agree with the walk; else what differs.
    std::string Check() {
        std::ostringstream problems;
        const UT_CommandHistory& history = set_.History();
        if (history.UndoList().size() != position_ ||
            history.RedoList().size() != states_.size() - 1 - position_)
            problems << "history holds " << history.UndoList().size() << " + " << history.RedoList().size()
                     << " entries, the walk expects " << position_ << " + " << states_.size() - 1 - position_
                     << "; ";
        const SetState now = StateOf(set_);
        if (now.body != states_[position_].body)
            problems << "the set differs from its state at position " << position_ << "; ";
        if (now.nextSceneId < lastSceneId_)
            problems << "the scene id counter went back from " << lastSceneId_ << " to " << now.nextSceneId
                     << "; ";
        lastSceneId_ = now.nextSceneId;
        if (set_.IsDirty() != (static_cast<int64_t>(position_) != saved_))
            problems << "dirty is " << set_.IsDirty() << " at position " << position_ << " with the save at "
                     << saved_ << "; ";
        return problems.str();
    }

    size_t Position() const { return position_; }
    size_t Last() const { return states_.size() - 1; }

private:
    CAnimationSetObj& set_;
    std::vector<SetState> states_;
    size_t position_ = 0;
    int64_t saved_ = 0;
    uint32_t lastSceneId_ = 0;
};

size_t PickKind(const std::vector<RandomCommandKind>& kinds, std::mt19937& random) {
    unsigned total = 0;
    for (const RandomCommandKind& kind : kinds)
        total += kind.weight;
    unsigned pick = RandomIn(random, 0, total - 1);
    for (size_t i = 0; i < kinds.size(); ++i) {
        if (pick < kinds[i].weight)
            return i;
        pick -= kinds[i].weight;
    }
    return kinds.size() - 1;
}

} // namespace

CDopeSheetObj& RandomScene(CAnimationSetObj& set, std::mt19937& random) {
    return *set.Sequence()[RandomIn(random, 0, static_cast<uint32_t>(set.Sequence().size() - 1))];
}

RandomWalkReport RunRandomWalk(CAnimationSetObj& set, const std::vector<RandomCommandKind>& kinds,
                               std::mt19937& random, int steps) {
    RandomWalkReport report;
    report.executed.assign(kinds.size(), 0);
    UT_CommandHistory& history = set.History();
    // Nothing may be dropped, or the start could not be reached again.
    history.SetLimits(UINT32_MAX, UINT32_MAX);
    set.MarkSaved();
    Shadow shadow(set);

    // Makes a command of a random kind that has a target; gives up after a few tries.
    auto make = [&](size_t& kindIndex) -> std::optional<RandomCommand> {
        for (int attempt = 0; attempt < 20; ++attempt) {
            kindIndex = PickKind(kinds, random);
            if (std::optional<RandomCommand> made = kinds[kindIndex].make(set, random))
                return made;
        }
        return std::nullopt;
    };

    for (int step = 0; step < steps; ++step) {
        const uint32_t choice = RandomIn(random, 0, 99);
        std::string what;
        if (choice < 20) {
            what = "undo";
            if (history.CanUndo()) {
                history.Undo();
                shadow.Undone();
                ++report.undos;
            }
        } else if (choice < 36) {
            what = "redo";
            if (history.CanRedo()) {
                history.Redo();
                shadow.Redone();
                ++report.redos;
            }
        } else if (choice < 44) {
            what = "group";
            bool ran = false;
            {
                DC_CommandScope scope(set, u"Group");
                for (uint32_t n = RandomIn(random, 1, 3); n > 0; --n) {
                    size_t kind = 0;
                    std::optional<RandomCommand> made = make(kind);
                    if (!made)
                        continue;
                    what += std::string(" ") + kinds[kind].name;
                    if (!scope.Execute(*made->command)) {
                        ADD_FAILURE() << "step " << step << ": " << kinds[kind].name << " failed in a group";
                        return report;
                    }
                    ++report.executed[kind];
                    ran = true;
                }
            }
            if (ran) {
                shadow.Pushed();
                ++report.groups;
            }
        } else if (choice < 47) {
            what = "save";
            set.MarkSaved();
            shadow.Saved();
        } else if (choice < 52) {
            // The user moves to another scene and mode, so that undo and redo have a
            // context to bring back.
            what = "wander";
            set.SetCurrentScene(&RandomScene(set, random), true);
            set.SetSceneplanningMode(RandomIn(random, 0, 1) == 1);
        } else {
            size_t kind = 0;
            std::optional<RandomCommand> made = make(kind);
            if (!made)
                continue;
            what = kinds[kind].name;
            if (!history.Execute(*made->command, made->name)) {
                ADD_FAILURE() << "step " << step << ": " << what << " failed";
                return report;
            }
            ++report.executed[kind];
            shadow.Pushed();
        }
        const std::string problems = shadow.Check();
        if (!problems.empty()) {
            ADD_FAILURE() << "step " << step << " (" << what << "): " << problems;
            return report;
        }
    }

    report.depth = shadow.Position();
    while (history.CanUndo()) {
        history.Undo();
        shadow.Undone();
    }
    std::string problems = shadow.Check();
    if (!problems.empty()) {
        ADD_FAILURE() << "after undoing everything: " << problems;
        return report;
    }
    while (history.CanRedo()) {
        history.Redo();
        shadow.Redone();
    }
    problems = shadow.Check();
    if (!problems.empty() || shadow.Position() != shadow.Last())
        ADD_FAILURE() << "after redoing everything: " << problems;
    return report;
}
