#pragma once

#include "animationset/AS_DopeSheetUpdateData.h"
#include "core/UT_Command.h"
#include "core/UT_String.h"

#include <cstdint>

class CAnimationSetObj;
class CDopeSheetObj;

// Where the user stood when a command was made: the mode and the current scene.
struct DC_CommandContext {
    bool sceneplanning = false;
    uint32_t sceneId = AS_kInvalidId;

    // The present mode and current scene of `set`.
    static DC_CommandContext Of(const CAnimationSetObj& set);
    bool operator==(const DC_CommandContext&) const = default;
};

// The main window's handling of the two mode commands. With none installed (the command
// line, tests) a mode command only switches the set's copy of the mode.
class DC_ModeCommandTarget {
public:
    virtual ~DC_ModeCommandTarget() = default;
    // `commandId` is DC_Command::kSceneplanningModeCommand or kDrawingModeCommand.
    virtual void OnModeCommand(CAnimationSetObj& set, uint32_t commandId) = 0;
};

// Base of the commands on an animation set. A command holds values, never pointers into
// the model: Execute finds its scene and elements again by id, changes the model, sends
// the change through the set's notification proxy (unless it runs silently) and returns
// its inverse, which takes over the set, the notify flag and the context of the command.
// A command that must keep a snapshot also derives from UT_StreamCommand.
class DC_Command : public virtual UT_Command {
public:
    static constexpr uint32_t kSceneplanningModeCommand = 33190;
    static constexpr uint32_t kDrawingModeCommand = 33191;

    CAnimationSetObj& AnimationSet() const { return *set_; }
    // False: the command runs silently, so that a group can send one record for all.
    bool Notifies() const { return notify_ != 0; }
    void SetNotify(bool notify) { notify_ = notify ? 1 : 0; }
    const DC_CommandContext& Context() const { return context_; }
    void SetContext(const DC_CommandContext& context) { context_ = context; }

    // Brings the user back to the command's mode and scene before an undo or redo: the
    // mode command when the mode differs, then the scene made current with code 5.
    void Prepare() override;

    // Executes through the history of the set (into its open group, if any) under `name`.
    // False when the command failed; the history has then been emptied.
    bool Run(const UT_WString& name);

    // Installs the main window's mode handling; returns the previous one. Null removes it.
    static DC_ModeCommandTarget* SetModeCommandTarget(DC_ModeCommandTarget* target);
    static DC_ModeCommandTarget* ModeCommandTarget();

protected:
    // A command made now: the context is the set's present mode and scene.
    explicit DC_Command(CAnimationSetObj& set, bool notify = true);
    // An inverse: the same set, notify flag and context as `origin`.
    DC_Command(const DC_Command& origin) = default;
    DC_Command& operator=(const DC_Command&) = default;

    // Sends the record through the set's proxy, unless the command runs silently.
    void Send(const AS_DopeSheetUpdateData& data) const;
    void SendSceneChange(uint32_t code, CDopeSheetObj* scene) const;

private:
    CAnimationSetObj* set_;
    uint8_t notify_;
    DC_CommandContext context_;
};
