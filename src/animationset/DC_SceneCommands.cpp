// The commands on the scenes of a set.

#include "animationset/AS_CameraLevelObj.h"
#include "animationset/AS_DopeSheetNotifProxy.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"
#include "animationset/DC_AddSceneCommand.h"
#include "animationset/DC_ChangeASPropertiesCommand.h"
#include "animationset/DC_ChangeSceneProperties.h"
#include "animationset/DC_DeleteSceneCommand.h"
#include "animationset/DC_ReorderScene.h"
#include "animationset/DC_SetSceneVisibleCommand.h"
#include "animationset/DC_ToggleSceneVisibility.h"

// Adding.

DC_AddSceneCommand::DC_AddSceneCommand(CAnimationSetObj& set, CDopeSheetObj& scene, size_t index)
    : DC_Command(set), UT_StreamCommand(&set.PaletteList()), index_(index) {
    Capture(scene);
}

DC_AddSceneCommand::DC_AddSceneCommand(const DC_Command& origin, CDopeSheetObj& scene, size_t index)
    : DC_Command(origin), UT_StreamCommand(&origin.AnimationSet().PaletteList()), index_(index) {
    Capture(scene);
}

void DC_AddSceneCommand::Capture(CDopeSheetObj& scene) {
    sceneId_ = scene.SceneId();
    defaultCameraId_ = scene.DefaultCamera() ? scene.DefaultCamera()->GetId() : AS_kInvalidId;
    Store(scene);
}

std::unique_ptr<DC_AddSceneCommand> DC_AddSceneCommand::NewScene(CAnimationSetObj& set,
                                                                 const UT_WString& name, size_t index) {
    CDopeSheetObj scene;
    scene.Initialise(set.TakeNextSceneId(), name.empty() ? set.NewSceneName() : name, &set.PaletteList());
    scene.InitialiseDefaultElements(set.CameraWidth(), set.CameraHeight());
    scene.SetCameraSize(set.CameraWidth(), set.CameraHeight());
    return std::make_unique<DC_AddSceneCommand>(set, scene, index);
}

std::unique_ptr<UT_Command> DC_AddSceneCommand::Execute() {
    CAnimationSetObj& set = AnimationSet();
    if (set.FindScene(sceneId_))
        return nullptr;
    auto scene = std::make_unique<CDopeSheetObj>();
    LoadInto(*scene);
    if (scene->SceneId() != sceneId_)
        return nullptr;
    scene->EnsureDefaultCamera(set.CameraWidth(), set.CameraHeight(), defaultCameraId_);
    CDopeSheetObj* added = scene.get();
    set.AddScene(std::move(scene), index_);
    SendSceneChange(kSceneAdded, added);
    return std::make_unique<DC_DeleteSceneCommand>(*this, sceneId_, true);
}

// Deleting.

DC_DeleteSceneCommand::DC_DeleteSceneCommand(CAnimationSetObj& set, uint32_t sceneId, bool eraseFiles)
    : DC_Command(set), sceneId_(sceneId), eraseFiles_(eraseFiles) {}

DC_DeleteSceneCommand::DC_DeleteSceneCommand(const DC_Command& origin, uint32_t sceneId, bool eraseFiles)
    : DC_Command(origin), sceneId_(sceneId), eraseFiles_(eraseFiles) {}

std::unique_ptr<UT_Command> DC_DeleteSceneCommand::Execute() {
    CAnimationSetObj& set = AnimationSet();
    CDopeSheetObj* scene = set.FindScene(sceneId_);
    const int index = set.SequenceIndex(sceneId_);
    if (!scene || index < 0 || set.Sequence().size() < 2)
        return nullptr;
    // The snapshot is taken before the scene lets go of the drawings it can load again.
    auto inverse = std::make_unique<DC_AddSceneCommand>(*this, *scene, static_cast<size_t>(index));
    SendSceneChange(kSceneAboutToBeDeleted, scene);
    const CDopeSheetObj* current = set.CurrentScene();
    set.RemoveScene(sceneId_, eraseFiles_);
    SendSceneChange(kSceneDeleted, scene);
    if (set.CurrentScene() != current)
        SendSceneChange(kSceneActivated, set.CurrentScene());
    return inverse;
}

// Reordering.

DC_ReorderScene::DC_ReorderScene(CAnimationSetObj& set, size_t from, size_t to)
    : DC_Command(set), from_(from), to_(to) {}

DC_ReorderScene::DC_ReorderScene(const DC_Command& origin, size_t from, size_t to)
    : DC_Command(origin), from_(from), to_(to) {}

