#include "animationset/CDopeSheetObj.h"

#include "animationset/AS_CameraLevelObj.h"
#include "animationset/AS_ClonableLevel.h"
#include "animationset/AS_DrawingLevelObj.h"
#include "animationset/AS_MediaLinkLevelObj.h"
#include "animationset/AS_ParamGroupLevel.h"
#include "animationset/AS_PegLevelObj.h"
#include "core/DB_Archive.h"
#include "core/UT_FileTransaction.h"
#include "core/UT_NameRules.h"

#include <set>
#include <string>

namespace {

UT_WString Decimal(uint64_t value) {
    const std::string text = std::to_string(value);
    return UT_WString(text.begin(), text.end());
}

} // namespace

CDopeSheetObj::CDopeSheetObj() {
    MakeOrders();
}

CDopeSheetObj::~CDopeSheetObj() {
    // The orders resolve ids through the level map: let them go first.
    orders_.clear();
}

void CDopeSheetObj::MakeOrders() {
    orders_.clear();
    auto drawing = std::make_unique<AS_DSCompositionOrder>(this);
    auto sceneplanning = std::make_unique<AS_SPCompositionOrder>(this);
    drawingOrder_ = drawing.get();
    sceneplanningOrder_ = sceneplanning.get();
    orders_.push_back(std::move(drawing));
    orders_.push_back(std::move(sceneplanning));
}

void CDopeSheetObj::Initialise(uint32_t sceneId, const UT_WString& name, CM_PaletteList* palettes) {
    sceneId_ = sceneId;
    name_ = name;
    palettes_ = palettes;
    MakeOrders();
}

void CDopeSheetObj::InitialiseDefaultElements(uint32_t cameraWidth, uint32_t cameraHeight) {
    EnsureDefaultCamera(cameraWidth, cameraHeight);
    const uint32_t cameraId = NewElementId();
    auto* camera = static_cast<AS_CameraLevelObj*>(AddElement(
        AS_CameraLevelObj::Create(cameraId, UniqueName(u"Camera"), 10, cameraWidth, cameraHeight)));
    currentCamera_ = camera;
    const uint32_t pegId = NewElementId();
    AddElement(AS_PegLevelObj::Create(pegId, UniqueName(u"Peg"), 20));
    // Like every new peg, it takes no part in the scene's frame range until enabled.
    sceneplanningOrder_->SetEnabled(sceneplanningOrder_->FindRow(pegId), false);
    for (const LevelEntry& entry : levels_)
        if (!entry.removed && entry.level->GetKind() == kLevelVectorDrawing)
            return;
    const uint32_t drawingId = NewElementId();
    AddElement(AS_VectorGraphicLevelObj::Create(drawingId, u"Drawing"));
}

void CDopeSheetObj::EnsureDefaultCamera(uint32_t width, uint32_t height, uint32_t id) {
    if (!defaultCamera_) {
        if (id == AS_kInvalidId)
            id = NewElementId();
        defaultCamera_ = AS_CameraLevelObj::Create(id, u"<Default>", 10, width, height);
        defaultCamera_->SetFolder(SceneFolder());
    }
    if (!currentCamera_)
        currentCamera_ = defaultCamera_.get();
}

void CDopeSheetObj::SetCameraSize(uint32_t width, uint32_t height) {
    if (defaultCamera_)
        defaultCamera_->SetSize(width, height);
    for (LevelEntry& entry : levels_)
        if (auto* camera = dynamic_cast<AS_CameraLevelObj*>(entry.level.get()))
            camera->SetSize(width, height);
}

void CDopeSheetObj::GiveElementContext(AS_DopeSheetLevelObj& element) {
    if (auto* drawing = dynamic_cast<AS_DrawingLevelObj*>(&element))
        if (drawing->CommonDrawing())
            drawing->CommonDrawing()->SetPaletteList(palettes_);
    if (auto* media = dynamic_cast<AS_MediaLinkLevelObj*>(&element))
        media->SetMediaManager(media_);
    if (!folder_.IsEmpty())
        element.SetFolder(SceneFolder());
}

void CDopeSheetObj::SetPaletteList(CM_PaletteList* palettes) {
    palettes_ = palettes;
    for (LevelEntry& entry : levels_)
        GiveElementContext(*entry.level);
}

void CDopeSheetObj::SetMediaManager(AS_MediaManager* media) {
    media_ = media;
    for (LevelEntry& entry : levels_)
        GiveElementContext(*entry.level);
}

void CDopeSheetObj::SetFolder(const UT_FilePath& projectFolder) {
    folder_ = projectFolder;
    const UT_FilePath sceneFolder = SceneFolder();
    for (LevelEntry& entry : levels_)
        entry.level->SetFolder(sceneFolder);
    if (defaultCamera_)
        defaultCamera_->SetFolder(sceneFolder);
}

UT_WString CDopeSheetObj::SceneFolderName(uint32_t sceneId) {
    UT_WString digits = Decimal(sceneId);
    if (digits.size() < 3)
        digits.insert(0, 3 - digits.size(), u'0');
    return u"Scene-" + digits;
}

