// The Element menu: the elements of the current scene, changed through the set's history.

#include "animationset/AS_CellIteratorObservable.h"
#include "animationset/AS_CompositionOrder.h"
#include "animationset/AS_MediaLinkLevelObj.h"
#include "animationset/CAnimationSetObj.h"
#include "animationset/CDopeSheetObj.h"
#include "animationset/DC_CloneLevelCommand.h"
#include "animationset/DC_CommandScope.h"
#include "animationset/DC_CreateLevelCommand.h"
#include "animationset/DC_ModifyElementNoteCommand.h"
#include "animationset/DC_RemoveLevelCommand.h"
#include "animationset/DC_RenameLevelCommand.h"
#include "animationset/DC_ReparentLevelCommand.h"
#include "animationset/DC_SwitchLevelCommand.h"
#include "animationset/DC_UpdateElementCommand.h"
#include "core/UT_Format.h"
#include "core/UT_MessageHandler.h"
#include "platform/GUT_Commands.h"
#include "platform/GUT_ElementCommands.h"
#include "platform/detail/GUT_Qt.h"

#include <QInputDialog>
#include <algorithm>

namespace {

AS_CellIteratorObservable& CurrentCell() {
    return AS_CellIteratorObservable::Instance();
}

struct NewKind {
    uint32_t command;
    uint32_t createCode;
    uint32_t kind;
};

constexpr NewKind kNewKinds[] = {
    {kCmdElementNewDrawing, DC_CreateLevelCommand::kVectorDrawing, kLevelVectorDrawing},
    {kCmdElementNewImage, DC_CreateLevelCommand::kBitmap, kLevelImage},
    {kCmdElementNewSound, DC_CreateLevelCommand::kSound, kLevelSound},
    {kCmdElementNewPeg, DC_CreateLevelCommand::kPeg, kLevelPeg},
    {kCmdElementNewCamera, DC_CreateLevelCommand::kCamera, kLevelCamera},
    {kCmdElementNewMedia, DC_CreateLevelCommand::kMediaLink, kLevelMedia},
};

const NewKind* FindNewKind(uint32_t command) {
    for (const NewKind& kind : kNewKinds)
        if (kind.command == command)
            return &kind;
    return nullptr;
}

// The rows below `row` in `order`.
std::vector<uint32_t> Descendants(const AS_CompositionOrder& order, int row) {
    std::vector<uint32_t> ids;
    for (int r = row + 1; r >= 1 && r < order.SubtreeEnd(row); ++r)
        ids.push_back(order.GetLevelId(r));
    return ids;
}

} // namespace

const char* GUT_KindName(uint32_t kind) {
    switch (kind) {
    case kLevelVectorDrawing:
        return "Drawing";
    case kLevelImage:
        return "Image";
    case kLevelSound:
        return "Sound";
    case kLevelPeg:
        return "Peg";
    case kLevelCamera:
        return "Camera";
    case kLevelMedia:
        return "Media";
    case kLevelEffect:
        return "Effect";
    case kLevelParamGroup:
        return "Parameter group";
    default:
        return "Element";
    }
}

GUT_ElementCommands::GUT_ElementCommands(QWidget* dialogParent) : parent_(dialogParent) {}

GUT_ElementCommands::~GUT_ElementCommands() = default;

void GUT_ElementCommands::SetSet(CAnimationSetObj* set) {
    set_ = set;
}

CDopeSheetObj* GUT_ElementCommands::Scene() const {
    return set_ ? set_->CurrentScene() : nullptr;
}

bool GUT_ElementCommands::IsSceneplanning() const {
    return set_ && set_->IsSceneplanningMode();
}

AS_DopeSheetLevelObj* GUT_ElementCommands::Current() const {
    const AS_CellIteratorObservable& cell = CurrentCell();
    if (!Scene() || cell.Scene() != Scene())
        return nullptr;
    return cell.GetLevel();
}

std::vector<uint32_t> GUT_ElementCommands::Selected() const {
    std::vector<uint32_t> ids;
    const AS_CellIteratorObservable& cell = CurrentCell();
    if (!Current())
        return ids;
    if (!cell.IsInSelection())
        return {Current()->GetId()};
    for (const int32_t level : cell.SelectedLevels())
        if (const AS_DopeSheetLevelObj* element = cell.Order()->GetLevel(level))
            ids.push_back(element->GetId());
    return ids;
}

