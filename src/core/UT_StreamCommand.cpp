#include "core/UT_StreamCommand.h"

#include "core/DB_Archive.h"

namespace {

// Puts the memory file back at its start whatever happens while an archive uses it.
class RewindOnExit {
public:
    explicit RewindOnExit(DB_MemFile& file) : file_(file) {}
    ~RewindOnExit() { file_.Rewind(); }
    RewindOnExit(const RewindOnExit&) = delete;
    RewindOnExit& operator=(const RewindOnExit&) = delete;

private:
    DB_MemFile& file_;
};

} // namespace

bool UT_StreamCommand::Store(CPersistentObjBase& object) {
    file_.Clear();
    RewindOnExit rewind(file_);
    DB_Archive archive(&file_, true);
    archive.SetContext(context_);
    return archive.WriteTyped(object);
}

std::unique_ptr<CPersistentObjBase> UT_StreamCommand::LoadNew() {
    RewindOnExit rewind(file_);
    DB_Archive archive(&file_, true);
    archive.SetContext(context_);
    return archive.ReadNew();
}

bool UT_StreamCommand::LoadInto(CPersistentObjBase& object) {
    RewindOnExit rewind(file_);
    DB_Archive archive(&file_, true);
    archive.SetContext(context_);
    archive.ReadTyped(object);
    return true;
}
