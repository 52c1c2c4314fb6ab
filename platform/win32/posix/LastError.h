// LastError.h - the thread's last error, and the one place that turns errno into Win32 numbers.
#pragma once

#include "platform/win32/PosixFiles.h"

namespace kozor::posix {

// The Win32 number for an errno value.  ENOENT is ERROR_FILE_NOT_FOUND: whether a directory on the
// way was missing (ERROR_PATH_NOT_FOUND) only the look-up knows.
DWORD ErrorFromErrno(int number);

// Sets the last error and returns FALSE, for `return Fail(...)`.
BOOL Fail(DWORD error);
// The same with the Win32 number for errno as it stands.
BOOL FailErrno();

}  // namespace kozor::posix
