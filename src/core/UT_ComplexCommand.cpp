#include "core/UT_ComplexCommand.h"

void UT_ComplexCommand::Add(std::unique_ptr<UT_Command> command) {
    if (command)
        children_.push_back(std::move(command));
}

std::unique_ptr<UT_Command> UT_ComplexCommand::Execute() {
    auto inverse = std::make_unique<UT_ComplexCommand>();
    for (auto it = children_.rbegin(); it != children_.rend(); ++it)
        inverse->Add((*it)->Execute());
    return inverse;
}

uint32_t UT_ComplexCommand::Size() const {
    uint64_t total = 0;
    for (const auto& child : children_)
        total += child->Size();
    return total > UINT32_MAX ? UINT32_MAX : static_cast<uint32_t>(total);
}

void UT_ComplexCommand::Prepare() {
    for (const auto& child : children_)
        child->Prepare();
}
