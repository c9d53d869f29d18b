#pragma once

#include "core/DB_MemFile.h"
#include "core/UT_Command.h"

#include <memory>

class CPersistentObjBase;

// A command that keeps a snapshot of an object in memory. The snapshot is written through
// an embedded archive, so drawing data goes into the memory file and never to disk.
// UT_Command is a virtual base, so that a command on the set can be a snapshot command too.
class UT_StreamCommand : public virtual UT_Command {
public:
    // `context` is handed to the archive of every snapshot (the palette list in practice).
    explicit UT_StreamCommand(void* context = nullptr) : context_(context) {}

    // The snapshot's byte count plus the command's own bookkeeping.
    uint32_t Size() const override { return file_.Size() + 12; }

    // Replaces the snapshot with `object`, written with its type id; false if the class
    // is not registered.
    bool Store(CPersistentObjBase& object);
    // A new object read from the snapshot. Throws DB_Exception on a damaged snapshot.
    std::unique_ptr<CPersistentObjBase> LoadNew();
    // Reads the snapshot into an existing object of the same class. Throws DB_Exception if
    // it cannot.
    bool LoadInto(CPersistentObjBase& object);

    const DB_MemFile& Snapshot() const { return file_; }
    void* Context() const { return context_; }

private:
    DB_MemFile file_;
    void* context_;
};
