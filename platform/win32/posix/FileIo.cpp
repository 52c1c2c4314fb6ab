// FileIo.cpp - reads, writes, resizes and flushes open files.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <limits>

#include "platform/base/Clock.h"
#include "platform/win32/PosixAdmin.h"
#include "platform/win32/posix/File.h"
#include "platform/win32/posix/SystemCalls.h"

namespace kozor::posix {

namespace {

std::atomic<bool> flushesAtClose{false};

// Allocates blocks by writing zeros, for file systems that can't reserve them.
bool WriteZeros(int file, std::uint64_t from, std::uint64_t to) {
  static constexpr char kZeros[64 * 1024] = {};
  while (from < to) {
    const auto bytes = static_cast<std::size_t>(std::min<std::uint64_t>(to - from, sizeof kZeros));
    const ssize_t written = Calls().write(file, kZeros, bytes, static_cast<off_t>(from));
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
  Metadata metadata;
  if (!file) return false;
  if (!ReadMetadata(file->Descriptor(), metadata)) return FailErrno();
  size = metadata.size;
  return true;
}

constexpr std::int64_t kNoLimit = std::numeric_limits<std::int64_t>::max();

// Calls `transfer(done)`, which returns the result of read or write, until `bytes` are transferred.
template <typename Transfer>
bool TransferAll(std::size_t bytes, DWORD& done, Transfer transfer) {
  while (done < bytes) {
    const ssize_t count = transfer(done);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    if (count == 0) break;
    done += static_cast<DWORD>(count);
  }
  return true;
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

bool File::Read(void* buffer, std::size_t bytes, DWORD& done) {
  const std::lock_guard guard(pointerLock);
  const bool isRead = TransferAll(bytes, done, [&](DWORD from) {
    return Calls().read(descriptor, static_cast<char*>(buffer) + from, bytes - from,
                        position + from);
  });
  position += done;
  return isRead;
}

bool File::Write(const void* buffer, std::size_t bytes, DWORD& done) {
  const std::lock_guard guard(pointerLock);
  bool isWritten = TransferAll(bytes, done, [&](DWORD from) {
    return Calls().write(descriptor, static_cast<const char*>(buffer) + from, bytes - from,
                         position + from);
  });
  position += done;
  if (isWritten && done < bytes) {
    errno = ENOSPC;  // the host wrote nothing and reported no error
    isWritten = false;
  }
  return isWritten;
}

bool File::Seek(std::int64_t distance, DWORD method, std::int64_t limit,
                std::int64_t& newPosition) {
  const std::lock_guard guard(pointerLock);
  std::int64_t from = 0;
  if (method == FILE_CURRENT) from = position;
  if (method == FILE_END) from = ::lseek(descriptor, 0, SEEK_END);
  if (from < 0) return FailErrno();
  if (method > FILE_END || distance > kNoLimit - from || from + distance > limit) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  if (from + distance < 0) return Fail(ERROR_NEGATIVE_SEEK);
  newPosition = position = from + distance;
  return true;
}

std::int64_t File::Position() {
  const std::lock_guard guard(pointerLock);
  return position;
}

bool File::Flush() {
  if (flushesAtClose) {
    flushIsDue = true;
    return true;
  }
  return Calls().fdatasync(descriptor) == 0 || FailErrno();
}

bool File::Finish() {
  return !flushIsDue || Calls().fdatasync(descriptor) == 0 || FailErrno();
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
using kozor::JoinHalves;

BOOL WINAPI ReadFile(HANDLE handle, LPVOID buffer, DWORD bytes, LPDWORD bytesRead,
                     LPOVERLAPPED overlapped) {
  if (bytesRead == nullptr || overlapped != nullptr) return Fail(ERROR_INVALID_PARAMETER);
  *bytesRead = 0;
  const auto file = FindReadable(handle);
  if (!file) return FALSE;
  return file->Read(buffer, bytes, *bytesRead) ? TRUE : FailErrno();
}

BOOL WINAPI WriteFile(HANDLE handle, LPCVOID buffer, DWORD bytes, LPDWORD bytesWritten,
                      LPOVERLAPPED overlapped) {
  if (bytesWritten == nullptr || overlapped != nullptr) return Fail(ERROR_INVALID_PARAMETER);
  *bytesWritten = 0;
  const auto file = FindWritable(handle);
  if (!file) return FALSE;
  return file->Write(buffer, bytes, *bytesWritten) ? TRUE : FailErrno();
}

DWORD WINAPI SetFilePointer(HANDLE handle, LONG distance, PLONG distanceHigh, DWORD method) {
  const auto low = static_cast<DWORD>(distance);
  const std::int64_t wide =
      distanceHigh == nullptr
          ? distance
          : static_cast<std::int64_t>(JoinHalves(static_cast<DWORD>(*distanceHigh), low));
  // Without `distanceHigh`, a position beyond 32 bits is refused.
  const std::int64_t limit = distanceHigh == nullptr ? 0xFFFF'FFFF : kNoLimit;
  const auto file = FindObject<File>(handle);
  std::int64_t position = 0;
  if (!file || !file->Seek(wide, method, limit, position)) return INVALID_SET_FILE_POINTER;
  const auto bits = static_cast<std::uint64_t>(position);
  if (distanceHigh != nullptr) *distanceHigh = static_cast<LONG>(High(bits));
  if (Low(bits) == INVALID_SET_FILE_POINTER) SetLastError(NO_ERROR);
  return Low(bits);
}

BOOL WINAPI SetFilePointerEx(HANDLE handle, LARGE_INTEGER distance, PLARGE_INTEGER newPosition,
                             DWORD method) {
  const auto file = FindObject<File>(handle);
  std::int64_t position = 0;
  if (!file || !file->Seek(distance.QuadPart, method, kNoLimit, position)) return FALSE;
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
  const std::int64_t position = file->Position();
  Metadata metadata;
  if (!ReadMetadata(file->Descriptor(), metadata)) return FailErrno();
  const auto wanted = static_cast<std::uint64_t>(position);
  const bool done = wanted > metadata.size ? GrowReserved(file->Descriptor(), metadata.size, wanted)
                                           : Calls().ftruncate(file->Descriptor(), position) == 0;
  return done ? TRUE : FailErrno();
}

BOOL WINAPI FlushFileBuffers(HANDLE handle) {
  const auto file = FindWritable(handle);
  if (!file) return FALSE;
  return file->Flush();
}

int KzSetFlushAtClose(int on) {
  return flushesAtClose.exchange(on != 0) ? 1 : 0;
}