void GUT_ElementCommands::MakeCurrent(uint32_t elementId) {
    AS_CellIteratorObservable& cell = CurrentCell();
    if (!cell.Order())
        return;
    const int index = cell.Order()->FindShownIndex(elementId);
    if (index < 0)
        return;
    cell.SetCell({cell.Frame(), index});
    cell.SelectCurrentCell();
    cell.NotifyMove(this);
}

bool GUT_ElementCommands::Add(uint32_t createCode) {
    CDopeSheetObj* scene = Scene();
    const auto kind = std::find_if(std::begin(kNewKinds), std::end(kNewKinds),
                                   [createCode](const NewKind& k) { return k.createCode == createCode; });
    if (!scene || kind == std::end(kNewKinds))
        return false;
    // Pegs and cameras cover the scene as it is, ten frames at least.
    const auto frames = static_cast<uint32_t>(std::max(scene->LastFrame() + 1, 10));
    DC_CreateLevelCommand command(*set_, scene->SceneId(), 1, UT_FromUtf8(GUT_KindName(kind->kind)),
                                  createCode, frames);
    if (!command.Run(DC_CreateLevelCommand::kName))
        return false;
    if (!command.CreatedIds().empty())
        MakeCurrent(command.CreatedIds().front());
    return true;
}

bool GUT_ElementCommands::Rename(uint32_t elementId, const UT_WString& name) {
    CDopeSheetObj* scene = Scene();
    const AS_DopeSheetLevelObj* element = scene ? scene->FindElement(elementId) : nullptr;
    if (!element || scene->IsRemoved(elementId) || element->GetName() == name)
        return false;
    const UT_WString refusal = scene->CheckElementName(name, elementId);
    if (!refusal.empty()) {
        UT_MessageHandler::Post(UT_MessageHandler::kWarning, refusal);
        return false;
    }
    DC_RenameLevelCommand command(*set_, scene->SceneId(), elementId, name);
    return command.Run(DC_RenameLevelCommand::kName);
}

bool GUT_ElementCommands::Delete(const std::vector<uint32_t>& elementIds) {
    CDopeSheetObj* scene = Scene();
    if (!scene || elementIds.empty())
        return false;
    std::vector<uint32_t> ids;
    for (const uint32_t id : elementIds)
        if (scene->FindElement(id) && !scene->IsRemoved(id) &&
            std::find(ids.begin(), ids.end(), id) == ids.end())
            ids.push_back(id);
    if (ids.empty())
        return false;
    // Rows below a deleted row would leave the Sceneplanning order with it.
    const AS_SPCompositionOrder& order = scene->SceneplanningOrder();
    const std::vector<uint32_t> named = ids;
    for (const uint32_t id : named) {
        const std::vector<uint32_t> below = Descendants(order, order.FindRow(id));
        const bool more = std::any_of(below.begin(), below.end(), [&ids](uint32_t b) {
            return std::find(ids.begin(), ids.end(), b) == ids.end();
        });
        if (!more)
            continue;
        const UT_WString question =
            UT_Fmt(u"Element \"%S\" has elements below it in the sceneplanning order. They will be deleted "
                   u"with it.",
                   scene->FindElement(id)->GetDisplayName());
        if (UT_MessageHandler::Ask(UT_MessageHandler::kOkCancel, question, UT_MessageHandler::kCancel) !=
            UT_MessageHandler::kOk)
            return false;
        for (const uint32_t b : below)
            if (std::find(ids.begin(), ids.end(), b) == ids.end())
                ids.push_back(b);
    }
    DC_RemoveLevelCommand command(*set_, scene->SceneId(), ids);
    return command.Run(DC_RemoveLevelCommand::kName);
}

