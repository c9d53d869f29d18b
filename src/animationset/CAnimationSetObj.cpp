#include "animationset/CAnimationSetObj.h"

#include "animationset/AS_CellIteratorObservable.h"
#include "animationset/AS_DopeSheetNotifProxy.h"
#include "animationset/AS_MediaManager.h"
#include "animationset/CDopeSheetObj.h"
#include "animationset/SPO_SettingsMgr.h"
#include "colour/CM_PaletteList.h"
#include "core/DB_Archive.h"
#include "core/DB_Exception.h"
#include "core/PR_UserColorSettings.h"
#include "core/UT_CommandHistory.h"
#include "core/UT_FileTransaction.h"
#include "core/UT_Format.h"
#include "core/UT_NameRules.h"
#include "vector/CPenStyleList.h"

#include <algorithm>

namespace {
CAnimationSetObj* g_current = nullptr;
}

CAnimationSetObj::CAnimationSetObj()
    : paletteList_(std::make_unique<CM_PaletteList>()), penList_(CPenStyleList::MakeDefault()),
      userColors_(std::make_unique<PR_UserColorSettings>()), history_(std::make_unique<UT_CommandHistory>()),
      media_(std::make_unique<AS_MediaManager>()), proxy_(std::make_unique<AS_DopeSheetNotifProxy>(*this)) {
    paletteList_->AddDefaultPalette();
    paletteList_->MarkClean();
    userColors_->SetOwner(&colourOwner_);
}

CAnimationSetObj::~CAnimationSetObj() {
    if (g_current == this)
        SetCurrent(nullptr);
    // Observers learn that the set goes while all of it is still there.
    proxy_.reset();
    // Scenes hold a pointer to the palette list: let them go first.
    sequence_.clear();
    currentScene_ = nullptr;
    scenes_.clear();
}

CAnimationSetObj* CAnimationSetObj::Current() {
    return g_current;
}
void CAnimationSetObj::SetCurrent(CAnimationSetObj* set) {
    g_current = set;
    if (set)
        set->PointCurrentCell();
    else
        AS_CellIteratorObservable::Instance().PointAt(nullptr, nullptr);
}

void CAnimationSetObj::PointCurrentCell() const {
    if (g_current != this)
        return;
    AS_CompositionOrder* order = nullptr;
    if (currentScene_)
        order = sceneplanningMode_ ? static_cast<AS_CompositionOrder*>(&currentScene_->SceneplanningOrder())
                                   : &currentScene_->DrawingOrder();
    AS_CellIteratorObservable::Instance().PointAt(currentScene_, order);
}

void CAnimationSetObj::SetSceneplanningMode(bool on) {
    sceneplanningMode_ = on;
    PointCurrentCell();
}

void CAnimationSetObj::InitialiseNew(uint32_t frameRate, uint32_t cameraWidth, uint32_t cameraHeight) {
    frameRate_ = frameRate;
    cameraWidth_ = cameraWidth;
    cameraHeight_ = cameraHeight;
    auto scene = std::make_unique<CDopeSheetObj>();
    scene->Initialise(TakeNextSceneId(), u"Scene-1", paletteList_.get());
    scene->InitialiseDefaultElements(cameraWidth_, cameraHeight_);
    scene->SetCameraSize(cameraWidth_, cameraHeight_);
    AddScene(std::move(scene), sequence_.size());
    SetCurrentScene(sequence_.front(), true);
    name_ = u"Untitled";
}

void CAnimationSetObj::SetProjectFolder(const UT_FilePath& folder) {
    projectFolder_ = folder;
    for (auto& [id, entry] : scenes_)
        entry.scene->SetFolder(folder);
}

bool CAnimationSetObj::IsDirty() const {
    return history_->HasChanges(false) || forcedDirty_ || userColors_->IsModified();
}

void CAnimationSetObj::MarkSaved() {
    history_->MarkSaved();
    forcedDirty_ = false;
    paletteList_->MarkClean();
    penList_->MarkClean();
    userColors_->MarkClean();
    for (auto& [id, entry] : scenes_)
        entry.scene->MarkSaved();
}

void CAnimationSetObj::MarkLibrarySaved() {
    history_->MarkLibrarySaved();
}

CDopeSheetObj* CAnimationSetObj::FindScene(uint32_t id) const {
    auto it = scenes_.find(id);
    if (it == scenes_.end() || it->second.removed)
        return nullptr;
    return it->second.scene.get();
}

