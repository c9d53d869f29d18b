#include "animationset/DC_ComplexCommand.h"

#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"

DC_ComplexCommand::DC_ComplexCommand(CAnimationSetObj& set, std::unique_ptr<UT_ComplexCommand> group,
                                     std::optional<AS_DopeSheetUpdateData> record)
    : DC_Command(set), group_(group ? std::move(group) : std::make_unique<UT_ComplexCommand>()),
      record_(std::move(record)) {
    if (record_) {
        if (record_->scene)
            sceneId_ = record_->scene->SceneId();
        record_->scene = nullptr;
        record_->element = nullptr;
        record_->object = nullptr;
    }
}

DC_ComplexCommand::DC_ComplexCommand(const DC_ComplexCommand& origin,
                                     std::unique_ptr<UT_ComplexCommand> group)
    : DC_Command(origin), group_(std::move(group)), record_(origin.record_), sceneId_(origin.sceneId_) {}

std::unique_ptr<UT_Command> DC_ComplexCommand::Execute() {
    std::unique_ptr<UT_Command> inverse = group_->Execute();
    std::unique_ptr<UT_ComplexCommand> children(static_cast<UT_ComplexCommand*>(inverse.release()));
    SendRecord();
    return std::unique_ptr<UT_Command>(new DC_ComplexCommand(*this, std::move(children)));
}

void DC_ComplexCommand::SendRecord() const {
    if (!record_)
        return;
    AS_DopeSheetUpdateData data = *record_;
    if (sceneId_ != AS_kInvalidId) {
        data.scene = AnimationSet().FindScene(sceneId_);
        // The scene is gone: the record must not fall back on the current scene.
        if (!data.scene)
            return;
    }
    Send(data);
}
