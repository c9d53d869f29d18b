#include "core/UT_CommandHistory.h"

#include "core/UT_Format.h"

#include <cassert>

bool UT_CommandHistory::Execute(UT_Command& command, const UT_WString& name) {
    // A command that may give no inverse would wipe the history on its own; it runs only
    // while a group is open, which leaves the missing inverse out.
    assert(!command.InverseIsOptional() || group_);
    std::unique_ptr<UT_Command> inverse = command.Execute();
    if (!inverse) {
        if (command.InverseIsOptional() && group_)
            return true;
        Clear();
        return false;
    }
    Add(std::move(inverse), name);
    return true;
}

void UT_CommandHistory::Add(std::unique_ptr<UT_Command> inverse, const UT_WString& name) {
    if (!inverse)
        return;
    if (group_) {
        group_->Add(std::move(inverse));
        return;
    }
    Push(std::move(inverse), name);
}

void UT_CommandHistory::BeginGroup() {
    group_ = std::make_unique<UT_ComplexCommand>();
}

void UT_CommandHistory::EndGroup(const UT_WString& name) {
    std::unique_ptr<UT_ComplexCommand> group = std::move(group_);
    if (group && !group->IsEmpty())
        Push(std::move(group), name);
}

void UT_CommandHistory::AbortGroup() {
    group_.reset();
}

void UT_CommandHistory::Push(std::unique_ptr<UT_Command> command, const UT_WString& name) {
    const uint32_t size = command->Size();
    totalSize_ += size;
    if (undo_.size() > countLimit_) {
        DropOldest(countLimit_ / 5);
        totalSize_ += size;
    }
    if (totalSize_ > sizeLimit_) {
        const uint64_t target = sizeLimit_ / 5;
        uint64_t sum = 0;
        size_t count = 0;
        while (count < undo_.size() && sum <= target)
            sum += undo_[count++].command->Size();
        DropOldest(count);
        totalSize_ += size;
    }
    const auto length = static_cast<int64_t>(undo_.size());
    if (savedPosition_ > length)
        savedPosition_ = -1;
    if (librarySavedPosition_ > length)
        librarySavedPosition_ = -1;
    undo_.push_back(Entry{UT_CountedHandle<UT_Command>::Make(command.release()), name});
    redo_.clear();
    Changed();
}

void UT_CommandHistory::DropOldest(size_t count) {
    count = std::min(count, undo_.size());
    undo_.erase(undo_.begin(), undo_.begin() + static_cast<std::ptrdiff_t>(count));
    totalSize_ = 0;
    for (const Entry& entry : undo_)
        totalSize_ += entry.command->Size();
    // A position that falls below the start can never be matched again; it stays at -1
    // rather than counting further down.
    auto shift = [count](int32_t& position) {
        if (position < 0)
            return;
        const int64_t moved = static_cast<int64_t>(position) - static_cast<int64_t>(count);
        position = moved < 0 ? -1 : static_cast<int32_t>(moved);
    };
    shift(savedPosition_);
    shift(librarySavedPosition_);
}

void UT_CommandHistory::Move(std::vector<Entry>& from, std::vector<Entry>& to) {
    if (from.empty())
        return;
    Entry entry = std::move(from.back());
    from.pop_back();
    entry.command->Prepare();
    std::unique_ptr<UT_Command> inverse = entry.command->Execute();
    if (inverse)
        to.push_back(Entry{UT_CountedHandle<UT_Command>::Make(inverse.release()), std::move(entry.name)});
    else
        to.clear();
}

void UT_CommandHistory::Undo() {
    if (undo_.empty())
        return;
    Move(undo_, redo_);
    Changed();
}

void UT_CommandHistory::Redo() {
    if (redo_.empty())
        return;
    Move(redo_, undo_);
    Changed();
}

UT_WString UT_CommandHistory::UndoName() const {
    return undo_.empty() ? UT_WString() : undo_.back().name;
}

UT_WString UT_CommandHistory::RedoName() const {
    return redo_.empty() ? UT_WString() : redo_.back().name;
}

UT_WString UT_CommandHistory::UndoMenuText(const UT_WString& shortcut) const {
    return UT_Fmt(u"&Undo %S\t%S", UndoName(), shortcut);
}

UT_WString UT_CommandHistory::RedoMenuText(const UT_WString& shortcut) const {
    return UT_Fmt(u"&Redo %S\t%S", RedoName(), shortcut);
}

void UT_CommandHistory::MarkSaved() {
    savedPosition_ = static_cast<int32_t>(undo_.size());
    librarySavedPosition_ = savedPosition_;
}

void UT_CommandHistory::MarkLibrarySaved() {
    librarySavedPosition_ = static_cast<int32_t>(undo_.size());
}

bool UT_CommandHistory::HasChanges(bool libraryOnly) const {
    const auto length = static_cast<int64_t>(undo_.size());
    if (length != librarySavedPosition_)
        return true;
    return !libraryOnly && length != savedPosition_;
}

void UT_CommandHistory::Clear() {
    undo_.clear();
    redo_.clear();
    totalSize_ = 0;
    savedPosition_ = -1;
    librarySavedPosition_ = -1;
    Changed();
}

void UT_CommandHistory::SetLimits(uint32_t countLimit, uint32_t sizeLimit) {
    countLimit_ = countLimit;
    sizeLimit_ = sizeLimit;
}