void CAnimationSetObj::AddScene(std::unique_ptr<CDopeSheetObj> scene, size_t index) {
    CDopeSheetObj* raw = scene.get();
    raw->SetPaletteList(paletteList_.get());
    raw->SetMediaManager(media_.get());
    raw->SetFolder(projectFolder_);
    SceneEntry& entry = scenes_[raw->SceneId()];
    if (entry.scene && !entry.removed)
        std::erase(sequence_, entry.scene.get());
    if (currentScene_ == entry.scene.get())
        currentScene_ = raw;
    entry.scene = std::move(scene);
    if (currentScene_ == raw)
        PointCurrentCell();
    entry.removed = false;
    entry.eraseFiles = false;
    sequence_.insert(sequence_.begin() + static_cast<std::ptrdiff_t>(std::min(index, sequence_.size())), raw);
}

void CAnimationSetObj::RemoveScene(uint32_t id, bool eraseFiles) {
    auto it = scenes_.find(id);
    if (it == scenes_.end() || it->second.removed)
        return;
    it->second.removed = true;
    it->second.eraseFiles = eraseFiles;
    CDopeSheetObj* scene = it->second.scene.get();
    scene->ReleaseData();
    auto pos = std::find(sequence_.begin(), sequence_.end(), scene);
    const size_t index = static_cast<size_t>(pos - sequence_.begin());
    if (pos != sequence_.end())
        sequence_.erase(pos);
    if (currentScene_ == scene) {
        if (sequence_.empty()) {
            currentScene_ = nullptr;
            PointCurrentCell();
        } else {
            SetCurrentScene(sequence_[std::min(index, sequence_.size() - 1)], true);
        }
    }
}

std::unique_ptr<CDopeSheetObj> CAnimationSetObj::TakeRemovedScene(uint32_t id) {
    auto it = scenes_.find(id);
    if (it == scenes_.end() || !it->second.removed)
        return nullptr;
    std::unique_ptr<CDopeSheetObj> scene = std::move(it->second.scene);
    scenes_.erase(it);
    return scene;
}

void CAnimationSetObj::MoveScene(size_t from, size_t to) {
    if (from >= sequence_.size() || to == from || to == from + 1)
        return;
    CDopeSheetObj* scene = sequence_[from];
    sequence_.erase(sequence_.begin() + static_cast<std::ptrdiff_t>(from));
    if (to > from)
        --to;
    to = std::min(to, sequence_.size());
    sequence_.insert(sequence_.begin() + static_cast<std::ptrdiff_t>(to), scene);
}

bool CAnimationSetObj::IsSceneNameFree(const UT_WString& name) const {
    return CheckSceneName(name).empty();
}

UT_WString CAnimationSetObj::CheckSceneName(const UT_WString& name, uint32_t self) const {
    switch (UT_CheckName(name)) {
    case UT_NameProblem::kEmpty:
        return u"The name of the scene cannot be empty.";
    case UT_NameProblem::kTooLong:
    case UT_NameProblem::kForbiddenCharacter:
        return u"This name contains invalid characters; please choose a different one.";
    case UT_NameProblem::kNone:
        break;
    }
    const bool taken = std::any_of(sequence_.begin(), sequence_.end(), [&](const CDopeSheetObj* scene) {
        return scene->SceneId() != self && scene->Name() == name;
    });
    if (taken)
        return u"This name is already used by another scene; please choose a different one.";
    return {};
}

UT_WString CAnimationSetObj::NewSceneName() const {
    for (int64_t number = 2;; ++number) {
        UT_WString name = UT_Fmt(u"Scene-%d", UT_Num(number));
        if (IsSceneNameFree(name))
            return name;
    }
}

bool CAnimationSetObj::ColourOwner::ElementExists(const PR_ElementRef& element) const {
    const CDopeSheetObj* scene = set_.FindScene(element.scene);
    return scene && scene->FindElement(element.element) && !scene->IsRemoved(element.element);
}

int CAnimationSetObj::SequenceIndex(uint32_t sceneId) const {
    for (size_t i = 0; i < sequence_.size(); ++i) {
        if (sequence_[i]->SceneId() == sceneId)
            return static_cast<int>(i);
    }
    return -1;
}

void CAnimationSetObj::SetCurrentScene(CDopeSheetObj* scene, bool real) {
    currentScene_ = scene;
    currentSceneReal_ = real;
    if (scene)
        scene->EnsureDefaultCamera(cameraWidth_, cameraHeight_);
    PointCurrentCell();
    if (settings_)
        settings_->CurrentSceneChanged();
}

void CAnimationSetObj::SetCurrentSceneById(uint32_t id) {
    if (CDopeSheetObj* scene = FindScene(id))
        SetCurrentScene(scene, true);
}

void CAnimationSetObj::SetProperties(uint32_t frameRate, uint32_t width, uint32_t height) {
    frameRate_ = frameRate;
    cameraWidth_ = width;
    cameraHeight_ = height;
    ApplyCameraSize();
}

