#pragma once

#include "animationset/DC_Command.h"

// Takes a scene out of the set. The scene stays in the set's map, marked removed, until
// the next save, which erases its folder when the erase flag is set. The inverse holds a
// snapshot of the scene as it was, and its place in the sequence.
class DC_DeleteSceneCommand : public DC_Command {
public:
    static constexpr const char16_t* kName = u"Delete Scene";

    DC_DeleteSceneCommand(CAnimationSetObj& set, uint32_t sceneId, bool eraseFiles = true);
    // The inverse of an addition: the context of `origin`.
    DC_DeleteSceneCommand(const DC_Command& origin, uint32_t sceneId, bool eraseFiles);

    // Sends "about to be deleted", removes, sends "deleted", and "activated" for the scene
    // that became current in its place. Null when the scene is not in the set, or when it
    // is the only scene left: a set always keeps one.
    std::unique_ptr<UT_Command> Execute() override;

    uint32_t SceneId() const { return sceneId_; }
    bool ErasesFiles() const { return eraseFiles_; }

private:
    uint32_t sceneId_;
    bool eraseFiles_;
};
