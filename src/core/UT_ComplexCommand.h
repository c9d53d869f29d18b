#pragma once

#include "core/UT_Command.h"

#include <memory>
#include <vector>

// A group of commands executed as one. Undoing a group runs the inverses of its children
// in reverse order.
class UT_ComplexCommand : public UT_Command {
public:
    UT_ComplexCommand() = default;

    // Takes ownership; a null command is not added.
    void Add(std::unique_ptr<UT_Command> command);
    bool IsEmpty() const { return children_.empty(); }
    size_t Count() const { return children_.size(); }
    const UT_Command& Child(size_t index) const { return *children_[index]; }

    // Executes the children from last to first; each inverse goes into the new group, and
    // a child without inverse is skipped.
    std::unique_ptr<UT_Command> Execute() override;
    uint32_t Size() const override;
    void Prepare() override;

private:
    std::vector<std::unique_ptr<UT_Command>> children_;
};
