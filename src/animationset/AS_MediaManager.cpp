#include "animationset/AS_MediaManager.h"

#include "core/DB_Archive.h"

#include <algorithm>

AS_MediaObj* AS_MediaManager::FindByTemplateId(UT_UniqueId templateId) const {
    for (const auto& entry : entries_)
        if (entry->TemplateId() == templateId)
            return entry.get();
    return nullptr;
}

AS_MediaObj* AS_MediaManager::FindById(uint32_t id) const {
    for (const auto& entry : entries_)
        if (entry->GetId() == id)
            return entry.get();
    return nullptr;
}

void AS_MediaManager::Add(std::shared_ptr<AS_MediaObj> entry) {
    if (!entry || std::find(entries_.begin(), entries_.end(), entry) != entries_.end())
        return;
    if (entry->GetId() == AS_kInvalidId)
        entry->SetId(nextId_--);
    entries_.push_back(std::move(entry));
}

std::shared_ptr<AS_MediaObj> AS_MediaManager::Merge(const std::shared_ptr<AS_MediaObj>& entry) {
    if (!entry)
        return nullptr;
    for (const auto& known : entries_)
        if (known->TemplateId() == entry->TemplateId())
            return known;
    Add(entry);
    return entry;
}

void AS_MediaManager::Prune() {
    std::erase_if(entries_, [](const std::shared_ptr<AS_MediaObj>& entry) {
        return entry.use_count() == 1 && !entry->IsOpenedForEditing();
    });
}

void AS_MediaManager::Clear() {
    entries_.clear();
    nextId_ = kFirstId;
}

void AS_MediaManager::Read(DB_Archive& archive) {
    Clear();
    // A shared reference takes at least six bytes.
    const uint32_t count = archive.ReadCount(6);
    for (uint32_t i = 0; i < count; ++i)
        Add(archive.ReadSharedAs<AS_MediaObj>());
}

void AS_MediaManager::Write(DB_Archive& archive) {
    archive.WriteCount(entries_.size());
    for (const auto& entry : entries_)
        archive.WriteShared(entry.get());
}
