#pragma once

#include "animationset/DC_Command.h"

#include <cstddef>

// Moves a scene within the sequence. `to` is the insertion point before the move, so a
// move to `from` or `from + 1` changes nothing. The inverse moves the scene back.
class DC_ReorderScene : public DC_Command {
public:
    static constexpr const char16_t* kName = u"Reorder Scene";

    DC_ReorderScene(CAnimationSetObj& set, size_t from, size_t to);
    DC_ReorderScene(const DC_Command& origin, size_t from, size_t to);

    // The insertion point that puts the scene at `from` at the final index `target`.
    static size_t InsertionPointFor(size_t from, size_t target) {
        return target > from ? target + 1 : target;
    }

    // Null when `from` is not an index of the sequence.
    std::unique_ptr<UT_Command> Execute() override;

    size_t From() const { return from_; }
    size_t To() const { return to_; }

private:
    size_t from_;
    size_t to_;
};
