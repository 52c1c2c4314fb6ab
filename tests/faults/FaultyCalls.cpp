// FaultyCalls.cpp - a library to preload into a program: counts calls of the C library that reach
// the system or allocate memory, makes one of them fail, and can record writes.
//
//   KOZOR_CALLS=FILE   writes a line for each call, its name, in their order, and at the end how
//                      many allocations there were
//   KOZOR_FAULT=N:E    call number N, from 1, fails with errno E; with E = 0 a read or a write is
//                      cut to half of its bytes instead
//   KOZOR_ALLOC=N      allocation number N fails
//   KOZOR_DISK=FILE    records each change of a file, for PowerLossTest.cpp
//
// Counting begins and ends with the program's main function.  Thread-safe.  The numbers are
// repeatable only if the order of the program's calls is.
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

extern "C" {
void* __libc_malloc(std::size_t bytes);
void* __libc_calloc(std::size_t count, std::size_t bytes);
void* __libc_realloc(void* block, std::size_t bytes);
}

namespace {

using Main = int (*)(int, char**, char**);

Main programMain = nullptr;
bool armed = false;
long failingCall = 0;
int failingError = 0;
long failingAllocation = 0;
int callLog = -1;
int diskLog = -1;
std::atomic<long> calls = 0;
std::atomic<long> allocations = 0;

int OpenLog(const char* variable) {
  const char* const path = std::getenv(variable);
  if (path == nullptr) return -1;
  const long file =
      syscall(SYS_openat, AT_FDCWD, path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  return static_cast<int>(syscall(SYS_fcntl, file, F_DUPFD_CLOEXEC, 900));
}

void Put(int log, const void* bytes, std::size_t count) {
  if (log >= 0) syscall(SYS_write, log, bytes, count);
}

int ArmedMain(int argc, char** argv, char** environment) {
  if (const char* const fault = std::getenv("KOZOR_FAULT")) {
    std::sscanf(fault, "%ld:%d", &failingCall, &failingError);
  }
  if (const char* const fault = std::getenv("KOZOR_ALLOC")) failingAllocation = std::atol(fault);
  callLog = OpenLog("KOZOR_CALLS");
  diskLog = OpenLog("KOZOR_DISK");
  armed = true;
  const int status = programMain(argc, argv, environment);
  armed = false;
  return status;
}

__attribute__((destructor)) void LogAllocations() {
  const std::string line = "allocations " + std::to_string(allocations) + "\n";
  Put(callLog, line.data(), line.size());
}

// Counts a call; true if it is the one to fail.
bool IsNext(const char* name) {
  if (!armed) return false;
  const long number = ++calls;
  if (callLog >= 0) {
    char line[64];
    const int length = std::snprintf(line, sizeof line, "%s\n", name);
    Put(callLog, line, static_cast<std::size_t>(length));
  }
  return number == failingCall;
}

bool Fails(const char* name) {
  if (!IsNext(name) || failingError == 0) return false;
  errno = failingError;
  return true;
}

// The same for calls that may transfer less than requested.
bool FailsOrShortens(const char* name, std::size_t& bytes) {
  if (!IsNext(name)) return false;
  if (failingError == 0) {
    if (bytes > 1) bytes /= 2;
    return false;
  }
  errno = failingError;
  return true;
}

template <typename Function>
Function Next(const char* name) {
  return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

// The position of an open file.
std::string PathOf(int file) {
  const std::string link = "/proc/self/fd/" + std::to_string(file);
  char path[PATH_MAX];
  const long length = syscall(SYS_readlinkat, AT_FDCWD, link.c_str(), path, sizeof path);
  return {path, length > 0 ? static_cast<std::size_t>(length) : 0};
}

std::string PathOf(int directory, const char* name) {
  if (name[0] == '/') return name;
  if (directory != AT_FDCWD) return PathOf(directory) + "/" + name;
  char here[PATH_MAX] = "";
  syscall(SYS_getcwd, here, sizeof here);
  return std::string(here) + "/" + name;
}

// One record of the disk log: a line of text, then `count` bytes.
void Record(const char* verb, long long number, const void* bytes, std::size_t count,
            const std::string& first, const std::string& second = "") {
  const int savedError = errno;
  const std::string line = std::string(verb) + '\t' + std::to_string(number) + '\t' +
                           std::to_string(count) + '\t' + first + '\t' + second + '\n';
  Put(diskLog, line.data(), line.size());
  Put(diskLog, bytes, count);
  errno = savedError;
}

void RecordWrite(int file, long long offset, const void* bytes, ssize_t written) {
  if (diskLog < 0 || written <= 0) return;
  struct stat status;
  if (syscall(SYS_fstat, file, &status) != 0 || !S_ISREG(status.st_mode)) return;
  Record("write", offset, bytes, static_cast<std::size_t>(written), PathOf(file));
}

int OpenAt(int directory, const char* path, int flags, mode_t mode) {
  const bool makes =
      diskLog >= 0 && (flags & O_CREAT) != 0 && syscall(SYS_faccessat, directory, path, F_OK) != 0;
  const bool cuts = diskLog >= 0 && (flags & O_TRUNC) != 0;
  const long file = syscall(SYS_openat, directory, path, flags, mode);
  if (file < 0) return -1;  // syscall has set errno
  if (makes) Record("create", 0, "", 0, PathOf(directory, path));
  if (cuts) Record("truncate", 0, "", 0, PathOf(static_cast<int>(file)));
  return static_cast<int>(file);
}

}  // namespace

#define KOZOR_EXPORT extern "C" __attribute__((visibility("default")))

KOZOR_EXPORT int __libc_start_main(Main main, int argc, char** argv, void (*init)(), void (*fini)(),
                                   void (*end)(), void* stack) {
  programMain = main;
  const auto real = Next<decltype(&__libc_start_main)>("__libc_start_main");
  return real(ArmedMain, argc, argv, init, fini, end, stack);
}

// A call that only fails or is passed on.
#define KOZOR_CALL(Result, failure, name, parameters, arguments) \
  KOZOR_EXPORT Result name parameters {                          \
    static const auto real = Next<Result(*) parameters>(#name);  \
    if (Fails(#name)) return failure;                            \
    return real arguments;                                       \
  }

KOZOR_CALL(void*, MAP_FAILED, mmap, (void* a, std::size_t n, int p, int f, int d, off_t o),
           (a, n, p, f, d, o))
KOZOR_CALL(int, -1, fallocate, (int d, int m, off_t o, off_t n), (d, m, o, n))
KOZOR_CALL(int, -1, statx, (int d, const char* p, int f, unsigned m, struct statx* s),
           (d, p, f, m, s))
KOZOR_CALL(int, -1, access, (const char* p, int m), (p, m))
KOZOR_CALL(int, -1, stat, (const char* p, struct stat* s), (p, s))
KOZOR_CALL(int, -1, lstat, (const char* p, struct stat* s), (p, s))
KOZOR_CALL(int, -1, fstat, (int d, struct stat* s), (d, s))
KOZOR_CALL(int, -1, fstatat, (int d, const char* p, struct stat* s, int f), (d, p, s, f))
KOZOR_CALL(int, -1, statvfs, (const char* p, struct statvfs* s), (p, s))
KOZOR_CALL(int, -1, mkdir, (const char* p, mode_t m), (p, m))
KOZOR_CALL(int, -1, mkdirat, (int d, const char* p, mode_t m), (d, p, m))
KOZOR_CALL(int, -1, chmod, (const char* p, mode_t m), (p, m))
KOZOR_CALL(int, -1, fchmod, (int d, mode_t m), (d, m))
KOZOR_CALL(int, -1, fchmodat, (int d, const char* p, mode_t m, int f), (d, p, m, f))
KOZOR_CALL(int, -1, utimensat, (int d, const char* p, const struct timespec* t, int f),
           (d, p, t, f))
KOZOR_CALL(int, -1, futimens, (int d, const struct timespec* t), (d, t))
KOZOR_CALL(int, -1, flock, (int d, int o), (d, o))
KOZOR_CALL(int, -1, symlink, (const char* a, const char* b), (a, b))
KOZOR_CALL(int, -1, symlinkat, (const char* a, int d, const char* b), (a, d, b))
KOZOR_CALL(off_t, -1, lseek, (int d, off_t o, int w), (d, o, w))
KOZOR_CALL(ssize_t, -1, getxattr, (const char* p, const char* n, void* v, std::size_t s),
           (p, n, v, s))
KOZOR_CALL(ssize_t, -1, fgetxattr, (int d, const char* n, void* v, std::size_t s), (d, n, v, s))
KOZOR_CALL(int, -1, setxattr, (const char* p, const char* n, const void* v, std::size_t s, int f),
           (p, n, v, s, f))
KOZOR_CALL(int, -1, removexattr, (const char* p, const char* n), (p, n))
KOZOR_CALL(ssize_t, -1, readlink, (const char* p, char* b, std::size_t n), (p, b, n))
KOZOR_CALL(ssize_t, -1, readlinkat, (int d, const char* p, char* b, std::size_t n), (d, p, b, n))
KOZOR_CALL(char*, nullptr, realpath, (const char* p, char* r), (p, r))
KOZOR_CALL(DIR*, nullptr, opendir, (const char* p), (p))
KOZOR_CALL(DIR*, nullptr, fdopendir, (int d), (d))
KOZOR_CALL(struct dirent*, nullptr, readdir, (DIR * d), (d))
// These give the number of the error as their result.
KOZOR_CALL(int, failingError, posix_fallocate, (int d, off_t o, off_t n), (d, o, n))
KOZOR_CALL(int, failingError, pthread_create,
           (pthread_t * t, const pthread_attr_t* a, void* (*f)(void*), void* x), (t, a, f, x))

// Reads and writes, which may be cut short.
KOZOR_EXPORT ssize_t read(int file, void* bytes, std::size_t count) {
  return FailsOrShortens("read", count) ? -1 : syscall(SYS_read, file, bytes, count);
}
KOZOR_EXPORT ssize_t pread(int file, void* bytes, std::size_t count, off_t offset) {
  return FailsOrShortens("pread", count) ? -1 : syscall(SYS_pread64, file, bytes, count, offset);
}
KOZOR_EXPORT ssize_t write(int file, const void* bytes, std::size_t count) {
  if (FailsOrShortens("write", count)) return -1;
  const long offset = diskLog >= 0 ? syscall(SYS_lseek, file, 0, SEEK_CUR) : 0;
  const ssize_t written = syscall(SYS_write, file, bytes, count);
  RecordWrite(file, offset, bytes, written);
  return written;
}
KOZOR_EXPORT ssize_t pwrite(int file, const void* bytes, std::size_t count, off_t offset) {
  if (FailsOrShortens("pwrite", count)) return -1;
  const ssize_t written = syscall(SYS_pwrite64, file, bytes, count, offset);
  RecordWrite(file, offset, bytes, written);
  return written;
}

// Changes of files and names, which the disk log keeps.
KOZOR_EXPORT int ftruncate(int file, off_t size) {
  if (Fails("ftruncate")) return -1;
  const long result = syscall(SYS_ftruncate, file, size);
  if (result == 0 && diskLog >= 0) Record("truncate", size, "", 0, PathOf(file));
  return static_cast<int>(result);
}
KOZOR_EXPORT int fsync(int file) {
  if (Fails("fsync")) return -1;
  if (diskLog >= 0) Record("flush", 0, "", 0, PathOf(file));
  return static_cast<int>(syscall(SYS_fsync, file));
}
KOZOR_EXPORT int fdatasync(int file) {
  if (Fails("fdatasync")) return -1;
  if (diskLog >= 0) Record("flush", 0, "", 0, PathOf(file));
  return static_cast<int>(syscall(SYS_fdatasync, file));
}
// A file is closed even when that reports an error.
KOZOR_EXPORT int close(int file) {
  const bool fails = Fails("close");
  const long result = syscall(SYS_close, file);
  if (fails) errno = failingError;
  return fails ? -1 : static_cast<int>(result);
}
KOZOR_EXPORT int openat(int directory, const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const auto mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return Fails("open") ? -1 : OpenAt(directory, path, flags, mode);
}
KOZOR_EXPORT int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const auto mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return Fails("open") ? -1 : OpenAt(AT_FDCWD, path, flags, mode);
}
KOZOR_EXPORT int fcntl(int file, int command, ...) {
  va_list arguments;
  va_start(arguments, command);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  if (Fails("fcntl")) return -1;
  return static_cast<int>(syscall(SYS_fcntl, file, command, argument));
}
KOZOR_EXPORT int renameat2(int from, const char* oldPath, int to, const char* newPath,
                           unsigned flags) {
  if (Fails("rename")) return -1;
  const long result = syscall(SYS_renameat2, from, oldPath, to, newPath, flags);
  if (result == 0 && diskLog >= 0) {
    Record("rename", 0, "", 0, PathOf(from, oldPath), PathOf(to, newPath));
  }
  return static_cast<int>(result);
}
KOZOR_EXPORT int rename(const char* oldPath, const char* newPath) {
  return renameat2(AT_FDCWD, oldPath, AT_FDCWD, newPath, 0);
}
KOZOR_EXPORT int unlinkat(int directory, const char* path, int flags) {
  if (Fails("unlink")) return -1;
  const long result = syscall(SYS_unlinkat, directory, path, flags);
  if (result == 0 && diskLog >= 0) Record("remove", 0, "", 0, PathOf(directory, path));
  return static_cast<int>(result);
}
KOZOR_EXPORT int unlink(const char* path) {
  return unlinkat(AT_FDCWD, path, 0);
}
KOZOR_EXPORT int rmdir(const char* path) {
  return unlinkat(AT_FDCWD, path, AT_REMOVEDIR);
}

// Memory.  The C++ library's operator new calls malloc.
static bool AllocationFails() {
  if (!armed || ++allocations != failingAllocation) return false;
  errno = ENOMEM;
  return true;
}
KOZOR_EXPORT void* malloc(std::size_t bytes) {
  return AllocationFails() ? nullptr : __libc_malloc(bytes);
}
KOZOR_EXPORT void* calloc(std::size_t count, std::size_t bytes) {
  return AllocationFails() ? nullptr : __libc_calloc(count, bytes);
}
KOZOR_EXPORT void* realloc(void* block, std::size_t bytes) {
  return AllocationFails() ? nullptr : __libc_realloc(block, bytes);
}
