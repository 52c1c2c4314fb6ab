// SystemCalls.cpp - see SystemCalls.h.
#include "platform/win32/posix/SystemCalls.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

namespace {

thread_local DWORD lastError = ERROR_SUCCESS;

}  // namespace

DWORD WINAPI GetLastError() {
  return lastError;
}

void WINAPI SetLastError(DWORD error) {
  lastError = error;
}

namespace kozor::posix {

namespace {

int Open(const char* path, int flags, mode_t mode) {
  return ::open(path, flags, mode);
}

}  // namespace

SystemCalls& Calls() {
  static SystemCalls calls = {
      .open = Open,
      .read = ::pread,
      .write = ::pwrite,
      .ftruncate = ::ftruncate,
      .fallocate = ::fallocate,
      .fdatasync = ::fdatasync,
      .fsync = ::fsync,
      .mmap = ::mmap,
      .opendir = ::opendir,
      .readdir = ::readdir,
      .statx = ::statx,
      .statvfs = ::statvfs,
      .renameat2 = ::renameat2,
      .unlink = ::unlink,
      .rmdir = ::rmdir,
      .mkdir = ::mkdir,
      .getxattr = ::getxattr,
      .setxattr = ::setxattr,
  };
  return calls;
}

DWORD ErrorFromErrno(int number) {
  switch (number) {
    case 0:
      return ERROR_SUCCESS;
    case ENOENT:
      return ERROR_FILE_NOT_FOUND;
    case ENOTDIR:
      return ERROR_PATH_NOT_FOUND;
    case EACCES:
    case EPERM:
    case EISDIR:
      return ERROR_ACCESS_DENIED;
    case EROFS:
      return ERROR_WRITE_PROTECT;
    case EEXIST:
      return ERROR_ALREADY_EXISTS;
    case ENOTEMPTY:
      return ERROR_DIR_NOT_EMPTY;
    case EXDEV:
      return ERROR_NOT_SAME_DEVICE;
    case EBUSY:
    case ETXTBSY:
    case EAGAIN:
      return ERROR_SHARING_VIOLATION;
    case ENOSPC:
    case EDQUOT:
      return ERROR_DISK_FULL;
    case EFBIG:
      return ERROR_FILE_TOO_LARGE;
    case ENOMEM:
      return ERROR_NOT_ENOUGH_MEMORY;
    case EMFILE:
    case ENFILE:
      return ERROR_TOO_MANY_OPEN_FILES;
    case ENAMETOOLONG:
      return ERROR_FILENAME_EXCED_RANGE;
    case ELOOP:
      return ERROR_CANT_RESOLVE_FILENAME;
    case EBADF:
      return ERROR_INVALID_HANDLE;
    case EINVAL:
      return ERROR_INVALID_PARAMETER;
    case EIO:
      return ERROR_IO_DEVICE;
    case ENODEV:
    case ENXIO:
    case ENOMEDIUM:
      return ERROR_NOT_READY;
    case EOPNOTSUPP:
    case ENOSYS:
      return ERROR_NOT_SUPPORTED;
    case ESTALE:
    case ENOTCONN:
    case ETIMEDOUT:
      return ERROR_UNEXP_NET_ERR;
    default:
      return ERROR_GEN_FAILURE;
  }
}

BOOL Fail(DWORD error) {
  SetLastError(error);
  return FALSE;
}

BOOL FailErrno() {
  return Fail(ErrorFromErrno(errno));
}

}  // namespace kozor::posix
