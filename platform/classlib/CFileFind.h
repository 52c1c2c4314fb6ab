// CFileFind.h - walks the entries of a directory that match a mask.
//
//   CFileFind search;
//   for (int more = search.FindFile("C:\\data\\*.*"); more;) {
//     more = search.FindNextFileA();   // makes the next entry current; 0: it is the last one
//     if (!search.IsDots()) Use(search.GetFileName());
//   }
//
// The last entry is good although FindNextFileA returned 0 for it.
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

  // Starts a search, ending one before it.  Only the last part of `name` may hold wild-cards; the
  // rules are those of FindFirstFileA.  A null `name` is "*.*".  Returns 0 when nothing matches or
  // the directory can't be read.  `unused` has no meaning.
  int FindFile(const char* name = nullptr, DWORD unused = 0);
  // Makes the next entry current, at first the first one.  Returns 0 when it is the last.
  int FindNextFileA();
  // Ends the search.
  void Close();

  // About the current entry; only after FindNextFileA.
  bool IsDots() const;  // "." or ".."
  bool IsDirectory() const;
  // Whether the entry has at least one of the FILE_ATTRIBUTE_* bits of `mask`.
  bool MatchesMask(DWORD mask) const;
  DWORD GetAttributes() const;
  const char* GetFileName() const;  // bare name; valid until the next change
  // The directory that was searched, as it was given, and the bare name.
  CString GetFilePath() const;
  std::uint64_t GetLength() const;  // bytes

 private:
  HANDLE search = INVALID_HANDLE_VALUE;
  bool hasNext = false;
  WIN32_FIND_DATAA current{};
  WIN32_FIND_DATAA next{};  // read ahead, if hasNext
  CString directory;        // of the search, up to and including the last backslash or colon
};

}  // namespace kozor_names
