#pragma once

#include "core/UT_FilePath.h"

// The program's scratch folder, "QuilmoorStudioTempDir" under the system's temporary
// folder ($TMPDIR, else /tmp). It is emptied at its first use in a process.
namespace UT_TempFolder {

UT_FilePath Folder();
// A path that does not exist yet: "tmpfs_<n>.tmp" with the first free counter value.
UT_FilePath NewFile();

} // namespace UT_TempFolder
