#pragma once

#include "animationset/AS_CommonLevel.h"
#include "animationset/AS_DopeSheetLevelObj.h"

#include <memory>

class DB_Archive;

// A level on a common half that other levels (its clones) may share.
class AS_ClonableLevel : public AS_DopeSheetLevelObj {
public:
    // Takes the next clone number of `common` when one is given.
    AS_ClonableLevel(uint32_t kind, uint32_t id, std::shared_ptr<AS_CommonLevel> common);

    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;

    uint32_t GetCommonId() const override;
    const UT_WString& GetName() const override;
    // The name, with "(n)" and the clone number behind it while others share the common half.
    UT_WString GetDisplayName() const override;
    void SetName(const UT_WString& name) override;
    void ClearModified() override {}
    bool IsLastHolder() const override { return !common_ || common_.use_count() < 2; }
    void ReadFromDragData(DD_DragDataStore& store) override;
    std::unique_ptr<DD_DragDataStore> WriteToDragData() override;

    // Everything but the common half.
    void WriteBody(DB_Archive& archive);
    void ReadBody(DB_Archive& archive);
    bool HasSameCommon(const AS_DopeSheetLevelObj& other) const {
        return GetCommonId() == other.GetCommonId();
    }
    // Takes the other's common half when this level has none.
    void AdoptCommon(const AS_ClonableLevel& other);
    // Takes the other's common half in place of its own, when it is of the sort this
    // level needs: a level that comes back from a snapshot joins its clones again.
    bool ShareCommonOf(const AS_ClonableLevel& other);

    uint32_t CloneNumber() const { return cloneNumber_; }
    AS_CommonLevel* Common() const { return common_.get(); }
    const std::shared_ptr<AS_CommonLevel>& SharedCommon() const { return common_; }
    // References held on the common half.
    long HolderCount() const { return common_.use_count(); }

protected:
    // The class of the common half that this level needs; reading refuses another.
    virtual bool AcceptsCommon(const AS_CommonLevel& common) const = 0;
    // The fields that follow the common half on the stream.
    virtual void WriteOwn(DB_Archive& archive) = 0;
    virtual void ReadOwn(DB_Archive& archive) = 0;
    // What the clipboard form carries after the note; nothing unless the kind adds it.
    virtual void WriteDragBody(DB_Archive&) {}
    virtual void ReadDragBody(DB_Archive&) {}
    // The common half's own body, for the clipboard forms that carry it. Reading throws
    // DB_Exception when the level has no common half.
    void WriteCommonBody(DB_Archive& archive);
    void ReadCommonBody(DB_Archive& archive);

private:
    uint32_t cloneNumber_ = 0;
    std::shared_ptr<AS_CommonLevel> common_;
};
