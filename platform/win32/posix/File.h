// File.h - an open file or directory, what most handles stand for.
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
  // Takes over an open descriptor.
  File(int openDescriptor, std::string hostFileName, DWORD allowedAccess)
      : descriptor(openDescriptor), hostName(std::move(hostFileName)), access(allowedAccess) {}
  ~File() override;

  int Descriptor() const { return descriptor; }
  // The last component of its path when it was opened.
  const std::string& HostName() const { return hostName; }
  bool CanRead() const { return (access & GENERIC_READ) != 0; }
  bool CanWrite() const { return (access & GENERIC_WRITE) != 0; }

  ShareHold& Hold() { return hold; }

  // Reads or writes all of `bytes` at the file pointer and moves it on; `done` tells how many went
  // over.  False with errno set; reading ends without an error at the end of the file.
  bool Read(void* buffer, std::size_t bytes, DWORD& done);
  bool Write(const void* buffer, std::size_t bytes, DWORD& done);

  // Moves the file pointer by FILE_BEGIN, FILE_CURRENT or FILE_END, if it stays within `limit`.
  // False with the last error set.
  bool Seek(std::int64_t distance, DWORD method, std::int64_t limit, std::int64_t& newPosition);
  std::int64_t Position();

  // Sees to it that the data reach the medium, at once or, by the process's policy, in Finish.
  bool Flush();
  bool Finish() override;

 private:
  int descriptor;
  std::string hostName;
  DWORD access;
  // Calls of several threads on one handle take turns.
  std::mutex pointerLock;
  std::int64_t position = 0;  // the file pointer; kept here, moving it is no system call
  std::atomic<bool> flushIsDue{false};
  // Ends after the destructor's body, so after the descriptor with its locks.
  ShareHold hold;
};

// The file behind a handle, if it was opened for this; else null with the last error
// ERROR_INVALID_HANDLE or ERROR_ACCESS_DENIED.
std::shared_ptr<File> FindReadable(HANDLE handle);
std::shared_ptr<File> FindWritable(HANDLE handle);

// Lets a file grow from `oldSize` to `newSize` bytes with its blocks reserved; the file is as it
// was on failure.  False with errno set, ENOSPC for a full disk.
bool GrowReserved(int file, std::uint64_t oldSize, std::uint64_t newSize);

}  // namespace kozor::posix
