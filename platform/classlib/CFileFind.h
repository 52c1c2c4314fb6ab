// CFileFind.h - enumerates the entries of a directory that match a mask.
//
//   CFileFind search;
//   for (int more = search.FindFile("C:\\data\\*.*"); more;) {
//     more = search.FindNextFileA();   // makes the next entry current; 0: it is the last one
//     if (!search.IsDots()) Use(search.GetFileName());
//   }
//
// FindNextFileA returns 0 for the last entry, which is valid nevertheless.
#pragma once

#include <cstdint>

#include "platform/Export.h"
#include "platform/classlib/CObject.h"
#include "platform/classlib/CString.h"
#include "platform/win32/Win32.h"

inline namespace kozor_names {

class ZOR_PLATFORM_API CFileFind : public CObject {
 public:
  CFileFind();
  ~CFileFind() override;

  // Starts a search and ends the previous one.  Only the last part of `name` may hold wild-cards,
  // with the rules of FindFirstFileA.  A null `name` means "*.*".  Returns 0 if nothing matches or
  // the directory can't be read.  `unused` is ignored.
  int FindFile(const char* name = nullptr, DWORD unused = 0);
  // Makes the next entry current; the first call selects the first entry.  Returns 0 if it is the
  // last.
  int FindNextFileA();
  // Ends the search.
  void Close();

  // About the current entry.  Valid only after FindNextFileA.
  bool IsDots() const;  // "." or ".."
  bool IsDirectory() const;
  // Whether the entry has at least one of the FILE_ATTRIBUTE_* bits of `mask`.
  bool MatchesMask(DWORD mask) const;
  DWORD GetAttributes() const;
  const char* GetFileName() const;  // bare name; valid until the next change
  // The searched directory as it was passed, followed by the bare name.
  CString GetFilePath() const;
  std::uint64_t GetLength() const;  // bytes

 private:
  HANDLE search = INVALID_HANDLE_VALUE;
  bool hasNext = false;
  WIN32_FIND_DATAA current{};
  WIN32_FIND_DATAA next{};  // read ahead; valid if hasNext
  CString directory;        // of the search, up to and including the last backslash or colon
};

}  // namespace kozor_names
