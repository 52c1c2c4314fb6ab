// SystemCalls.h - the table of host calls, and the translation of errno to Win32 error numbers.
#pragma once

#include <dirent.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/types.h>

#include <cstddef>
#include <new>

#include "platform/Export.h"
#include "platform/win32/PosixFiles.h"

namespace kozor::posix {

// Host calls whose failure must be survived, as a table in which tests inject failures
// (tests/support/FailCall.h).  Only tests modify it.  Arguments and results are the host's,
// including errno.
struct SystemCalls {
  int (*open)(const char* path, int flags, mode_t mode);
  ssize_t (*read)(int file, void* buffer, std::size_t bytes, off_t offset);         // pread
  ssize_t (*write)(int file, const void* buffer, std::size_t bytes, off_t offset);  // pwrite
  int (*ftruncate)(int file, off_t size);
  int (*fallocate)(int file, int mode, off_t offset, off_t bytes);
  int (*fdatasync)(int file);
  int (*fsync)(int file);
  void* (*mmap)(void* address, std::size_t bytes, int protection, int flags, int file,
                off_t offset);
  DIR* (*opendir)(const char* path);
  dirent* (*readdir)(DIR* directory);  // null at the end, or with errno set
  int (*statx)(int directory, const char* path, int flags, unsigned mask, struct statx* result);
  int (*statvfs)(const char* path, struct statvfs* result);
  int (*renameat2)(int oldDirectory, const char* oldPath, int newDirectory, const char* newPath,
                   unsigned flags);
  int (*unlink)(const char* path);
  int (*rmdir)(const char* path);
  int (*mkdir)(const char* path, mode_t mode);
  ssize_t (*getxattr)(const char* path, const char* name, void* value, std::size_t bytes);
  int (*setxattr)(const char* path, const char* name, const void* value, std::size_t bytes,
                  int flags);
};

ZOR_PLATFORM_API SystemCalls& Calls();

// The Win32 number for an errno value.  ENOENT is ERROR_FILE_NOT_FOUND: only the look-up knows
// whether a parent directory was missing (ERROR_PATH_NOT_FOUND).
DWORD ErrorFromErrno(int number);

// Sets the last error and returns FALSE, for use as `return Fail(...)`.
BOOL Fail(DWORD error);
// The same with the Win32 number for the current errno.
BOOL FailErrno();

// Does what may be done while an object is destroyed: for lack of memory it fails like other calls.
template <typename Work>
BOOL WithoutThrowing(Work work) noexcept {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return Fail(ERROR_NOT_ENOUGH_MEMORY);
  }
}

}  // namespace kozor::posix
