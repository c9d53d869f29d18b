#pragma once

#include "animationset/DC_Command.h"
#include "core/UT_ComplexCommand.h"

#include <memory>
#include <optional>

// A group of commands on a set that sends one record after its children ran, on the
// first run and again after every undo and redo. Its children usually run silently.
// The record keeps no pointer into the model: its scene is kept by id and looked up when
// the record goes out (null again when the scene is gone), and elements go by their ids.
class DC_ComplexCommand : public DC_Command {
public:
    // `record` may be empty: the group then sends nothing of its own.
    DC_ComplexCommand(CAnimationSetObj& set, std::unique_ptr<UT_ComplexCommand> group,
                      std::optional<AS_DopeSheetUpdateData> record);

    // Runs the children from last to first, then sends the record. The inverse is a
    // group of the children's inverses with the same record.
    std::unique_ptr<UT_Command> Execute() override;
    uint32_t Size() const override { return group_->Size(); }
    // Forwarded to each child, which restores its own context.
    void Prepare() override { group_->Prepare(); }

    const UT_ComplexCommand& Group() const { return *group_; }
    // Sends the record now, as the children's first run did not.
    void SendRecord() const;

private:
    DC_ComplexCommand(const DC_ComplexCommand& origin, std::unique_ptr<UT_ComplexCommand> group);

    std::unique_ptr<UT_ComplexCommand> group_;
    std::optional<AS_DopeSheetUpdateData> record_;
    uint32_t sceneId_ = AS_kInvalidId;
};