UT_FilePath CDopeSheetObj::SceneFolder() const {
    return folder_.Append(SceneFolderName(sceneId_));
}

bool CDopeSheetObj::MakeFolders() {
    bool ok = true;
    const UT_FilePath scene = SceneFolder();
    for (const UT_FilePath& folder : {scene, scene.Append(u"Bitmap"), scene.Append(u"Drawing")})
        if (!folder.IsFolder() && folder.CreateFolder() != 0)
            ok = false;
    return ok;
}

void CDopeSheetObj::EraseFiles() {
    // Clones share their files: each common half erases them once.
    std::set<uint32_t> done;
    for (LevelEntry& entry : levels_)
        if (done.insert(entry.level->GetCommonId()).second)
            entry.level->RemoveFiles();
}

void CDopeSheetObj::ReleaseData() {
    for (LevelEntry& entry : levels_)
        if (auto* drawing = dynamic_cast<AS_DrawingLevelObj*>(entry.level.get()))
            if (drawing->CommonDrawing())
                drawing->CommonDrawing()->ReleaseUnmodified();
}

void CDopeSheetObj::MarkSaved() {
    for (LevelEntry& entry : levels_)
        entry.level->ClearModified();
}

AS_DopeSheetLevelObj* CDopeSheetObj::FindElement(uint32_t id) const {
    auto it = levelMap_.find(id);
    return it == levelMap_.end() ? nullptr : it->second;
}

AS_DopeSheetLevelObj* CDopeSheetObj::FindElementByName(const UT_WString& name) const {
    for (const LevelEntry& entry : levels_)
        if (!entry.removed && entry.level->GetName() == name)
            return entry.level.get();
    return nullptr;
}

bool CDopeSheetObj::IsRemoved(uint32_t id) const {
    for (const LevelEntry& entry : levels_)
        if (entry.level->GetId() == id)
            return entry.removed;
    return false;
}

UT_WString CDopeSheetObj::UniqueName(const UT_WString& base) const {
    if (!FindElementByName(base))
        return base;
    UT_WString stem = base;
    uint64_t counter = 2;
    const size_t blank = base.rfind(u' ');
    if (blank != UT_WString::npos && blank + 1 < base.size() && base.size() - blank - 1 <= 9 &&
        base.find_first_not_of(u"0123456789", blank + 1) == UT_WString::npos) {
        stem = base.substr(0, blank);
        counter = std::stoull(UT_ToUtf8(base.substr(blank + 1))) + 1;
    }
    for (;; ++counter) {
        UT_WString name = stem + u" " + Decimal(counter);
        if (!FindElementByName(name))
            return name;
    }
}

int CDopeSheetObj::LivePosition(uint32_t id) const {
    int position = 0;
    for (const LevelEntry& entry : levels_) {
        if (entry.removed)
            continue;
        if (entry.level->GetId() == id)
            return position;
        ++position;
    }
    return -1;
}

AS_DopeSheetLevelObj* CDopeSheetObj::AddElement(std::unique_ptr<AS_DopeSheetLevelObj> element,
                                                size_t livePosition) {
    AS_DopeSheetLevelObj* raw = element.get();
    const uint32_t id = raw->GetId();
    GiveElementContext(*raw);
    auto known = levelMap_.find(id);
    bool placed = false;
    if (known != levelMap_.end()) {
        for (LevelEntry& entry : levels_)
            if (entry.level->GetId() == id) {
                if (currentCamera_ == entry.level.get())
                    currentCamera_ = nullptr;
                entry.level = std::move(element);
                entry.removed = false;
                entry.eraseFiles = false;
                placed = true;
                break;
            }
    }
    if (!placed) {
        auto at = levels_.end();
        size_t live = 0;
        for (auto it = levels_.begin(); it != levels_.end(); ++it) {
            if (it->removed)
                continue;
            if (live++ == livePosition) {
                at = it;
                break;
            }
        }
        levels_.insert(at, LevelEntry{std::move(element), false, false});
    }
    levelMap_[id] = raw;
    EnterInOrders(*raw);
    return raw;
}

AS_DopeSheetLevelObj* CDopeSheetObj::RestoreRemovedElement(uint32_t id) {
    for (LevelEntry& entry : levels_) {
        if (entry.level->GetId() != id || !entry.removed)
            continue;
        entry.removed = false;
        entry.eraseFiles = false;
        GiveElementContext(*entry.level);
        EnterInOrders(*entry.level);
        return entry.level.get();
    }
    return nullptr;
}

void CDopeSheetObj::EnterInOrders(const AS_DopeSheetLevelObj& element) {
    const uint32_t id = element.GetId();
    for (const auto& order : orders_)
        if (order->FindRow(id) < 0)
            order->AddLevel(id, true);
    if (element.GetKind() == kLevelParamGroup)
        sceneplanningOrder_->SetShownWithChildren(sceneplanningOrder_->FindRow(id), false);
    MarkDirty();
}

