// FileIo.cpp - reading, writing and measuring open files.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <limits>

#include "platform/win32/posix/File.h"
#include "platform/win32/posix/LastError.h"
#include "platform/win32/posix/SystemCalls.h"

namespace kozor::posix {

namespace {

// Where the file system can't reserve blocks, writing zeros does it too.
bool WriteZeros(int file, std::uint64_t from, std::uint64_t to) {
  static constexpr char kZeros[64 * 1024] = {};
  while (from < to) {
    const auto bytes = static_cast<std::size_t>(std::min<std::uint64_t>(to - from, sizeof kZeros));
    const ssize_t written = ::pwrite(file, kZeros, bytes, static_cast<off_t>(from));
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    from += static_cast<std::uint64_t>(written);
  }
  return true;
}

bool Reserve(int file, std::uint64_t oldSize, std::uint64_t newSize) {
  for (;;) {
    const auto offset = static_cast<off_t>(oldSize);
    if (Calls().fallocate(file, 0, offset, static_cast<off_t>(newSize - oldSize)) == 0) return true;
    if (errno == EOPNOTSUPP || errno == ENOSYS) return WriteZeros(file, oldSize, newSize);
    if (errno != EINTR) return false;
  }
}

std::shared_ptr<File> FindFile(HANDLE handle, bool (File::*allowed)() const) {
  auto file = FindObject<File>(handle);
  if (!file || ((*file).*allowed)()) return file;
  SetLastError(ERROR_ACCESS_DENIED);
  return nullptr;
}

bool FileSize(HANDLE handle, std::uint64_t& size) {
  const auto file = FindObject<File>(handle);
  FileFacts facts;
  if (!file) return false;
  if (!ReadFacts(file->Descriptor(), facts)) return FailErrno();
  size = facts.size;
  return true;
}

// Moves the file pointer and gives the new position.
bool Seek(HANDLE handle, std::int64_t distance, DWORD method, std::int64_t& position) {
  static constexpr int kWhence[] = {SEEK_SET, SEEK_CUR, SEEK_END};
  const auto file = FindObject<File>(handle);
  if (!file) return false;
  if (method > FILE_END) return Fail(ERROR_INVALID_PARAMETER);
  position = ::lseek(file->Descriptor(), distance, kWhence[method]);
  if (position >= 0) return true;
  return Fail(errno == EINVAL ? ERROR_NEGATIVE_SEEK : ErrorFromErrno(errno));
}

DWORD Low(std::uint64_t value) {
  return static_cast<DWORD>(value);
}
DWORD High(std::uint64_t value) {
  return static_cast<DWORD>(value >> 32);
}

}  // namespace

File::~File() {
  ::close(descriptor);
}

std::shared_ptr<File> FindReadable(HANDLE handle) {
  return FindFile(handle, &File::CanRead);
}
std::shared_ptr<File> FindWritable(HANDLE handle) {
  return FindFile(handle, &File::CanWrite);
}

bool GrowReserved(int file, std::uint64_t oldSize, std::uint64_t newSize) {
  if (newSize > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max())) {
    errno = ENOSPC;
    return false;
  }
  if (Reserve(file, oldSize, newSize)) return true;
  const int cause = errno;
  Calls().ftruncate(file, static_cast<off_t>(oldSize));
  errno = cause == EFBIG ? ENOSPC : cause;
  return false;
}

}  // namespace kozor::posix

using namespace kozor::posix;

BOOL WINAPI ReadFile(HANDLE handle, LPVOID buffer, DWORD bytes, LPDWORD bytesRead,
                     LPOVERLAPPED overlapped) {
  if (bytesRead == nullptr || overlapped != nullptr) return Fail(ERROR_INVALID_PARAMETER);
  *bytesRead = 0;
  const auto file = FindReadable(handle);
  if (!file) return FALSE;
  while (*bytesRead < bytes) {
    const ssize_t got = Calls().read(file->Descriptor(), static_cast<char*>(buffer) + *bytesRead,
                                     bytes - *bytesRead);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) return FailErrno();
    if (got == 0) break;
    *bytesRead += static_cast<DWORD>(got);
  }
  return TRUE;
}