bool GUT_ElementCommands::Clone(uint32_t elementId) {
    CDopeSheetObj* scene = Scene();
    const AS_DopeSheetLevelObj* element = scene ? scene->FindElement(elementId) : nullptr;
    if (!element || scene->IsRemoved(elementId) || element->GetKind() == kLevelParamGroup)
        return false;
    DC_CloneLevelCommand command(*set_, scene->SceneId(), elementId);
    if (!command.Run(DC_CloneLevelCommand::kName))
        return false;
    MakeCurrent(command.CloneId());
    return true;
}

bool GUT_ElementCommands::SetNote(uint32_t elementId, const UT_WString& note) {
    CDopeSheetObj* scene = Scene();
    const AS_DopeSheetLevelObj* element = scene ? scene->FindElement(elementId) : nullptr;
    if (!element || scene->IsRemoved(elementId) || element->GetNote() == note)
        return false;
    DC_ModifyElementNoteCommand command(*set_, scene->SceneId(), elementId, note);
    return command.Run(DC_ModifyElementNoteCommand::kName);
}

bool GUT_ElementCommands::ChangeProperties(uint32_t elementId,
                                           const GUT_ElementPropertiesWnd::Values& values) {
    using Update = DC_UpdateElementCommand;
    CDopeSheetObj* scene = Scene();
    const AS_DopeSheetLevelObj* element = scene ? scene->FindElement(elementId) : nullptr;
    if (!element || scene->IsRemoved(elementId))
        return false;
    std::vector<std::pair<uint32_t, Update::Value>> changes;
    if (values.name != element->GetName()) {
        const UT_WString refusal = scene->CheckElementName(values.name, elementId);
        if (!refusal.empty()) {
            UT_MessageHandler::Post(UT_MessageHandler::kWarning, refusal);
            return false;
        }
        changes.push_back({Update::kElementName, {{}, 0.0, values.name}});
    }
    const auto* placed = dynamic_cast<const AS_BaseLevelElement*>(element);
    if (placed && values.hasPlacement) {
        const AS_Placement& old = placed->Placement();
        const AS_Placement& now = values.placement;
        auto number = [&changes](uint32_t field, double value) {
            changes.push_back({field, {{}, value, {}}});
        };
        auto point = [&changes](uint32_t field, const C3DPoint& value) {
            changes.push_back({field, {value, 0.0, {}}});
        };
        auto differ = [](const C3DPoint& a, const C3DPoint& b) {
            return a.x != b.x || a.y != b.y || a.z != b.z;
        };
        if (now.elementType != old.elementType)
            number(Update::kElementType, now.elementType);
        if (now.startFrame != old.startFrame) {
            // A media element's runs move with its start, and none may start before frame 0.
            const auto* media = dynamic_cast<const AS_MediaLinkLevelObj*>(element);
            if (media && !media->Cells().empty() &&
                int64_t{media->Cells().front().start} + now.startFrame - old.startFrame < 0) {
                UT_MessageHandler::Post(UT_MessageHandler::kWarning,
                                        u"The runs of the element would start before the first frame.");
                return false;
            }
            number(Update::kStartFrame, now.startFrame);
        }
        if (differ(now.offset, old.offset))
            point(Update::kOffset, now.offset);
        if (now.rotation != old.rotation)
            number(Update::kRotation, now.rotation);
        if (differ(now.rotationPivot, old.rotationPivot))
            point(Update::kRotationPivot, now.rotationPivot);
        if (differ(now.scalePivot, old.scalePivot))
            point(Update::kScalePivot, now.scalePivot);
        // Proportions first: the scales set after it follow each other as the user asked.
        if (now.keepProportions != old.keepProportions)
            number(Update::kKeepProportions, now.keepProportions ? 1 : 0);
        if (now.verticalScale != old.verticalScale)
            number(Update::kVerticalScale, now.verticalScale);
        if (now.horizontalScale != old.horizontalScale)
            number(Update::kHorizontalScale, now.horizontalScale);
    }
    if (changes.empty())
        return false;
    DC_CommandScope scope(*set_, Update::kName);
    for (const auto& [field, value] : changes) {
        Update command(*set_, scene->SceneId(), elementId, field, value);
        if (!scope.Execute(command))
            return false;
    }
    return true;
}

