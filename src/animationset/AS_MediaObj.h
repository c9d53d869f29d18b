#pragma once

#include "animationset/AS_DopeSheetLevelObj.h"
#include "core/CPersistentObjBase.h"
#include "core/UT_String.h"
#include "core/UT_UniqueId.h"

#include <cstdint>

// One template of the library in use by media elements: the set's media manager holds
// it, and so does every media cell that shows it, each through a counted reference.
// It knows its template by id, so that a project keeps working when the template is
// renamed or moved in the library.
class AS_MediaObj : public CPersistentObjBase {
public:
    AS_MediaObj() = default;
    AS_MediaObj(UT_UniqueId templateId, UT_WString name) : templateId_(templateId), name_(std::move(name)) {}
    AS_MediaObj(const AS_MediaObj&) = delete;
    AS_MediaObj& operator=(const AS_MediaObj&) = delete;

    // Versions above 31: template id, name and, in an embedded archive, the id; version 40
    // has the global flag in front. Versions 30 and 31: the global flag, the name as a
    // path with "/" for "\", and an object that is read and dropped.
    void Read(DB_Archive& archive) override;
    // Always the form of the current version.
    void Write(DB_Archive& archive) override;
    ~AS_MediaObj() override = default;

    // Unique within the project; the manager gives it. AS_kInvalidId until then.
    uint32_t GetId() const { return id_; }
    void SetId(uint32_t id) { id_ = id; }
    UT_UniqueId TemplateId() const { return templateId_; }
    // The template's name when last seen.
    const UT_WString& GetName() const { return name_; }
    // The template lies in the global library rather than the local one. Only files of
    // the earlier format say so.
    bool IsGlobal() const { return global_; }
    // Set once the template was opened for editing; such an entry is never pruned.
    bool IsOpenedForEditing() const { return openedForEditing_; }
    void SetOpenedForEditing(bool opened) { openedForEditing_ = opened; }

private:
    bool global_ = false;
    bool openedForEditing_ = false;
    uint32_t id_ = AS_kInvalidId;
    UT_UniqueId templateId_;
    UT_WString name_;
};
