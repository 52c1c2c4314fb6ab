// Sharing.h - the sharing modes of open files.
//
// Within the process a table of open files decides.  Between processes it is advisory locks on
// single bytes far beyond the end of any file, one position for each combination of reading,
// writing and denying to read, write or delete.  A lock belongs to the open file and ends with it,
// also when a process is killed.  On a file system without such locks only the table applies.
#pragma once

#include "platform/win32/posix/Metadata.h"

namespace kozor::posix {

// GENERIC_READ, GENERIC_WRITE and FILE_SHARE_* as CreateFileA takes them; other bits are ignored.
struct ShareMode {
  DWORD access;
  DWORD share;
};

// The entries of one open file in the table and its lock; released by the destructor.
class ShareHold {
 public:
  ShareHold() = default;
  ~ShareHold();
  ShareHold(const ShareHold&) = delete;
  ShareHold& operator=(const ShareHold&) = delete;

  // Registers an open file.  Returns false with the last error ERROR_SHARING_VIOLATION if `mode`
  // conflicts with others; the file must then be closed, because it keeps the lock.
  bool Take(int file, const FileId& fileId, const ShareMode& mode);

 private:
  FileId id{};
  unsigned claims = 0;
};

// Whether any open handle denies deleting the file.
bool IsDeleteDenied(const char* hostPath, const FileId& id);
// The same, not counting the open file `held` itself.
bool IsDeleteDeniedByOthers(int held, const FileId& id);
// Whether this process has the file open.
bool IsOpenHere(const FileId& id);

}  // namespace kozor::posix
