// LookUp.h - finds the file that a library path means.
//
// Directories, and files to be opened, are found by their exact name, else by one that differs in
// case.  Creating is exact: a name to be made is there already only if it is spelt the same, so
// that two names which differ in case are two files.  Two settings change that (PosixAdmin.h).
#pragma once

#include <string>
#include <string_view>

#include "platform/win32/posix/Metadata.h"
#include "platform/win32/posix/Paths.h"

namespace kozor::posix {

struct Found {
  // Host path: of what was found, in its spelling; else of what could be made there.
  std::string host;
  bool exists = false;  // an entry of that name, a dangling link included
  Metadata metadata;    // if it exists
  // If it doesn't exist: ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND where a directory on the way is
  // missing, or the error that kept us from looking.
  DWORD error = ERROR_SUCCESS;

  std::string_view HostName() const { return HostNameOf(host); }
};

enum class Purpose { Find, Create };

// Costs one system call where the exact path exists; otherwise one search of a directory for each
// component that isn't there by its exact name.
Found LookUp(const LibraryPath& path, Purpose purpose = Purpose::Find);

// The same, for a file that has to exist: false, with the last error set, where there is none, or
// where a separator at the end of the path asks for a directory and it is none
// (ERROR_INVALID_NAME).
bool LookUpExisting(const LibraryPath& path, Found& found);

}  // namespace kozor::posix