std::vector<uint32_t> GUT_ElementCommands::ParentCandidates(uint32_t elementId) const {
    std::vector<uint32_t> ids;
    const CDopeSheetObj* scene = Scene();
    if (!scene)
        return ids;
    const AS_SPCompositionOrder& order = scene->SceneplanningOrder();
    const int row = order.FindRow(elementId);
    if (row < 0)
        return ids;
    for (int r = 0; r < order.GetRowCount(); ++r)
        if (r != row && !order.IsAncestor(row, r) && !scene->IsRemoved(order.GetLevelId(r)))
            ids.push_back(order.GetLevelId(r));
    return ids;
}

bool GUT_ElementCommands::Reparent(uint32_t elementId, uint32_t parentId) {
    CDopeSheetObj* scene = Scene();
    if (!scene || scene->SceneplanningOrder().FindRow(elementId) < 0)
        return false;
    const AS_SPCompositionOrder& order = scene->SceneplanningOrder();
    const int parentRow = order.GetParentOfLevel(elementId);
    const uint32_t oldParent = parentRow >= 0 ? order.GetLevelId(parentRow) : AS_kInvalidId;
    if (parentId == oldParent && parentId != AS_kInvalidId)
        return false;
    if (parentId != AS_kInvalidId) {
        const std::vector<uint32_t> candidates = ParentCandidates(elementId);
        if (std::find(candidates.begin(), candidates.end(), parentId) == candidates.end())
            return false;
    }
    DC_ReparentLevelCommand command(*set_, scene->SceneId(), elementId, parentId);
    if (!command.Run(DC_ReparentLevelCommand::kName))
        return false;
    MakeCurrent(elementId);
    return true;
}

int GUT_ElementCommands::SiblingRow(uint32_t elementId, bool up) const {
    const CDopeSheetObj* scene = Scene();
    if (!scene)
        return -1;
    const AS_CompositionOrder& order =
        IsSceneplanning() ? static_cast<const AS_CompositionOrder&>(scene->SceneplanningOrder())
                          : scene->DrawingOrder();
    const int row = order.FindRow(elementId);
    if (row < 0)
        return -1;
    const int depth = order.GetDepth(row);
    if (up) {
        int previous = row - 1;
        while (previous >= 0 && order.GetDepth(previous) > depth)
            --previous;
        return previous >= 0 && order.GetDepth(previous) == depth ? previous : -1;
    }
    const int next = order.SubtreeEnd(row);
    return next < order.GetRowCount() && order.GetDepth(next) == depth ? next : -1;
}

bool GUT_ElementCommands::Move(uint32_t elementId, bool up) {
    CDopeSheetObj* scene = Scene();
    const int sibling = SiblingRow(elementId, up);
    if (sibling < 0)
        return false;
    const AS_CompositionOrder& order =
        IsSceneplanning() ? static_cast<const AS_CompositionOrder&>(scene->SceneplanningOrder())
                          : scene->DrawingOrder();
    DC_SwitchLevelCommand::Move move;
    move.element = elementId;
    move.target = order.GetLevelId(sibling);
    move.before = up;
    DC_SwitchLevelCommand command(*set_, scene->SceneId(), IsSceneplanning() ? 1 : 0, {move});
    if (!command.Run(DC_SwitchLevelCommand::kName))
        return false;
    MakeCurrent(elementId);
    return true;
}

// ---- the dialogs of the menu

bool GUT_ElementCommands::RunRename() {
    const AS_DopeSheetLevelObj* element = Current();
    if (!element)
        return false;
    const uint32_t id = element->GetId();
    bool ok = false;
    const QString name = QInputDialog::getText(parent_, gut::Tr("Rename Element"), gut::Tr("Name:"),
                                               QLineEdit::Normal, gut::ToQt(element->GetName()), &ok);
    return ok && Rename(id, gut::FromQt(name.trimmed()));
}

bool GUT_ElementCommands::RunNote() {
    const AS_DopeSheetLevelObj* element = Current();
    if (!element)
        return false;
    const uint32_t id = element->GetId();
    bool ok = false;
    const QString note = QInputDialog::getMultiLineText(
        parent_, gut::Tr("Element Note"), gut::Tr("Note of %1:").arg(gut::ToQt(element->GetDisplayName())),
        gut::ToQt(element->GetNote()), &ok);
    return ok && SetNote(id, gut::FromQt(note));
}