BOOL WINAPI WriteFile(HANDLE handle, LPCVOID buffer, DWORD bytes, LPDWORD bytesWritten,
                      LPOVERLAPPED overlapped) {
  if (bytesWritten == nullptr || overlapped != nullptr) return Fail(ERROR_INVALID_PARAMETER);
  *bytesWritten = 0;
  const auto file = FindWritable(handle);
  if (!file) return FALSE;
  while (*bytesWritten < bytes) {
    const ssize_t put =
        Calls().write(file->Descriptor(), static_cast<const char*>(buffer) + *bytesWritten,
                      bytes - *bytesWritten);
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) return put < 0 ? FailErrno() : Fail(ERROR_DISK_FULL);
    *bytesWritten += static_cast<DWORD>(put);
  }
  return TRUE;
}

DWORD WINAPI SetFilePointer(HANDLE handle, LONG distance, PLONG distanceHigh, DWORD method) {
  std::int64_t wide = distance;
  if (distanceHigh != nullptr) {
    wide = static_cast<std::int64_t>(static_cast<std::uint64_t>(*distanceHigh) << 32 |
                                     static_cast<DWORD>(distance));
  }
  LARGE_INTEGER by{};
  LARGE_INTEGER position{};
  by.QuadPart = wide;
  // Without a place for the upper half, a position that needs one is refused, and not gone to.
  if (distanceHigh == nullptr) {
    LARGE_INTEGER none{};
    LARGE_INTEGER old{};
    if (!SetFilePointerEx(handle, none, &old, FILE_CURRENT)) return INVALID_SET_FILE_POINTER;
    if (!SetFilePointerEx(handle, by, &position, method)) return INVALID_SET_FILE_POINTER;
    if (High(static_cast<std::uint64_t>(position.QuadPart)) != 0) {
      SetFilePointerEx(handle, old, nullptr, FILE_BEGIN);
      SetLastError(ERROR_INVALID_PARAMETER);
      return INVALID_SET_FILE_POINTER;
    }
  } else if (!SetFilePointerEx(handle, by, &position, method)) {
    return INVALID_SET_FILE_POINTER;
  } else {
    *distanceHigh = static_cast<LONG>(High(static_cast<std::uint64_t>(position.QuadPart)));
  }
  const DWORD low = Low(static_cast<std::uint64_t>(position.QuadPart));
  if (low == INVALID_SET_FILE_POINTER) SetLastError(NO_ERROR);
  return low;
}

BOOL WINAPI SetFilePointerEx(HANDLE handle, LARGE_INTEGER distance, PLARGE_INTEGER newPosition,
                             DWORD method) {
  std::int64_t position = 0;
  if (!Seek(handle, distance.QuadPart, method, position)) return FALSE;
  if (newPosition != nullptr) newPosition->QuadPart = position;
  return TRUE;
}

BOOL WINAPI GetFileSizeEx(HANDLE handle, PLARGE_INTEGER size) {
  std::uint64_t bytes = 0;
  if (!FileSize(handle, bytes)) return FALSE;
  size->QuadPart = static_cast<std::int64_t>(bytes);
  return TRUE;
}

DWORD WINAPI GetFileSize(HANDLE handle, LPDWORD sizeHigh) {
  std::uint64_t bytes = 0;
  if (!FileSize(handle, bytes)) return INVALID_FILE_SIZE;
  if (sizeHigh != nullptr) *sizeHigh = High(bytes);
  if (Low(bytes) == INVALID_FILE_SIZE) SetLastError(NO_ERROR);
  return Low(bytes);
}

BOOL WINAPI SetEndOfFile(HANDLE handle) {
  const auto file = FindWritable(handle);
  if (!file) return FALSE;
  const off_t position = ::lseek(file->Descriptor(), 0, SEEK_CUR);
  FileFacts facts;
  if (position < 0 || !ReadFacts(file->Descriptor(), facts)) return FailErrno();
  const auto wanted = static_cast<std::uint64_t>(position);
  const bool done = wanted > facts.size ? GrowReserved(file->Descriptor(), facts.size, wanted)
                                        : Calls().ftruncate(file->Descriptor(), position) == 0;
  return done ? TRUE : FailErrno();
}

BOOL WINAPI FlushFileBuffers(HANDLE handle) {
  const auto file = FindWritable(handle);
  if (!file) return FALSE;
  return Calls().fdatasync(file->Descriptor()) == 0 ? TRUE : FailErrno();
}
