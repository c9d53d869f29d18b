#include "animationset/AS_ClonableLevel.h"

#include "core/DB_Archive.h"

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
