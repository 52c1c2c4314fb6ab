// File.h - an open file or directory behind a HANDLE.
#pragma once

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

 private:
  int descriptor;
  std::string hostName;
  DWORD access;
  // Ends behind the destructor's body, so after the descriptor with its locks.
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
