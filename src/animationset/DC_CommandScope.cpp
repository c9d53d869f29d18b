#include "animationset/DC_CommandScope.h"

#include "animationset/CAnimationSetObj.h"
#include "animationset/DC_ComplexCommand.h"
#include "core/UT_CommandHistory.h"

#include <exception>

DC_CommandScope::DC_CommandScope(CAnimationSetObj& set, UT_WString name)
    : set_(set), name_(std::move(name)), exceptionsAtStart_(std::uncaught_exceptions()) {
    UT_CommandHistory& history = set_.History();
    outer_ = history.TakeGroup();
    history.BeginGroup();
}

DC_CommandScope::~DC_CommandScope() {
    if (open_)
        Close(std::uncaught_exceptions() <= exceptionsAtStart_);
}

bool DC_CommandScope::Execute(UT_Command& command) {
    UT_CommandHistory& history = set_.History();
    if (history.Execute(command, name_))
        return true;
    // No undo reaches past a failure: what the scope gathered before it goes too.
    history.BeginGroup();
    return false;
}

void DC_CommandScope::Add(std::unique_ptr<UT_Command> inverse) {
    set_.History().Add(std::move(inverse), name_);
}

void DC_CommandScope::NotifyOnClose(AS_DopeSheetUpdateData record) {
    record_ = std::move(record);
}

void DC_CommandScope::Abort() {
    if (open_)
        Close(false);
}

void DC_CommandScope::Close(bool keep) {
    open_ = false;
    UT_CommandHistory& history = set_.History();
    std::unique_ptr<UT_ComplexCommand> group = history.TakeGroup();
    history.SetGroup(std::move(outer_));
    if (!group || group->IsEmpty())
        return;
    if (!keep) {
        // Undo what was done; the inverse of that is of no use.
        try {
            group->Execute();
        } catch (...) {
            history.Clear();
        }
        return;
    }
    if (!record_) {
        history.Add(std::move(group), name_);
        return;
    }
    auto entry = std::make_unique<DC_ComplexCommand>(set_, std::move(group), std::move(record_));
    entry->SendRecord();
    history.Add(std::move(entry), name_);
}
