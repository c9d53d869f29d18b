// The commands on the elements of a scene and on their rows in the composition orders.

#include "animationset/AS_CameraLevelObj.h"
#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/AS_MediaLinkLevelObj.h"
#include "animationset/AS_PegLevelObj.h"
#include "animationset/AS_SoundLevel.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"
#include "animationset/DC_AddLevelCommand.h"
#include "animationset/DC_CloneLevelCommand.h"
#include "animationset/DC_CreateLevelCommand.h"
#include "animationset/DC_ModifyElementNoteCommand.h"
#include "animationset/DC_ReSwitchLevelCommand.h"
#include "animationset/DC_RemoveLevelCommand.h"
#include "animationset/DC_RenameLevelCommand.h"
#include "animationset/DC_ReparentLevelCommand.h"
#include "animationset/DC_SwitchLevelCommand.h"
#include "colour/CM_PaletteList.h"
#include "core/DB_Archive.h"
#include "core/UT_MessageHandler.h"
#include "core/UT_NameRules.h"

#include <algorithm>
#include <set>

namespace {

// The element of the scene, unless it is removed.
AS_DopeSheetLevelObj* PresentElement(const CDopeSheetObj& scene, uint32_t id) {
    AS_DopeSheetLevelObj* level = scene.FindElement(id);
    return level && !scene.IsRemoved(id) ? level : nullptr;
}

AS_CompositionOrder* OrderOf(const CDopeSheetObj& scene, int order) {
    if (order == 0)
        return &scene.DrawingOrder();
    if (order == 1)
        return &scene.SceneplanningOrder();
    return nullptr;
}

AS_DopeSheetUpdateData ElementRecord(uint32_t code, CDopeSheetObj* scene, std::vector<uint32_t> ids) {
    AS_DopeSheetUpdateData data(AS_DopeSheetCategory::kElement, code, scene);
    if (ids.size() == 1)
        data.element = scene->FindElement(ids.front());
    data.elements = std::move(ids);
    return data;
}

std::vector<uint32_t> SortedIds(const std::vector<AS_CompositionRow>& rows) {
    std::vector<uint32_t> ids;
    for (const AS_CompositionRow& row : rows)
        ids.push_back(row.id);
    std::sort(ids.begin(), ids.end());
    return ids;
}

} // namespace

// Creating.

DC_CreateLevelCommand::DC_CreateLevelCommand(CAnimationSetObj& set, uint32_t sceneId, uint32_t count,
                                             UT_WString baseName, uint32_t typeCode, uint32_t duration)
    : DC_Command(set), sceneId_(sceneId), count_(count), baseName_(std::move(baseName)), typeCode_(typeCode),
      duration_(duration) {}

std::unique_ptr<UT_Command> DC_CreateLevelCommand::Execute() {
    CAnimationSetObj& set = AnimationSet();
    CDopeSheetObj* scene = set.FindScene(sceneId_);
    if (!scene || typeCode_ > kMediaLink)
        return nullptr;
    if (!UT_IsValidName(baseName_)) {
        UT_MessageHandler::Post(UT_MessageHandler::kError,
                                u"Unable to create the level(s) using the given name.");
        return nullptr;
    }
    created_.clear();
    std::vector<AS_CompositionRow> drawingRows = scene->DrawingOrder().Rows();
    std::vector<AS_CompositionRow> sceneplanningRows = scene->SceneplanningOrder().Rows();
    for (uint32_t i = 0; i < count_; ++i) {
        const UT_WString name = scene->UniqueName(baseName_);
        const uint32_t id = scene->NewElementId();
        std::unique_ptr<AS_DopeSheetLevelObj> level;
        switch (typeCode_) {
        case kVectorDrawing:
            level = AS_VectorGraphicLevelObj::Create(id, name);
            break;
        case kBitmap:
            level = AS_BitmapLevelObj::Create(id, name);
            break;
        case kSound:
            level = AS_SoundLevel::Create(id, name);
            break;
        case kPeg:
            level = AS_PegLevelObj::Create(id, name, duration_);
            break;
        case kCamera:
            level = AS_CameraLevelObj::Create(id, name, duration_, set.CameraWidth(), set.CameraHeight());
            break;
        default:
            level = AS_MediaLinkLevelObj::Create(id, name);
            break;
        }
        scene->AddElement(std::move(level));
        if (typeCode_ == kPeg)
            scene->SceneplanningOrder().SetEnabled(scene->SceneplanningOrder().FindRow(id), false);
        created_.push_back(id);
    }
    Send(ElementRecord(kElementsCreated, scene, created_));
    return std::make_unique<DC_RemoveLevelCommand>(*this, sceneId_, created_, std::move(drawingRows),
                                                   std::move(sceneplanningRows));
}

// Removing.

