#include "core/UT_FilePath.h"

#include "core/UT_FileOperations.h"

#include <cerrno>
#include <sys/stat.h>

namespace fs = std::filesystem;

const fs::path& UT_FilePath::EmptyPath() {
    static const fs::path empty;
    return empty;
}

UT_FilePath UT_FilePath::FromWide(std::u16string_view wide) {
    return UT_FilePath(fs::path(UT_ToUtf8(wide)));
}

int UT_FilePath::Exists() const {
    struct stat st;
    return ::stat(Path().c_str(), &st) == 0 ? 0 : errno;
}

bool UT_FilePath::IsFile() const {
    struct stat st;
    return ::stat(Path().c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

bool UT_FilePath::IsFolder() const {
    struct stat st;
    return ::stat(Path().c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

int UT_FilePath::CreateFolder() const {
    std::error_code ec;
    fs::create_directory(Path(), ec);
    if (ec)
        return ec.value();
    return IsFolder() ? 0 : EEXIST;
}

int UT_FilePath::CreateFolders() const {
    std::error_code ec;
    fs::create_directories(Path(), ec);
    if (ec)
        return ec.value();
    return IsFolder() ? 0 : EEXIST;
}

UT_FilePath UT_FilePath::Append(std::u16string_view component) const {
    return UT_FilePath(Path() / fs::path(UT_ToUtf8(component)));
}

UT_FilePath UT_FilePath::AppendSuffix(std::u16string_view suffix) const {
    std::string text = Path().string();
    text += '.';
    text += UT_ToUtf8(suffix);
    return UT_FilePath(fs::path(text));
}

UT_WString UT_FilePath::BaseName() const {
    return UT_FromUtf8(Path().stem().string());
}
UT_WString UT_FilePath::FileName() const {
    return UT_FromUtf8(Path().filename().string());
}

UT_WString UT_FilePath::Extension() const {
    std::string ext = Path().extension().string();
    if (!ext.empty() && ext[0] == '.')
        ext.erase(0, 1);
    return UT_FromUtf8(ext);
}

int UT_FilePath::Remove() const {
    return UT_FileOperations::Current().Remove(*this);
}
int UT_FilePath::RenameTo(const UT_FilePath& to) const {
    return UT_FileOperations::Current().Rename(*this, to);
}

int64_t UT_FilePath::FileSize() const {
    struct stat st;
    if (::stat(Path().c_str(), &st) != 0)
        return -1;
    return static_cast<int64_t>(st.st_size);
}
