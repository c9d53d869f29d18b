#pragma once

#include "core/CPersistentObjBase.h"
#include "core/DB_Archive.h"
#include "core/DB_MemFile.h"

#include <cstdint>

// The byte store of a drag, a clipboard entry or a template: a memory file and an
// embedded archive on it, through which the payload is written and read. Persistent
// itself (type 50): its body is an i32 length and that many bytes.
class DD_DragDataStore : public CPersistentObjBase {
public:
    DD_DragDataStore() : archive_(&file_, true) {}
    DD_DragDataStore(const DD_DragDataStore&) = delete;
    DD_DragDataStore& operator=(const DD_DragDataStore&) = delete;

    // Replaces the bytes; the store's archive then takes the version of `archive`, since
    // the payload was written in the format of the stream that carries it.
    void Read(DB_Archive& archive) override;
    void Write(DB_Archive& archive) override;
    ~DD_DragDataStore() override = default;

    DB_Archive& Archive() { return archive_; }
    const DB_MemFile& File() const { return file_; }
    uint32_t Size() const { return file_.Size(); }
    // Back to the first byte for reading, with an empty reference table.
    void Rewind() { archive_.Rewind(); }

private:
    DB_MemFile file_;
    DB_Archive archive_;
};