DC_RemoveLevelCommand::DC_RemoveLevelCommand(CAnimationSetObj& set, uint32_t sceneId,
                                             std::vector<uint32_t> elementIds)
    : DC_Command(set), sceneId_(sceneId), elementIds_(std::move(elementIds)) {}

DC_RemoveLevelCommand::DC_RemoveLevelCommand(const DC_Command& origin, uint32_t sceneId,
                                             std::vector<uint32_t> elementIds)
    : DC_Command(origin), sceneId_(sceneId), elementIds_(std::move(elementIds)) {}

DC_RemoveLevelCommand::DC_RemoveLevelCommand(const DC_Command& origin, uint32_t sceneId,
                                             std::vector<uint32_t> elementIds,
                                             std::vector<AS_CompositionRow> drawingRows,
                                             std::vector<AS_CompositionRow> sceneplanningRows)
    : DC_Command(origin), sceneId_(sceneId), elementIds_(std::move(elementIds)),
      rowsAfter_(Rows{std::move(drawingRows), std::move(sceneplanningRows)}) {}

std::unique_ptr<UT_Command> DC_RemoveLevelCommand::Execute() {
    CDopeSheetObj* scene = AnimationSet().FindScene(sceneId_);
    if (!scene || elementIds_.empty())
        return nullptr;
    const std::set<uint32_t> removing(elementIds_.begin(), elementIds_.end());
    if (removing.size() != elementIds_.size())
        return nullptr;
    for (uint32_t id : elementIds_)
        if (!PresentElement(*scene, id))
            return nullptr;

    auto inverse = std::make_unique<DC_AddLevelCommand>(*this, *scene, elementIds_);

    // The common halves that go with these elements: those no other present element shares.
    std::vector<uint32_t> commons;
    for (uint32_t id : elementIds_) {
        const uint32_t common = scene->FindElement(id)->GetCommonId();
        const bool shared =
            std::any_of(scene->Levels().begin(), scene->Levels().end(), [&](const auto& entry) {
                return !entry.removed && !removing.count(entry.level->GetId()) &&
                       entry.level->GetCommonId() == common;
            });
        if (!shared && std::find(commons.begin(), commons.end(), common) == commons.end())
            commons.push_back(common);
    }
    Send(ElementRecord(kElementsAboutToBeRemoved, scene, commons));
    for (uint32_t id : elementIds_)
        scene->RemoveElement(id, true);
    if (rowsAfter_) {
        scene->DrawingOrder().SetRows(rowsAfter_->drawing);
        scene->SceneplanningOrder().SetRows(rowsAfter_->sceneplanning);
    }
    AS_DopeSheetUpdateData removed(AS_DopeSheetCategory::kElement, kElementRemoved, scene);
    removed.elements = elementIds_;
    Send(removed);
    return inverse;
}

// Adding back.

DC_AddLevelCommand::DC_AddLevelCommand(const DC_Command& origin, CDopeSheetObj& scene,
                                       const std::vector<uint32_t>& elementIds)
    : DC_Command(origin), sceneId_(scene.SceneId()), drawingRows_(scene.DrawingOrder().Rows()),
      sceneplanningRows_(scene.SceneplanningOrder().Rows()) {
    elementIds_ = elementIds;
    std::sort(elementIds_.begin(), elementIds_.end(),
              [&](uint32_t a, uint32_t b) { return scene.LivePosition(a) < scene.LivePosition(b); });
    // Clones removed together share their common half in one archive.
    DB_Archive archive(&snapshot_, true);
    archive.SetContext(&origin.AnimationSet().PaletteList());
    for (uint32_t id : elementIds_) {
        positions_.push_back(static_cast<size_t>(scene.LivePosition(id)));
        archive.WriteTyped(*scene.FindElement(id));
    }
    snapshot_.Rewind();
    if (const AS_CameraLevelObj* camera = scene.CurrentCamera())
        currentCameraId_ = camera->GetId();
}

uint32_t DC_AddLevelCommand::Size() const {
    const size_t rows = (drawingRows_.size() + sceneplanningRows_.size()) * sizeof(AS_CompositionRow);
    return snapshot_.Size() + static_cast<uint32_t>(rows + elementIds_.size() * 12) + 16;
}

