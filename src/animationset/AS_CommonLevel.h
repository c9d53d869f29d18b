#pragma once

#include "animationset/AS_DopeSheetLevelObj.h"
#include "core/CPersistentObjBase.h"
#include "core/UT_String.h"

#include <cstdint>

// The half of an element that its clones share: the name and the identity of the
// shared data. Levels hold it through a counted std::shared_ptr; its use count is the
// number of levels on it (plus, while a stream is being read, the stream's table).
class AS_CommonLevel : public CPersistentObjBase {
public:
    AS_CommonLevel() = default;
    AS_CommonLevel(UT_WString name, uint32_t commonId) : name_(std::move(name)), commonId_(commonId) {}
    AS_CommonLevel(const AS_CommonLevel&) = delete;
    AS_CommonLevel& operator=(const AS_CommonLevel&) = delete;

    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;
    ~AS_CommonLevel() override = default;
    virtual void SetName(const UT_WString& name) { name_ = name; }
    virtual const UT_WString& GetName() const { return name_; }
    virtual void ClearModified() {}

    // Incremented and used for each new level on this object: 0 for the first, 1 for
    // the first clone.
    uint32_t TakeCloneNumber() { return ++lastCloneNumber_; }
    uint32_t LastCloneNumber() const { return lastCloneNumber_; }
    uint32_t CommonId() const { return commonId_; }
    void SetCommonId(uint32_t id) { commonId_ = id; }

protected:
    UT_WString name_;
    uint32_t lastCloneNumber_ = AS_kInvalidId;
    uint32_t commonId_ = AS_kInvalidId;
};
