#pragma once

#include "core/CPersistentObjBase.h"
#include "core/DB_Archive.h"
#include "core/UT_FilePath.h"

#include <cstdint>
#include <memory>

// The container that opens every file of the persistence layer: magic, version text,
// kind, and from version 32 on a flag byte.
namespace DB_FileContainer {

inline constexpr const char* kMagic = "QuilmoorTechnologiesInc ";

enum Kind : uint32_t { kProject = 0, kVectorDrawing = 1, kCatalog = 3 };

void WriteHeader(DB_Archive& archive, uint32_t kind);
// Sets the archive's version from the header; throws on a wrong magic or kind
// ("%S  is not a valid Quilmoor Studio file.") or an unsupported version.
void ReadHeader(DB_Archive& archive, uint32_t kind, const UT_WString& fileName);
// The same for a file of any kind; returns the kind that the header names.
uint32_t ReadAnyHeader(DB_Archive& archive, const UT_WString& fileName);
bool IsSupportedVersion(int32_t version);

void LoadBare(const UT_FilePath& path, CPersistentObjBase& object, uint32_t kind, void* context = nullptr);
void SaveBare(const UT_FilePath& path, CPersistentObjBase& object, uint32_t kind, void* context = nullptr);
void LoadTyped(const UT_FilePath& path, CPersistentObjBase& object, uint32_t kind, void* context = nullptr);
void SaveTyped(const UT_FilePath& path, CPersistentObjBase& object, uint32_t kind, void* context = nullptr);
std::unique_ptr<CPersistentObjBase> LoadNew(const UT_FilePath& path, uint32_t kind);
void SaveNew(const UT_FilePath& path, CPersistentObjBase& object, uint32_t kind);

} // namespace DB_FileContainer