std::unique_ptr<UT_Command> DC_AddLevelCommand::Execute() {
    CAnimationSetObj& set = AnimationSet();
    CDopeSheetObj* scene = set.FindScene(sceneId_);
    if (!scene)
        return nullptr;
    for (uint32_t id : elementIds_)
        if (PresentElement(*scene, id))
            return nullptr;

    // Elements whose removal no save purged yet come back as they are, with no file
    // work; the others come from the snapshot, which is read before anything changes.
    std::vector<bool> waiting;
    for (uint32_t id : elementIds_)
        waiting.push_back(scene->FindElement(id) != nullptr);
    std::vector<std::unique_ptr<AS_DopeSheetLevelObj>> levels;
    if (std::find(waiting.begin(), waiting.end(), false) != waiting.end()) {
        snapshot_.Rewind();
        DB_Archive archive(&snapshot_, true);
        archive.SetContext(&set.PaletteList());
        for (uint32_t id : elementIds_) {
            levels.push_back(archive.ReadNewAs<AS_DopeSheetLevelObj>());
            if (levels.back()->GetId() != id)
                archive.ThrowUnexpected();
        }
        snapshot_.Rewind();
    }
    for (size_t i = 0; i < elementIds_.size(); ++i)
        if (waiting[i])
            scene->RestoreRemovedElement(elementIds_[i]);
    for (size_t i = 0; i < levels.size(); ++i) {
        if (waiting[i])
            continue;
        // Clones still in the scene hold the common half as it stands now.
        if (auto* clonable = dynamic_cast<AS_ClonableLevel*>(levels[i].get()))
            for (const CDopeSheetObj::LevelEntry& entry : scene->Levels()) {
                auto* other = dynamic_cast<const AS_ClonableLevel*>(entry.level.get());
                if (!entry.removed && other && other->GetCommonId() == clonable->GetCommonId() &&
                    clonable->ShareCommonOf(*other))
                    break;
            }
        scene->AddElement(std::move(levels[i]), positions_[i]);
    }
    scene->DrawingOrder().SetRows(drawingRows_);
    scene->SceneplanningOrder().SetRows(sceneplanningRows_);
    if (scene->DefaultCamera() && scene->DefaultCamera()->GetId() == currentCameraId_)
        scene->SetCurrentCamera(scene->DefaultCamera());
    else if (auto* camera = dynamic_cast<AS_CameraLevelObj*>(PresentElement(*scene, currentCameraId_)))
        scene->SetCurrentCamera(camera);
    scene->MarkDirty();
    Send(ElementRecord(kElementsAdded, scene, elementIds_));
    return std::make_unique<DC_RemoveLevelCommand>(*this, sceneId_, elementIds_);
}

// Cloning.

DC_CloneLevelCommand::DC_CloneLevelCommand(CAnimationSetObj& set, uint32_t sceneId, uint32_t elementId)
    : DC_Command(set), sceneId_(sceneId), elementId_(elementId) {}

std::unique_ptr<UT_Command> DC_CloneLevelCommand::Execute() {
    CDopeSheetObj* scene = AnimationSet().FindScene(sceneId_);
    const AS_DopeSheetLevelObj* level = scene ? PresentElement(*scene, elementId_) : nullptr;
    if (!level || level->GetKind() == kLevelParamGroup)
        return nullptr;
    cloneId_ = scene->NewElementId();
    std::unique_ptr<AS_DopeSheetLevelObj> clone = level->Clone(cloneId_, true);
    if (!clone)
        return nullptr;
    std::vector<AS_CompositionRow> drawingRows = scene->DrawingOrder().Rows();
    std::vector<AS_CompositionRow> sceneplanningRows = scene->SceneplanningOrder().Rows();
    scene->AddElement(std::move(clone));
    Send(ElementRecord(kElementsAdded, scene, {cloneId_}));
    return std::make_unique<DC_RemoveLevelCommand>(*this, sceneId_, std::vector<uint32_t>{cloneId_},
                                                   std::move(drawingRows), std::move(sceneplanningRows));
}

// Renaming.

DC_RenameLevelCommand::DC_RenameLevelCommand(CAnimationSetObj& set, uint32_t sceneId, uint32_t elementId,
                                             UT_WString name)
    : DC_Command(set), sceneId_(sceneId), elementId_(elementId), name_(std::move(name)) {}

DC_RenameLevelCommand::DC_RenameLevelCommand(const DC_Command& origin, uint32_t sceneId, uint32_t elementId,
                                             UT_WString name)
    : DC_Command(origin), sceneId_(sceneId), elementId_(elementId), name_(std::move(name)) {}

std::unique_ptr<UT_Command> DC_RenameLevelCommand::Execute() {
    CDopeSheetObj* scene = AnimationSet().FindScene(sceneId_);
    AS_DopeSheetLevelObj* level = scene ? PresentElement(*scene, elementId_) : nullptr;
    if (!level)
        return nullptr;
    auto inverse = std::make_unique<DC_RenameLevelCommand>(*this, sceneId_, elementId_, level->GetName());
    level->SetName(name_);
    Send(ElementRecord(kElementRenamed, scene, {elementId_}));
    return inverse;
}

// The note.

DC_ModifyElementNoteCommand::DC_ModifyElementNoteCommand(CAnimationSetObj& set, uint32_t sceneId,
                                                         uint32_t elementId, UT_WString note)
    : DC_Command(set), sceneId_(sceneId), elementId_(elementId), note_(std::move(note)) {}

