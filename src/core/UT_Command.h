#pragma once

#include <cstdint>
#include <memory>

// Base of every undoable operation. There is no separate undo: Execute performs the change
// and hands back a new command that reverts it, so undo and redo are one mechanism.
class UT_Command {
public:
    virtual ~UT_Command() = default;

    // Performs the change and returns the command that undoes it, or null on failure.
    virtual std::unique_ptr<UT_Command> Execute() = 0;
    // Memory held, in bytes.
    virtual uint32_t Size() const { return 500; }
    // Called by the history just before Execute on an undo or redo, to bring the user back
    // to where the command was made.
    virtual void Prepare() {}
    // A hook in the last slot that no command overrides.
    virtual void Reserved() {}

    // A command whose Execute may legitimately give no inverse. Such a command only runs as
    // a child of a group, which skips the missing inverse; the history refuses it alone.
    bool InverseIsOptional() const { return inverseIsOptional_; }

protected:
    UT_Command() = default;
    explicit UT_Command(bool inverseIsOptional) : inverseIsOptional_(inverseIsOptional) {}
    UT_Command(const UT_Command&) = default;
    UT_Command& operator=(const UT_Command&) = default;

private:
    bool inverseIsOptional_ = false;
};
