#pragma once

#include "animationset/AS_MediaObj.h"

#include <cstdint>
#include <memory>
#include <vector>

class DB_Archive;

// The templates that the media elements of a set use, one entry per template. Entries
// are shared with the media cells that show them.
class AS_MediaManager {
public:
    // Ids are handed out from the top, downward.
    static constexpr uint32_t kFirstId = 0x7FFFFFFFu;

    AS_MediaManager() = default;
    AS_MediaManager(const AS_MediaManager&) = delete;
    AS_MediaManager& operator=(const AS_MediaManager&) = delete;

    const std::vector<std::shared_ptr<AS_MediaObj>>& Entries() const { return entries_; }
    AS_MediaObj* FindByTemplateId(UT_UniqueId templateId) const;
    AS_MediaObj* FindById(uint32_t id) const;
    uint32_t NextId() const { return nextId_; }
    // Enters an entry; one without an id gets the next.
    void Add(std::shared_ptr<AS_MediaObj> entry);
    // The entry that a media cell read from a stream must use: the manager's entry of the
    // same template, else `entry` itself, which is entered.
    std::shared_ptr<AS_MediaObj> Merge(const std::shared_ptr<AS_MediaObj>& entry);
    // Drops the entries that no media cell uses, unless opened for editing.
    void Prune();
    void Clear();

    // The set's list: count, then each entry as a shared reference.
    void Read(DB_Archive& archive);
    void Write(DB_Archive& archive);

private:
    std::vector<std::shared_ptr<AS_MediaObj>> entries_;
    uint32_t nextId_ = kFirstId;
};