bool GUT_ElementCommands::RunProperties() {
    const AS_DopeSheetLevelObj* element = Current();
    if (!element)
        return false;
    const uint32_t id = element->GetId();
    GUT_ElementPropertiesWnd::Values values;
    values.name = element->GetName();
    if (const auto* placed = dynamic_cast<const AS_BaseLevelElement*>(element)) {
        values.hasPlacement = true;
        values.placement = placed->Placement();
    }
    const CDopeSheetObj* scene = Scene();
    GUT_ElementPropertiesWnd window(
        parent_, values, [scene, id](const UT_WString& name) { return scene->CheckElementName(name, id); });
    if (window.exec() != QDialog::Accepted)
        return false;
    return ChangeProperties(id, window.Result());
}

bool GUT_ElementCommands::RunParent() {
    const AS_DopeSheetLevelObj* element = Current();
    const CDopeSheetObj* scene = Scene();
    if (!element || !scene)
        return false;
    const uint32_t id = element->GetId();
    const std::vector<uint32_t> candidates = ParentCandidates(id);
    QStringList items{gut::Tr("(None)")};
    for (const uint32_t candidate : candidates)
        items << gut::ToQt(scene->FindElement(candidate)->GetDisplayName());
    const AS_SPCompositionOrder& order = scene->SceneplanningOrder();
    const int parentRow = order.GetParentOfLevel(id);
    const auto current = std::find(candidates.begin(), candidates.end(),
                                   parentRow >= 0 ? order.GetLevelId(parentRow) : AS_kInvalidId);
    const int selected = current == candidates.end() ? 0 : static_cast<int>(current - candidates.begin()) + 1;
    bool ok = false;
    const QString chosen = QInputDialog::getItem(
        parent_, gut::Tr("Change Parent"), gut::Tr("Parent of %1:").arg(gut::ToQt(element->GetDisplayName())),
        items, selected, false, &ok);
    if (!ok)
        return false;
    const int index = static_cast<int>(items.indexOf(chosen));
    if (index < 0)
        return false;
    return Reparent(id, index == 0 ? AS_kInvalidId : candidates[static_cast<size_t>(index - 1)]);
}

bool GUT_ElementCommands::UpdateCommand(uint32_t id, State& state) {
    const AS_DopeSheetLevelObj* element = Current();
    if (const NewKind* kind = FindNewKind(id)) {
        // Pegs and cameras live in the Sceneplanning order only.
        const bool sceneplanningOnly = kind->kind == kLevelPeg || kind->kind == kLevelCamera;
        state.enabled = Scene() && (IsSceneplanning() || !sceneplanningOnly);
        return true;
    }
    switch (id) {
    case kCmdElementRename:
    case kCmdElementNote:
    case kCmdElementProperties:
    case kCmdElementDelete:
        state.enabled = element != nullptr;
        return true;
    case kCmdElementClone:
        state.enabled = element && element->GetKind() != kLevelParamGroup;
        return true;
    case kCmdElementParent:
        state.enabled = element && IsSceneplanning();
        return true;
    case kCmdElementMoveUp:
    case kCmdElementMoveDown:
        state.enabled = element && SiblingRow(element->GetId(), id == kCmdElementMoveUp) >= 0;
        return true;
    default:
        return false;
    }
}

bool GUT_ElementCommands::OnCommand(uint32_t id) {
    if (const NewKind* kind = FindNewKind(id))
        return Add(kind->createCode);
    const AS_DopeSheetLevelObj* element = Current();
    switch (id) {
    case kCmdElementRename:
        return RunRename();
    case kCmdElementNote:
        return RunNote();
    case kCmdElementProperties:
        return RunProperties();
    case kCmdElementDelete:
        return Delete(Selected());
    case kCmdElementClone:
        return element && Clone(element->GetId());
    case kCmdElementParent:
        return RunParent();
    case kCmdElementMoveUp:
    case kCmdElementMoveDown:
        return element && Move(element->GetId(), id == kCmdElementMoveUp);
    default:
        return false;
    }
}
