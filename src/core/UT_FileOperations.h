#pragma once

#include "core/UT_FilePath.h"

// The file operations that saving relies on, behind an interface so that tests can make
// chosen operations fail. Each returns 0 or an errno value.
class UT_FileOperations {
public:
    virtual ~UT_FileOperations() = default;
    virtual int Rename(const UT_FilePath& from, const UT_FilePath& to);
    virtual int Remove(const UT_FilePath& path);
    // 0 if the path exists and can be read.
    virtual int Access(const UT_FilePath& path);
    // True if the file's mode bits allow writing by its owner.
    virtual bool IsWritable(const UT_FilePath& path);

    // The operations in force; the default works on the real file system.
    static UT_FileOperations& Current();
    // Installs another implementation (tests); nullptr restores the default. Returns the previous one.
    static UT_FileOperations* SetCurrent(UT_FileOperations* operations);
};
