#include "core/DB_FileContainer.h"

#include "core/DB_Exception.h"
#include "core/DB_File.h"
#include "core/UT_Format.h"

#include <cstring>

namespace DB_FileContainer {

namespace {

[[noreturn]] void ThrowInvalid(const UT_WString& name) {
    throw DB_Exception(UT_Fmt(u"%S  is not a valid Quilmoor Studio file.", name));
}

int32_t ParseVersion(const std::string& text) {
    int64_t value = 0;
    for (char c : text) {
        if (c < '0' || c > '9')
            break;
        value = value * 10 + (c - '0');
        if (value > INT32_MAX)
            return 0;
    }
    return static_cast<int32_t>(value);
}

void OpenForReading(DB_File& file, const UT_FilePath& path) {
    if (!file.Open(path, DB_File::Mode::Read))
        ThrowInvalid(path.Wide());
}

void OpenForWriting(DB_File& file, const UT_FilePath& path) {
    if (!file.Open(path, DB_File::Mode::Write))
        ThrowInvalid(path.Wide());
}

} // namespace

bool IsSupportedVersion(int32_t version) {
    return version == 51 || version == 40 || version == 31 || version == 30;
}

void WriteHeader(DB_Archive& archive, uint32_t kind) {
    archive.WriteNarrowString(kMagic);
    archive.WriteNarrowString(std::to_string(archive.Version()));
    archive.WriteU32(kind);
    archive.WriteU8(0);
}

namespace {

// `kind` null accepts any kind.
uint32_t ReadHeaderOfKind(DB_Archive& archive, const uint32_t* kind, const UT_WString& fileName) {
    // The magic is 24 characters; a longer run before the NUL is not ours.
    char magic[26];
    char version[16];
    bool magicOk;
    uint32_t readKind;
    std::string versionText;
    try {
        magicOk = archive.ReadNarrowString(magic, sizeof magic) && std::strcmp(magic, kMagic) == 0;
        if (!magicOk)
            ThrowInvalid(fileName);
        if (!archive.ReadNarrowString(version, sizeof version))
            ThrowInvalid(fileName);
        versionText = version;
        readKind = archive.ReadU32();
    } catch (const DB_Exception&) {
        ThrowInvalid(fileName);
    }
    archive.SetVersion(ParseVersion(versionText));
    if (kind && readKind != *kind)
        ThrowInvalid(fileName);
    if (!IsSupportedVersion(archive.Version()))
        throw DB_Exception(UT_Fmt(u"%S is not a supported version", archive.GetName()));
    if (archive.Version() > 31) {
        try {
            archive.SetHeaderFlag(archive.ReadU8() == 1);
        } catch (const DB_Exception&) {
            ThrowInvalid(fileName);
        }
    }
    return readKind;
}

} // namespace

void ReadHeader(DB_Archive& archive, uint32_t kind, const UT_WString& fileName) {
    ReadHeaderOfKind(archive, &kind, fileName);
}

uint32_t ReadAnyHeader(DB_Archive& archive, const UT_WString& fileName) {
    return ReadHeaderOfKind(archive, nullptr, fileName);
}

void LoadBare(const UT_FilePath& path, CPersistentObjBase& object, uint32_t kind, void* context) {
    DB_File file;
    DB_Archive archive(&file, false);
    archive.SetContext(context);
    OpenForReading(file, path);
    ReadHeader(archive, kind, path.Wide());
    object.Read(archive);
}

void SaveBare(const UT_FilePath& path, CPersistentObjBase& object, uint32_t kind, void* context) {
    DB_File file;
    DB_Archive archive(&file, false);
    archive.SetContext(context);
    OpenForWriting(file, path);
    WriteHeader(archive, kind);
    object.Write(archive);
    file.Close();
}

void LoadTyped(const UT_FilePath& path, CPersistentObjBase& object, uint32_t kind, void* context) {
    DB_File file;
    DB_Archive archive(&file, false);
    archive.SetContext(context);
    OpenForReading(file, path);
    ReadHeader(archive, kind, path.Wide());
    archive.ReadTyped(object);
}

void SaveTyped(const UT_FilePath& path, CPersistentObjBase& object, uint32_t kind, void* context) {
    DB_File file;
    DB_Archive archive(&file, false);
    archive.SetContext(context);
    OpenForWriting(file, path);
    WriteHeader(archive, kind);
    archive.WriteTyped(object);
    file.Close();
}

std::unique_ptr<CPersistentObjBase> LoadNew(const UT_FilePath& path, uint32_t kind) {
    DB_File file;
    DB_Archive archive(&file, false);
    OpenForReading(file, path);
    ReadHeader(archive, kind, path.Wide());
    return archive.ReadNew();
}

void SaveNew(const UT_FilePath& path, CPersistentObjBase& object, uint32_t kind) {
    DB_File file;
    DB_Archive archive(&file, false);
    OpenForWriting(file, path);
    WriteHeader(archive, kind);
    archive.WriteTyped(object);
    file.Close();
}

} // namespace DB_FileContainer