std::unique_ptr<UT_Command> DC_ReorderScene::Execute() {
    CAnimationSetObj& set = AnimationSet();
    if (from_ >= set.Sequence().size())
        return nullptr;
    CDopeSheetObj* scene = set.Sequence()[from_];
    set.MoveScene(from_, to_);
    const auto now = static_cast<size_t>(set.SequenceIndex(scene->SceneId()));
    SendSceneChange(kSceneReordered, scene);
    // Back from where it stands now to where it stood: past its old place when that lies
    // further on.
    return std::make_unique<DC_ReorderScene>(*this, now, InsertionPointFor(now, from_));
}

// Visibility in the scene list.

DC_ToggleSceneVisibility::DC_ToggleSceneVisibility(CAnimationSetObj& set, uint32_t sceneId)
    : DC_Command(set), sceneId_(sceneId) {}

UT_WString DC_ToggleSceneVisibility::NameFor(const CAnimationSetObj& set, uint32_t sceneId) {
    const CDopeSheetObj* scene = set.FindScene(sceneId);
    return scene && !scene->IsVisible() ? kShowName : kHideName;
}

std::unique_ptr<UT_Command> DC_ToggleSceneVisibility::Execute() {
    CDopeSheetObj* scene = AnimationSet().FindScene(sceneId_);
    if (!scene)
        return nullptr;
    scene->SetVisible(!scene->IsVisible());
    SendSceneChange(kSceneVisibilityChanged, scene);
    return std::make_unique<DC_ToggleSceneVisibility>(*this);
}

// Visibility of an element's row.

DC_SetSceneVisibleCommand::DC_SetSceneVisibleCommand(CAnimationSetObj& set, uint32_t sceneId,
                                                     uint32_t elementId, int order, bool shown)
    : DC_Command(set), sceneId_(sceneId), elementId_(elementId), order_(order), shown_(shown) {}

std::unique_ptr<UT_Command> DC_SetSceneVisibleCommand::Execute() {
    CDopeSheetObj* scene = AnimationSet().FindScene(sceneId_);
    if (!scene || order_ < 0 || order_ > 1)
        return nullptr;
    AS_CompositionOrder& order =
        order_ == 0 ? static_cast<AS_CompositionOrder&>(scene->DrawingOrder()) : scene->SceneplanningOrder();
    const int row = order.FindRow(elementId_);
    if (row < 0)
        return nullptr;
    auto inverse = std::make_unique<DC_SetSceneVisibleCommand>(*this);
    inverse->shown_ = order.IsShown(row);
    order.SetShown(row, shown_);
    AS_DopeSheetUpdateData data(AS_DopeSheetCategory::kCompositionOrder, kCompositionOrderChanged, scene);
    data.element = scene->FindElement(elementId_);
    data.elements = {elementId_};
    data.value = static_cast<uint32_t>(order_);
    Send(data);
    return inverse;
}

// Scene properties.

DC_ChangeSceneProperties::DC_ChangeSceneProperties(CAnimationSetObj& set, uint32_t sceneId, UT_WString name,
                                                   const std::array<uint8_t, 4>& background)
    : DC_Command(set), sceneId_(sceneId), name_(std::move(name)), background_(background) {}

DC_ChangeSceneProperties::DC_ChangeSceneProperties(const DC_Command& origin, uint32_t sceneId,
                                                   UT_WString name, const std::array<uint8_t, 4>& background)
    : DC_Command(origin), sceneId_(sceneId), name_(std::move(name)), background_(background) {}

std::unique_ptr<UT_Command> DC_ChangeSceneProperties::Execute() {
    CDopeSheetObj* scene = AnimationSet().FindScene(sceneId_);
    if (!scene)
        return nullptr;
    auto inverse =
        std::make_unique<DC_ChangeSceneProperties>(*this, sceneId_, scene->Name(), scene->BackgroundColour());
    scene->SetName(name_);
    scene->SetBackgroundColour(background_);
    SendSceneChange(kScenePropertiesChanged, scene);
    return inverse;
}

// Properties of the set.

DC_ChangeASPropertiesCommand::DC_ChangeASPropertiesCommand(CAnimationSetObj& set, uint32_t frameRate,
                                                           uint32_t width, uint32_t height)
    : DC_Command(set), frameRate_(frameRate), width_(width), height_(height) {}

DC_ChangeASPropertiesCommand::DC_ChangeASPropertiesCommand(const DC_Command& origin, uint32_t frameRate,
                                                           uint32_t width, uint32_t height)
    : DC_Command(origin), frameRate_(frameRate), width_(width), height_(height) {}

std::unique_ptr<UT_Command> DC_ChangeASPropertiesCommand::Execute() {
    CAnimationSetObj& set = AnimationSet();
    auto inverse = std::make_unique<DC_ChangeASPropertiesCommand>(*this, set.FrameRate(), set.CameraWidth(),
                                                                  set.CameraHeight());
    set.SetProperties(frameRate_, width_, height_);
    Send(AS_DopeSheetUpdateData(AS_DopeSheetCategory::kAnimationProperties, kNoDetail));
    return inverse;
}
