#pragma once

#include "animationset/DC_Command.h"
#include "core/UT_StreamCommand.h"

#include <cstddef>
#include <memory>

class CDopeSheetObj;

// Puts a scene into the set from a snapshot: a new scene from the interface, or one
// that a deletion took out. The snapshot is written through an embedded archive, so
// drawings that lived only in memory come back with the scene. The inverse deletes the
// scene again, with its files to be erased at the next save.
class DC_AddSceneCommand : public DC_Command, public UT_StreamCommand {
public:
    static constexpr const char16_t* kName = u"Add Scene";

    // Takes a snapshot of `scene` now; the command puts it at `index` of the sequence
    // (at the end when the index lies beyond).
    DC_AddSceneCommand(CAnimationSetObj& set, CDopeSheetObj& scene, size_t index);
    // The inverse of a deletion: the context of `origin`.
    DC_AddSceneCommand(const DC_Command& origin, CDopeSheetObj& scene, size_t index);

    // A scene as the interface adds it: a new scene id, the name (NewSceneName of the set
    // when empty) and the default elements, to go at `index`.
    static std::unique_ptr<DC_AddSceneCommand> NewScene(CAnimationSetObj& set, const UT_WString& name,
                                                        size_t index);

    // Null when a scene of this id is in the set already or the snapshot is not of the
    // scene; a damaged snapshot throws DB_Exception.
    std::unique_ptr<UT_Command> Execute() override;

    uint32_t SceneId() const { return sceneId_; }
    size_t Index() const { return index_; }

private:
    void Capture(CDopeSheetObj& scene);

    uint32_t sceneId_ = AS_kInvalidId;
    // The default camera is not part of the scene's stream; it comes back under its id.
    uint32_t defaultCameraId_ = AS_kInvalidId;
    size_t index_;
};
