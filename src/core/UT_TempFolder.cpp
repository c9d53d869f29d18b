#include "core/UT_TempFolder.h"

#include <cstdlib>
#include <filesystem>
#include <string>

namespace UT_TempFolder {

namespace {
uint64_t g_counter = 0;
}

UT_FilePath Folder() {
    static const UT_FilePath folder = [] {
        const char* base = std::getenv("TMPDIR");
        std::filesystem::path root = base && *base ? base : "/tmp";
        UT_FilePath path(root / "QuilmoorStudioTempDir");
        std::error_code ec;
        std::filesystem::remove_all(path.Path(), ec);
        path.CreateFolders();
        return path;
    }();
    return folder;
}

UT_FilePath NewFile() {
    const UT_FilePath folder = Folder();
    for (;;) {
        UT_FilePath candidate = folder.Append("tmpfs_" + std::to_string(g_counter++) + ".tmp");
        if (candidate.Exists() != 0)
            return candidate;
    }
}

} // namespace UT_TempFolder
