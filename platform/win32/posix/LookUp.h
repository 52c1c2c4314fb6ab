// LookUp.h - finds the file that a library path refers to.
//
// Directories and files to open are found by their exact name, else case-insensitively.  Creating
// is exact: only an identical name counts as existing, so names that differ in case are different
// files.  Two settings change that (PosixAdmin.h).
#pragma once

#include <string>
#include <string_view>

#include "platform/win32/posix/Metadata.h"
#include "platform/win32/posix/Paths.h"

namespace kozor::posix {

struct Found {
  // Host path of the entry found, in its spelling on disk, else of the entry that could be created.
  std::string host;
  bool exists = false;  // a dangling link exists too
  Metadata metadata;    // if it exists
  // If it doesn't exist: ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND if a parent directory is
  // missing, or the error that prevented the look-up.
  DWORD error = ERROR_SUCCESS;

  std::string_view HostName() const { return HostNameOf(host); }
};

enum class Purpose { Find, Create };

// Costs one system call if the exact path exists, else one directory search for each component that
// doesn't exist by its exact name.
Found LookUp(const LibraryPath& path, Purpose purpose = Purpose::Find);

// The same for a file that must exist.  Returns false with the last error set if it doesn't, or if
// the path has a trailing separator and it isn't a directory (ERROR_INVALID_NAME).
bool LookUpExisting(const LibraryPath& path, Found& found);

// Whether a file of this path can be created without a look-up: no name but its own counts as
// existing.
bool IsCreatedExactly(const LibraryPath& path);

}  // namespace kozor::posix