void CAnimationSetObj::ApplyCameraSize() {
    for (auto& [id, entry] : scenes_)
        entry.scene->SetCameraSize(cameraWidth_, cameraHeight_);
}

void CAnimationSetObj::Read(DB_Archive& archive) {
    version_ = archive.Version();
    currentScene_ = nullptr;
    PointCurrentCell();
    scenes_.clear();
    sequence_.clear();

    nextSceneId_ = archive.ReadU32();
    archive.ReadTyped(*paletteList_);
    media_->Read(archive);

    // Each scene takes at least its type id and a handful of counts.
    const uint32_t sceneCount = archive.ReadCount(2);
    for (uint32_t i = 0; i < sceneCount; ++i) {
        archive.SetContext(paletteList_.get());
        std::unique_ptr<CPersistentObjBase> object = archive.ReadNew();
        if (auto* scene = dynamic_cast<CDopeSheetObj*>(object.get())) {
            object.release();
            std::unique_ptr<CDopeSheetObj> owned(scene);
            owned->SetPaletteList(paletteList_.get());
            owned->SetMediaManager(media_.get());
            scenes_[scene->SceneId()] = SceneEntry{std::move(owned), false, false};
        }
    }
    if (scenes_.empty())
        throw DB_Exception(u"Animation Set corrupted (invalid map)");

    const uint32_t sequenceCount = archive.ReadCount(4);
    for (uint32_t i = 0; i < sequenceCount; ++i) {
        CDopeSheetObj* scene = FindScene(archive.ReadU32());
        if (!scene || std::find(sequence_.begin(), sequence_.end(), scene) != sequence_.end())
            throw DB_Exception(u"Animation Set Corrupted (invalid sequence)");
        sequence_.push_back(scene);
    }
    if (sequence_.size() != scenes_.size())
        throw DB_Exception(u"Animation Set Corrupted (invalid sequence)");

    for (auto& [id, entry] : scenes_)
        entry.scene->SetFolder(projectFolder_);

    archive.ReadTyped(*penList_);
    archive.ReadTyped(*userColors_);
    frameRate_ = archive.ReadU32();
    cameraHeight_ = archive.ReadU32();
    cameraWidth_ = archive.ReadU32();

    for (CDopeSheetObj* scene : sequence_)
        scene->EnsureDefaultCamera(cameraWidth_, cameraHeight_);
    ApplyCameraSize();
    SetCurrentScene(sequence_.front(), true);
    if (version_ < kCurrentVersion)
        forcedDirty_ = true;
}

void CAnimationSetObj::Purge() {
    UT_FileTransaction::Handle transaction = UT_FileTransaction::Get();
    for (auto it = scenes_.begin(); it != scenes_.end();) {
        SceneEntry& entry = it->second;
        if (!entry.removed) {
            ++it;
            continue;
        }
        if (entry.eraseFiles) {
            entry.scene->EraseFiles();
            const UT_FilePath folder = entry.scene->SceneFolder();
            if (!projectFolder_.IsEmpty() && folder.IsFolder())
                transaction->AddDelete(folder, UT_FileTransaction::kDeleteIfPossible);
        }
        it = scenes_.erase(it);
    }
}

void CAnimationSetObj::Write(DB_Archive& archive) {
    const bool toDisk = !archive.IsEmbedded();
    if (version_ < kCurrentVersion)
        archive.SetConverting(true);
    if (toDisk) {
        for (auto& [id, entry] : scenes_)
            entry.scene->SetFolder(projectFolder_);
        Purge();
        for (CDopeSheetObj* scene : sequence_) {
            scene->MakeFolders();
            // Removed elements go first, so that the templates only they used are pruned.
            scene->PurgeRemoved();
        }
        media_->Prune();
    }

    archive.WriteU32(nextSceneId_);
    archive.WriteTyped(*paletteList_);
    media_->Write(archive);

    uint32_t live = 0;
    for (const auto& [id, entry] : scenes_)
        live += entry.removed ? 0 : 1;
    archive.WriteU32(live);
    for (auto& [id, entry] : scenes_) {
        if (!entry.removed)
            archive.WriteTyped(*entry.scene);
    }
    archive.WriteCount(sequence_.size());
    for (const CDopeSheetObj* scene : sequence_)
        archive.WriteU32(scene->SceneId());
    archive.WriteTyped(*penList_);
    archive.WriteTyped(*userColors_);
    archive.WriteU32(frameRate_);
    archive.WriteU32(cameraHeight_);
    archive.WriteU32(cameraWidth_);

    if (toDisk)
        version_ = kCurrentVersion;
}
