// SystemCalls.cpp - see SystemCalls.h.
#include "platform/win32/posix/SystemCalls.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cstdio>

namespace kozor::posix {

namespace {

int Open(const char* path, int flags, mode_t mode) {
  return ::open(path, flags, mode);
}

}  // namespace

SystemCalls& Calls() {
  static SystemCalls calls = {
      Open,    ::read,  ::write,    ::ftruncate, ::fallocate, ::fdatasync,
      ::fsync, ::mmap,  ::statx,    ::statvfs,   ::renameat2, ::unlink,
      ::rmdir, ::mkdir, ::getxattr, ::setxattr,
  };
  return calls;
}

}  // namespace kozor::posix