DC_ModifyElementNoteCommand::DC_ModifyElementNoteCommand(const DC_Command& origin, uint32_t sceneId,
                                                         uint32_t elementId, UT_WString note)
    : DC_Command(origin), sceneId_(sceneId), elementId_(elementId), note_(std::move(note)) {}

std::unique_ptr<UT_Command> DC_ModifyElementNoteCommand::Execute() {
    CDopeSheetObj* scene = AnimationSet().FindScene(sceneId_);
    AS_DopeSheetLevelObj* level = scene ? PresentElement(*scene, elementId_) : nullptr;
    if (!level)
        return nullptr;
    auto inverse =
        std::make_unique<DC_ModifyElementNoteCommand>(*this, sceneId_, elementId_, level->GetNote());
    level->SetNote(note_);
    Send(ElementRecord(kElementNoteChanged, scene, {elementId_}));
    return inverse;
}

// Rows of the orders.

namespace {

AS_DopeSheetUpdateData OrderRecord(CDopeSheetObj* scene, int order, std::vector<uint32_t> ids) {
    AS_DopeSheetUpdateData data(AS_DopeSheetCategory::kCompositionOrder, kCompositionOrderChanged, scene);
    data.value = static_cast<uint32_t>(order);
    data.elements = std::move(ids);
    return data;
}

} // namespace

DC_SwitchLevelCommand::DC_SwitchLevelCommand(CAnimationSetObj& set, uint32_t sceneId, int order,
                                             std::vector<Move> moves)
    : DC_Command(set), sceneId_(sceneId), order_(order), moves_(std::move(moves)) {}

std::unique_ptr<UT_Command> DC_SwitchLevelCommand::Execute() {
    CDopeSheetObj* scene = AnimationSet().FindScene(sceneId_);
    AS_CompositionOrder* order = scene ? OrderOf(*scene, order_) : nullptr;
    if (!order)
        return nullptr;
    for (const Move& move : moves_)
        if (order->FindRow(move.element) < 0 ||
            (move.target != AS_kInvalidId && order->FindRow(move.target) < 0))
            return nullptr;
    auto inverse = std::make_unique<DC_ReSwitchLevelCommand>(*this, sceneId_, order_, order->Rows());
    std::vector<uint32_t> moved;
    for (const Move& move : moves_) {
        const int to = move.target == AS_kInvalidId ? -1 : order->FindRow(move.target);
        order->Move(order->FindRow(move.element), to, move.before);
        moved.push_back(move.element);
    }
    scene->MarkDirty();
    Send(OrderRecord(scene, order_, moved));
    return inverse;
}

DC_ReSwitchLevelCommand::DC_ReSwitchLevelCommand(const DC_Command& origin, uint32_t sceneId, int order,
                                                 std::vector<AS_CompositionRow> rows)
    : DC_Command(origin), sceneId_(sceneId), order_(order), rows_(std::move(rows)) {}

std::unique_ptr<UT_Command> DC_ReSwitchLevelCommand::Execute() {
    CDopeSheetObj* scene = AnimationSet().FindScene(sceneId_);
    AS_CompositionOrder* order = scene ? OrderOf(*scene, order_) : nullptr;
    if (!order || SortedIds(order->Rows()) != SortedIds(rows_))
        return nullptr;
    auto inverse = std::make_unique<DC_ReSwitchLevelCommand>(*this, sceneId_, order_, order->Rows());
    order->SetRows(rows_);
    scene->MarkDirty();
    Send(OrderRecord(scene, order_, SortedIds(rows_)));
    return inverse;
}

DC_ReparentLevelCommand::DC_ReparentLevelCommand(CAnimationSetObj& set, uint32_t sceneId, uint32_t elementId,
                                                 uint32_t parentId)
    : DC_Command(set), sceneId_(sceneId), elementId_(elementId), parentId_(parentId) {}

std::unique_ptr<UT_Command> DC_ReparentLevelCommand::Execute() {
    CDopeSheetObj* scene = AnimationSet().FindScene(sceneId_);
    if (!scene)
        return nullptr;
    AS_SPCompositionOrder& order = scene->SceneplanningOrder();
    const int row = order.FindRow(elementId_);
    const int parent = parentId_ == AS_kInvalidId ? -1 : order.FindRow(parentId_);
    if (row < 0 || (parentId_ != AS_kInvalidId && parent < 0))
        return nullptr;
    auto inverse = std::make_unique<DC_ReSwitchLevelCommand>(*this, sceneId_, 1, order.Rows());
    if (!order.Reparent(row, parent))
        return nullptr;
    scene->MarkDirty();
    Send(OrderRecord(scene, 1, {elementId_}));
    return inverse;
}
