#pragma once

#include "core/UT_String.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

// One path of the file system, as a value. Operations that touch the disk return 0
// on success or an errno value, as the host does.
//
// The path itself is immutable and shared between copies: every element of a scene
// keeps the scene's folder, and copying a parsed path (its text and each component)
// thousands of times dominated opening a large project.
class UT_FilePath {
public:
    UT_FilePath() = default;
    UT_FilePath(std::filesystem::path path)
        : path_(std::make_shared<const std::filesystem::path>(std::move(path))) {}
    UT_FilePath(const char* utf8) : UT_FilePath(std::filesystem::path(utf8)) {}
    static UT_FilePath FromWide(std::u16string_view wide);

    const std::filesystem::path& Path() const { return path_ ? *path_ : EmptyPath(); }
    std::string Utf8() const { return Path().string(); }
    UT_WString Wide() const { return UT_FromUtf8(Path().string()); }
    bool IsEmpty() const { return Path().empty(); }

    int Exists() const;
    bool IsFile() const;
    bool IsFolder() const;
    // An existing folder counts as success.
    int CreateFolder() const;
    // Creates the folder and every missing parent.
    int CreateFolders() const;
    UT_FilePath Append(std::u16string_view component) const;
    UT_FilePath Append(const std::string& componentUtf8) const { return UT_FilePath(Path() / componentUtf8); }
    // Appends ".suffix" to the last component.
    UT_FilePath AppendSuffix(std::u16string_view suffix) const;
    UT_FilePath Folder() const { return UT_FilePath(Path().parent_path()); }
    // The last component without its extension.
    UT_WString BaseName() const;
    // The last component.
    UT_WString FileName() const;
    // The extension without the dot.
    UT_WString Extension() const;
    int Remove() const;
    int RenameTo(const UT_FilePath& to) const;
    int64_t FileSize() const;

    bool operator==(const UT_FilePath& o) const { return path_ == o.path_ || Path() == o.Path(); }
    bool operator<(const UT_FilePath& o) const { return Path() < o.Path(); }

private:
    static const std::filesystem::path& EmptyPath();

    std::shared_ptr<const std::filesystem::path> path_;
};
