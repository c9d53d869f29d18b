#pragma once

#include "core/UT_Command.h"
#include "core/UT_ComplexCommand.h"
#include "core/UT_CountedHandle.h"
#include "core/UT_String.h"

#include <cstdint>
#include <memory>
#include <vector>

// The undo and redo lists of one animation set, with the positions at which the project
// and the library were last saved and the limits that keep its memory bounded.
class UT_CommandHistory {
public:
    struct Entry {
        UT_CountedHandle<UT_Command> command;
        UT_WString name;
    };

    static constexpr uint32_t kDefaultCountLimit = 1000;
    static constexpr uint32_t kDefaultSizeLimit = 20000000;

    UT_CommandHistory() = default;
    virtual ~UT_CommandHistory() = default;
    UT_CommandHistory(const UT_CommandHistory&) = delete;
    UT_CommandHistory& operator=(const UT_CommandHistory&) = delete;

    // Executes `command` (which stays the caller's) and records its inverse under `name`.
    // A command without inverse discards the whole history and gives false, unless it is
    // one whose inverse is optional, run while a group is open.
    bool Execute(UT_Command& command, const UT_WString& name);
    // Records the inverse of a change already made: into the open group if there is one.
    void Add(std::unique_ptr<UT_Command> inverse, const UT_WString& name);

    void BeginGroup();
    // Pushes the open group under `name`, or drops it when it is empty.
    void EndGroup(const UT_WString& name);
    // Drops the open group without executing anything.
    void AbortGroup();
    bool IsGroupOpen() const { return group_ != nullptr; }
    // Takes the open group out, leaving none open; null when none was open. With SetGroup
    // this lets a caller nest a group of its own inside another and put the outer back.
    std::unique_ptr<UT_ComplexCommand> TakeGroup() { return std::move(group_); }
    // Makes `group` the open group (null: none), dropping any group that was open.
    void SetGroup(std::unique_ptr<UT_ComplexCommand> group) { group_ = std::move(group); }

    void Undo();
    void Redo();
    bool CanUndo() const { return !undo_.empty(); }
    bool CanRedo() const { return !redo_.empty(); }
    UT_WString UndoName() const;
    UT_WString RedoName() const;
    // "&Undo <name>\t<shortcut>" and its redo counterpart.
    UT_WString UndoMenuText(const UT_WString& shortcut) const;
    UT_WString RedoMenuText(const UT_WString& shortcut) const;

    // Marks the current state as saved, for the project and the library it holds.
    void MarkSaved();
    void MarkLibrarySaved();
    // True when the history stands away from the library-saved position; unless
    // `libraryOnly`, also when it stands away from the project-saved one.
    bool HasChanges(bool libraryOnly) const;

    // Empties both lists; the saved states become unreachable.
    void Clear();

    void SetLimits(uint32_t countLimit, uint32_t sizeLimit);
    uint32_t CountLimit() const { return countLimit_; }
    uint32_t SizeLimit() const { return sizeLimit_; }

    int32_t SavedPosition() const { return savedPosition_; }
    int32_t LibrarySavedPosition() const { return librarySavedPosition_; }
    // Sum of the sizes of the undo list as it stood at the last push.
    uint64_t TotalSize() const { return totalSize_; }
    const std::vector<Entry>& UndoList() const { return undo_; }
    const std::vector<Entry>& RedoList() const { return redo_; }

protected:
    // Called after every change of the lists, so a user interface can refresh its menus.
    virtual void Changed() {}

private:
    void Push(std::unique_ptr<UT_Command> command, const UT_WString& name);
    void DropOldest(size_t count);
    static void Move(std::vector<Entry>& from, std::vector<Entry>& to);

    int32_t savedPosition_ = 0;
    int32_t librarySavedPosition_ = 0;
    uint64_t totalSize_ = 0;
    std::vector<Entry> undo_;
    std::vector<Entry> redo_;
    std::unique_ptr<UT_ComplexCommand> group_;
    uint32_t countLimit_ = kDefaultCountLimit;
    uint32_t sizeLimit_ = kDefaultSizeLimit;
};
