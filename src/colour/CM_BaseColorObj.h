#pragma once

#include "core/CPersistentObjBase.h"
#include "core/UT_String.h"
#include "core/UT_UniqueId.h"

#include <cstdint>
#include <memory>

// The invalid colour id (all bits set): a default-constructed entry has it, and in the
// palette list it names the reserved "NoColor" entry.
inline constexpr UT_UniqueId kCM_NoColorId{~uint64_t(0)};
// The reserved "EraserColor": paint with it removes paint.
inline constexpr UT_UniqueId kCM_EraserColorId{1};
// Not a colour at all: a stroke style with colour 0 uses none.
inline constexpr UT_UniqueId kCM_NullColorId{0};

// A palette entry: a name and a project-wide id, with one value per palette style in
// the derived classes.
class CM_BaseColorObj : public CPersistentObjBase {
public:
    enum Class : int { kColor = 0, kTexture = 1 };

    // An entry with the invalid id.
    CM_BaseColorObj() = default;
    // An entry with a newly generated id.
    explicit CM_BaseColorObj(UT_WString name);
    // An entry that keeps the given id.
    CM_BaseColorObj(UT_WString name, UT_UniqueId id) : name_(std::move(name)), id_(id) {}
    ~CM_BaseColorObj() override = default;

    virtual int GetClass() const = 0;
    virtual bool IsOpaque() const = 0;

    // A deep copy with the same id, name and values.
    virtual std::unique_ptr<CM_BaseColorObj> Duplicate() const = 0;
    // A copy with the same id and name whose only value, at style 0, is this entry's
    // value of its current style.
    virtual std::unique_ptr<CM_BaseColorObj> DuplicateCurrentStyle() const = 0;

    // Per-style values, kept in step with the palette's styles.
    virtual uint32_t GetStyleCount() const = 0;
    virtual uint32_t GetCurrentStyle() const = 0;
    virtual void SetCurrentStyle(uint32_t index) = 0;
    // Appends a copy of the value of style `from`.
    virtual void AppendStyleFrom(uint32_t from) = 0;
    virtual void RemoveStyle(uint32_t index) = 0;

    const UT_WString& GetName() const { return name_; }
    void SetName(UT_WString name) { name_ = std::move(name); }
    UT_UniqueId GetId() const { return id_; }
    void SetId(UT_UniqueId id) { id_ = id; }

protected:
    // The fields of the base, which come after those of the derived classes on disk.
    void ReadBase(DB_Archive& archive);
    void WriteBase(DB_Archive& archive) const;

private:
    UT_WString name_;
    UT_UniqueId id_ = kCM_NoColorId;
};
