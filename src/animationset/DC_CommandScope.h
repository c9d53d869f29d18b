#pragma once

#include "animationset/AS_DopeSheetUpdateData.h"
#include "core/UT_String.h"

#include <memory>
#include <optional>

class CAnimationSetObj;
class UT_Command;
class UT_ComplexCommand;

// Runs several changes of one set as one entry of its history. While the scope lives,
// every command executed on the set's history, through the scope or by any code it calls,
// lands in the scope's group. The scope always closes its group:
// - normally, the group goes onto the history under the scope's name (into an outer group
//   if one was open), and nothing when it stayed empty; a record given to NotifyOnClose
//   goes out then, and again after each undo and redo of the entry (not at all when the
//   group stayed empty);
// - when an exception leaves the scope, or after Abort, the changes made so far are undone
//   at once and nothing is recorded. If undoing them fails too, the history is emptied,
//   since it no longer matches the model.
// Scopes nest: an inner scope puts its group into the outer one.
class DC_CommandScope {
public:
    DC_CommandScope(CAnimationSetObj& set, UT_WString name);
    ~DC_CommandScope();
    DC_CommandScope(const DC_CommandScope&) = delete;
    DC_CommandScope& operator=(const DC_CommandScope&) = delete;

    // Executes `command` (which stays the caller's) into the group. False when it failed:
    // as for any failed command the history is then emptied.
    bool Execute(UT_Command& command);
    // Records the inverse of a change already made.
    void Add(std::unique_ptr<UT_Command> inverse);
    // One record for the whole group, for commands that run silently.
    void NotifyOnClose(AS_DopeSheetUpdateData record);
    // Undoes what the scope did and closes it; later calls do nothing.
    void Abort();
    bool IsOpen() const { return open_; }

private:
    void Close(bool keep);

    CAnimationSetObj& set_;
    UT_WString name_;
    std::unique_ptr<UT_ComplexCommand> outer_;
    std::optional<AS_DopeSheetUpdateData> record_;
    int exceptionsAtStart_;
    bool open_ = true;
};
