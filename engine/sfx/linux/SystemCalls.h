// SystemCalls.h - system calls without a C library: the program must be small and run on
// any Linux, whatever is installed.
//
// All return the kernel's result: a negative error number on failure.
#pragma once

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <cstddef>
#include <cstdint>

namespace kozor::sfx::host {

#if defined(__x86_64__)
inline long Call(long number, long a, long b = 0, long c = 0, long d = 0, long e = 0, long f = 0) {
  register long d4 asm("r10") = d;
  register long e5 asm("r8") = e;
  register long f6 asm("r9") = f;
  long result;
  asm volatile("syscall"
               : "=a"(result)
               : "a"(number), "D"(a), "S"(b), "d"(c), "r"(d4), "r"(e5), "r"(f6)
               : "rcx", "r11", "memory");
  return result;
}
#elif defined(__aarch64__)
inline long Call(long number, long a, long b = 0, long c = 0, long d = 0, long e = 0, long f = 0) {
  register long number8 asm("x8") = number;
  register long a0 asm("x0") = a;
  register long b1 asm("x1") = b;
  register long c2 asm("x2") = c;
  register long d3 asm("x3") = d;
  register long e4 asm("x4") = e;
  register long f5 asm("x5") = f;
  asm volatile("svc #0"
               : "+r"(a0)
               : "r"(number8), "r"(b1), "r"(c2), "r"(d3), "r"(e4), "r"(f5)
               : "memory");
  return a0;
}
#endif

inline long Address(const void* pointer) {
  return reinterpret_cast<long>(pointer);
}

// Names are relative to an open directory, or to the current one: AT_FDCWD.

inline int OpenAt(int directory, const char* name, int flags, unsigned mode = 0) {
  return static_cast<int>(
      Call(SYS_openat, directory, Address(name), flags | O_CLOEXEC, static_cast<long>(mode)));
}
inline void CloseFile(int file) {
  Call(SYS_close, file);
}
inline long Write(int file, const void* bytes, std::size_t count) {
  return Call(SYS_write, file, Address(bytes), static_cast<long>(count));
}
inline long MakeDirectoryAt(int directory, const char* name) {
  return Call(SYS_mkdirat, directory, Address(name), 0777);
}
inline long UnlinkAt(int directory, const char* name) {
  return Call(SYS_unlinkat, directory, Address(name));
}
// `flags` may be RENAME_NOREPLACE, which not every file system supports (EINVAL).
inline long RenameAt(int directory, const char* from, const char* to, unsigned flags) {
  return Call(SYS_renameat2, directory, Address(from), directory, Address(to), flags);
}
inline long LinkAt(int directory, const char* from, const char* to) {
  return Call(SYS_linkat, directory, Address(from), directory, Address(to));
}
// For a link, describes the link, not its target.
inline long FactsAt(int directory, const char* name, unsigned wanted, struct statx& facts) {
  return Call(SYS_statx, directory, Address(name), AT_SYMLINK_NOFOLLOW, wanted, Address(&facts));
}
// The size in bytes.
inline long SizeOf(int file) {
  return Call(SYS_lseek, file, 0, 2);
}
// `times` are those of last access and last write; a null name means `directory` itself.
inline long SetTimesAt(int directory, const char* name, const struct timespec (&times)[2]) {
  return Call(SYS_utimensat, directory, Address(name), Address(times),
              name != nullptr ? AT_SYMLINK_NOFOLLOW : 0);
}
// Grows a file to `bytes` bytes and allocates its blocks; not every file system can (EOPNOTSUPP).
inline long AllocateBlocks(int file, std::uint64_t bytes) {
  return Call(SYS_fallocate, file, 0, 0, static_cast<long>(bytes));
}

// Returns an address, or a negative error number down to -4095.
inline long Map(std::uint64_t bytes, int protection, int flags, int file) {
  return Call(SYS_mmap, 0, static_cast<long>(bytes), protection, flags, file, 0);
}
inline void UnmapBytes(const void* begin, std::uint64_t bytes) {
  Call(SYS_munmap, Address(begin), static_cast<long>(bytes));
}
// Returns the memory of an anonymous mapping to the system; it then reads as zeros.
inline void Drop(const void* begin, std::uint64_t bytes) {
  Call(SYS_madvise, Address(begin), static_cast<long>(bytes), MADV_DONTNEED);
}

}  // namespace kozor::sfx::host
