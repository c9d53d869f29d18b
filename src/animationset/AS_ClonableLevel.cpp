#include "animationset/AS_ClonableLevel.h"

#include "core/DB_Archive.h"
#include "core/DD_DragDataStore.h"

#include <string>

AS_ClonableLevel::AS_ClonableLevel(uint32_t kind, uint32_t id, std::shared_ptr<AS_CommonLevel> common)
    : AS_DopeSheetLevelObj(kind, id), common_(std::move(common)) {
    if (common_)
        cloneNumber_ = common_->TakeCloneNumber();
}

void AS_ClonableLevel::Read(DB_Archive& archive) {
    AS_DopeSheetLevelObj::Read(archive);
    cloneNumber_ = archive.ReadU32();
    std::shared_ptr<AS_CommonLevel> common = archive.ReadSharedAs<AS_CommonLevel>();
    if (!common || !AcceptsCommon(*common))
        archive.ThrowUnexpected();
    common_ = std::move(common);
    if (common_->CommonId() == AS_kInvalidId)
        common_->SetCommonId(GetId());
    ReadOwn(archive);
}

void AS_ClonableLevel::Write(DB_Archive& archive) {
    AS_DopeSheetLevelObj::Write(archive);
    archive.WriteU32(cloneNumber_);
    archive.WriteShared(common_.get());
    WriteOwn(archive);
}

void AS_ClonableLevel::ReadBody(DB_Archive& archive) {
    AS_DopeSheetLevelObj::Read(archive);
    cloneNumber_ = archive.ReadU32();
    ReadOwn(archive);
}

void AS_ClonableLevel::WriteBody(DB_Archive& archive) {
    AS_DopeSheetLevelObj::Write(archive);
    archive.WriteU32(cloneNumber_);
    WriteOwn(archive);
}

uint32_t AS_ClonableLevel::GetCommonId() const {
    return common_ ? common_->CommonId() : AS_kInvalidId;
}

const UT_WString& AS_ClonableLevel::GetName() const {
    static const UT_WString kNone;
    return common_ ? common_->GetName() : kNone;
}

UT_WString AS_ClonableLevel::GetDisplayName() const {
    if (IsLastHolder())
        return GetName();
    const std::string number = std::to_string(cloneNumber_);
    return GetName() + u"(" + UT_WString(number.begin(), number.end()) + u")";
}

void AS_ClonableLevel::SetName(const UT_WString& name) {
    if (common_)
        common_->SetName(name);
}

void AS_ClonableLevel::AdoptCommon(const AS_ClonableLevel& other) {
    if (!common_ && other.common_ && AcceptsCommon(*other.common_))
        common_ = other.common_;
}

bool AS_ClonableLevel::ShareCommonOf(const AS_ClonableLevel& other) {
    if (!other.common_ || !AcceptsCommon(*other.common_))
        return false;
    common_ = other.common_;
    return true;
}

std::unique_ptr<DD_DragDataStore> AS_ClonableLevel::WriteToDragData() {
    auto store = std::make_unique<DD_DragDataStore>();
    DB_Archive& archive = store->Archive();
    archive.WriteId(GetId());
    archive.WriteWideString(GetName());
    archive.WriteId(GetCommonId());
    archive.WriteWideString(GetNote());
    WriteDragBody(archive);
    return store;
}

void AS_ClonableLevel::ReadFromDragData(DD_DragDataStore& store) {
    AS_DopeSheetLevelObj::ReadFromDragData(store);
    ReadDragBody(store.Archive());
}

void AS_ClonableLevel::WriteCommonBody(DB_Archive& archive) {
    if (common_)
        common_->Write(archive);
}

void AS_ClonableLevel::ReadCommonBody(DB_Archive& archive) {
    if (!common_)
        archive.ThrowUnexpected();
    common_->Read(archive);
}
