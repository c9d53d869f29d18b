#include "core/UT_FileOperations.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

namespace {

UT_FileOperations* g_current = nullptr;

} // namespace

int UT_FileOperations::Rename(const UT_FilePath& from, const UT_FilePath& to) {
    return std::rename(from.Path().c_str(), to.Path().c_str()) == 0 ? 0 : errno;
}

int UT_FileOperations::Remove(const UT_FilePath& path) {
    std::error_code ec;
    std::filesystem::remove_all(path.Path(), ec);
    return ec ? ec.value() : 0;
}

int UT_FileOperations::Access(const UT_FilePath& path) {
    return ::access(path.Path().c_str(), F_OK) == 0 ? 0 : errno;
}

bool UT_FileOperations::IsWritable(const UT_FilePath& path) {
    struct stat st;
    if (::stat(path.Path().c_str(), &st) != 0)
        return false;
    return (st.st_mode & S_IWUSR) != 0;
}

UT_FileOperations& UT_FileOperations::Current() {
    static UT_FileOperations real;
    return g_current ? *g_current : real;
}

UT_FileOperations* UT_FileOperations::SetCurrent(UT_FileOperations* operations) {
    UT_FileOperations* previous = g_current;
    g_current = operations;
    return previous;
}