void CDopeSheetObj::RemoveElement(uint32_t id, bool eraseFiles) {
    for (LevelEntry& entry : levels_) {
        if (entry.level->GetId() != id || entry.removed)
            continue;
        entry.removed = true;
        entry.eraseFiles = eraseFiles;
        if (auto* drawing = dynamic_cast<AS_DrawingLevelObj*>(entry.level.get()))
            if (drawing->CommonDrawing())
                drawing->CommonDrawing()->ReleaseUnmodified();
        for (const auto& order : orders_)
            order->RemoveLevel(id);
        if (currentCamera_ == entry.level.get())
            currentCamera_ = defaultCamera_.get();
        MarkDirty();
        return;
    }
}

UT_WString CDopeSheetObj::CheckElementName(const UT_WString& name, uint32_t self) const {
    switch (UT_CheckName(name)) {
    case UT_NameProblem::kEmpty:
        return u"The name of the element cannot be empty.";
    case UT_NameProblem::kTooLong:
    case UT_NameProblem::kForbiddenCharacter:
        return u"This name contains invalid characters; please choose a different one.";
    case UT_NameProblem::kNone:
        break;
    }
    if (name == u"." || name == u"..")
        return u"This name contains invalid characters; please choose a different one.";
    const AS_DopeSheetLevelObj* other = FindElementByName(name);
    if (other && other->GetId() != self)
        return u"The new element name already exists.";
    return {};
}

void CDopeSheetObj::MarkDirty() {
    for (const auto& order : orders_)
        order->SetRangeDirty();
}

void CDopeSheetObj::PurgeRemoved() {
    levelMap_.clear();
    std::vector<LevelEntry> kept;
    for (LevelEntry& entry : levels_) {
        if (!entry.removed) {
            levelMap_[entry.level->GetId()] = entry.level.get();
            kept.push_back(std::move(entry));
            continue;
        }
        if (entry.eraseFiles) {
            auto* clonable = dynamic_cast<AS_ClonableLevel*>(entry.level.get());
            if (!clonable || clonable->IsLastHolder())
                entry.level->RemoveFiles();
        }
        entry.level->OnRemovedForGood();
        if (currentCamera_ == entry.level.get())
            currentCamera_ = defaultCamera_.get();
        // Gone now, so that a clone removed with it is the last holder of their files.
        entry.level.reset();
    }
    levels_ = std::move(kept);
}

void CDopeSheetObj::Write(DB_Archive& archive) {
    if (!archive.IsEmbedded())
        PurgeRemoved();
    size_t live = 0;
    for (const LevelEntry& entry : levels_)
        live += entry.removed ? 0 : 1;
    archive.WriteCount(live);
    for (LevelEntry& entry : levels_)
        if (!entry.removed)
            archive.WriteTyped(*entry.level);
    archive.WriteId(sceneId_);
    archive.WriteWideString(name_);
    for (size_t byte : {0, 2, 1, 3})
        archive.WriteU8(background_[byte]);
    archive.WriteBool(visible_);
    archive.WriteCount(orders_.size());
    for (const auto& order : orders_)
        archive.WriteTyped(*order);
    archive.WriteU32(nextElementId_);
    archive.WriteId(currentCamera_ ? currentCamera_->GetId() : AS_kInvalidId);
}

void CDopeSheetObj::Read(DB_Archive& archive) {
    MakeOrders();
    levels_.clear();
    levelMap_.clear();
    currentCamera_ = nullptr;
    defaultCamera_.reset();

    const uint32_t count = archive.ReadCount(2);
    for (uint32_t i = 0; i < count; ++i) {
        std::unique_ptr<AS_DopeSheetLevelObj> level = archive.ReadNewAs<AS_DopeSheetLevelObj>();
        const uint32_t id = level->GetId();
        if (levelMap_.count(id) != 0)
            archive.ThrowUnexpected();
        levelMap_[id] = level.get();
        levels_.push_back(LevelEntry{std::move(level), false, false});
    }
    sceneId_ = archive.ReadId();
    archive.ReadWideString(name_);
    background_ = {0xFF, 0xFF, 0xFF, 0xFF};
    if (archive.Version() >= 38)
        for (size_t byte : {0, 2, 1, 3})
            background_[byte] = archive.ReadU8();
    visible_ = archive.Version() >= 29 ? archive.ReadBool() : true;

    const uint32_t orderCount = archive.ReadCount(6);
    if (orderCount != 2)
        archive.ThrowUnexpected();
    auto drawing = archive.ReadNewAs<AS_DSCompositionOrder>();
    auto sceneplanning = archive.ReadNewAs<AS_SPCompositionOrder>();
    drawing->SetScene(this);
    sceneplanning->SetScene(this);
    drawingOrder_ = drawing.get();
    sceneplanningOrder_ = sceneplanning.get();
    orders_.clear();
    orders_.push_back(std::move(drawing));
    orders_.push_back(std::move(sceneplanning));

    nextElementId_ = archive.ReadU32();
    const uint32_t cameraId = archive.ReadId();
    currentCamera_ = dynamic_cast<AS_CameraLevelObj*>(FindElement(cameraId));
    for (LevelEntry& entry : levels_)
        GiveElementContext(*entry.level);
}
