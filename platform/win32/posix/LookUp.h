// LookUp.h - finds the file that a library path means: the exact name, then one that differs in
// case.
#pragma once

#include <string>
#include <string_view>

#include "platform/win32/posix/FileFacts.h"
#include "platform/win32/posix/Paths.h"

namespace kozor::posix {

struct Found {
  // Host path: of what was found, in its spelling; else of what could be made there.
  std::string host;
  bool exists = false;  // an entry of that name, a dangling link included
  FileFacts facts;      // if it exists
  // If it doesn't exist: ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND where a directory on the way is
  // missing, or the error that kept us from looking.
  DWORD error = ERROR_SUCCESS;

  std::string_view HostName() const { return HostNameOf(host); }
};

// Costs one system call where the exact path exists; otherwise one search of a directory for each
// component that isn't there by its exact name.
Found LookUp(const LibraryPath& path);

// The same, with the facts that make an entry unusable as errors: sets the last error and returns
// false where there is none, or where a separator behind the path asks for a directory and it is
// none (ERROR_INVALID_NAME).
bool LookUpExisting(const LibraryPath& path, Found& found);

}  // namespace kozor::posix
