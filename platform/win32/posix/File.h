// File.h - an open file or directory, the object of most handles.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

#include "platform/win32/posix/HandleTable.h"
#include "platform/win32/posix/Sharing.h"

namespace kozor::posix {

class File : public Closable {
 public:
  // Takes ownership of an open descriptor.
  File(int openDescriptor, std::string hostFileName, DWORD allowedAccess)
      : descriptor(openDescriptor), hostName(std::move(hostFileName)), access(allowedAccess) {}
  ~File() override;

  int Descriptor() const { return descriptor; }
  // The last component of its path when it was opened.
  const std::string& HostName() const { return hostName; }
  bool CanRead() const { return (access & GENERIC_READ) != 0; }
  bool CanWrite() const { return (access & GENERIC_WRITE) != 0; }

  ShareHold& Hold() { return hold; }

  // Reads or writes `bytes` bytes at the file pointer and advances it; `done` receives the number
  // transferred.  Returns false with errno set.  Reading stops without an error at the end of the
  // file.
  bool Read(void* buffer, std::size_t bytes, DWORD& done);
  bool Write(const void* buffer, std::size_t bytes, DWORD& done);

  // Moves the file pointer relative to FILE_BEGIN, FILE_CURRENT or FILE_END, up to `limit`.
  // Returns false with the last error set.
  bool Seek(std::int64_t distance, DWORD method, std::int64_t limit, std::int64_t& newPosition);
  std::int64_t Position();

  // Flushes data to the medium, at once or in Finish, depending on the process's setting.
  bool Flush();
  bool Finish() override;

 private:
  int descriptor;
  std::string hostName;
  DWORD access;
  // Serialises calls of several threads on one handle.
  std::mutex pointerLock;
  std::int64_t position = 0;  // the file pointer, kept here to save system calls
  std::atomic<bool> flushIsDue{false};
  // Destroyed after the destructor's body, so after the descriptor and its locks are gone.
  ShareHold hold;
};

// The file of a handle if it was opened for this, else null with the last error
// ERROR_INVALID_HANDLE or ERROR_ACCESS_DENIED.
std::shared_ptr<File> FindReadable(HANDLE handle);
std::shared_ptr<File> FindWritable(HANDLE handle);

// Grows a file from `oldSize` to `newSize` bytes and reserves its blocks.  On failure the file is
// unchanged; returns false with errno set, ENOSPC for a full disk.
bool GrowReserved(int file, std::uint64_t oldSize, std::uint64_t newSize);

}  // namespace kozor::posix
