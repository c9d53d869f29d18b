#include "core/DD_DragDataStore.h"

#include <vector>

void DD_DragDataStore::Read(DB_Archive& archive) {
    const int32_t length = archive.ReadI32();
    if (length < 0)
        archive.ThrowUnexpected();
    archive.RequireBytes(static_cast<uint64_t>(length));
    std::vector<uint8_t> bytes(static_cast<size_t>(length));
    archive.ReadRaw(bytes.data(), bytes.size());
    file_.Clear();
    file_.Write(bytes.data(), bytes.size());
    archive_.SetVersion(archive.Version());
    archive_.Rewind();
}

void DD_DragDataStore::Write(DB_Archive& archive) {
    archive.WriteI32(static_cast<int32_t>(file_.Size()));
    archive.WriteRaw(file_.Data(), file_.Size());
}
