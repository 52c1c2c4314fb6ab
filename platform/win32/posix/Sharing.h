// Sharing.h - who may open a file that others have open.
//
// Within the process a table of open files decides.  Between processes advisory locks do, on single
// bytes far beyond any file's end, one for each of: reads, writes, lets nobody read, write, delete.
// They belong to the open file and end with it, also when a process is killed.  Where the file
// system has no such locks, only the table is left.
#pragma once

#include "platform/win32/posix/Metadata.h"

namespace kozor::posix {

// GENERIC_READ, GENERIC_WRITE and FILE_SHARE_* as CreateFileA takes them; other bits don't matter.
struct ShareMode {
  DWORD access;
  DWORD share;
};

// The part of one open file in both; ends with the object.
class ShareHold {
 public:
  ShareHold() = default;
  ~ShareHold();
  ShareHold(const ShareHold&) = delete;
  ShareHold& operator=(const ShareHold&) = delete;

  // Takes part for an open file.  False, with the last error ERROR_SHARING_VIOLATION, if others
  // don't agree with `mode`; the file must then be closed, because it keeps the locks.
  bool Take(int file, const FileId& fileId, const ShareMode& mode);

 private:
  FileId id{};
  unsigned claims = 0;
};

// Whether someone has the file open and doesn't let others delete it.
bool IsDeleteDenied(const char* hostPath, const FileId& id);
// The same of all but the open file `held` itself.
bool IsDeleteDeniedByOthers(int held, const FileId& id);
// Whether someone in this process has it open at all.
bool IsOpenHere(const FileId& id);

}  // namespace kozor::posix
