// ZorFind.h - selecting files by masks.
//
//   ZorFind find;
//   find.SetCurrentDirectoryA("C:\\data");
//   find.AddTail("*.*");      // everything below C:\data ...
//   find.AddTail(">*.tmp");   // ... but no temporaries
//   ZorFileList names;
//   find.Find(names, 0);      // "a.txt", "sub", "sub\b.txt", ...
//
// Paths are Windows paths as byte strings in the active ANSI code page (932 unless the application
// chose another).  The backslash is the only separator.
#pragma once

#include "ZorError.h"
#include "platform/Export.h"
#include "platform/classlib/ClassLib.h"

// A list of file names in the order in which they were added.  The same name may occur twice.
class ZorFileList : public CList<CString, const CString&> {};

// A selection of files: masks (the elements of the list), a base directory, an attribute filter and
// a flag for subdirectories.
//
// A mask reads [>][root][directory][file mask], each part optional.  A leading ">" makes it an
// exclusion mask.  A mask with a root ("C:\data\*.txt") is complete.  One without is relative to
// the base directory, and is ignored if there is none.  A missing file mask ("sub\", or an empty
// text) means "*.*".  A mask of any other form ("C:*.txt", "\sub\*.txt", "\\srv\share") is ignored.
class ZOR_API ZorFind : public ZorFileList {
 public:
  // No masks, every attribute, subdirectories included, no base directory.
  ZorFind();
  ZorFind(const ZorFind& other);
  const ZorFind& operator=(const ZorFind& other);
  ~ZorFind() override;

  // Appends the names of the selected files to `list`, mask by mask.  If there is more than one
  // mask, later duplicates are then removed.  At the end the names that exclusion masks found are
  // removed.  Both passes cover all of `list`, including names it held before the call, and ignore
  // case.
  //
  // With `fullPath` non-zero every name is complete.  With 0, names found by masks without a root
  // are relative to the base directory.  Nothing is sorted: within a directory the order is the
  // platform's, and with the mask "*.*" a directory comes right before its contents.
  //
  // The result is always ZorErrorNone: a directory that is missing or can't be read adds nothing.
  // The platform's last error is then 0 if every directory was read, else the cause for the first
  // one that couldn't be.
  ZorError Find(ZorFileList& list, int fullPath) const;

  // The filter, of FILE_ATTRIBUTE_* bits: read-only 0x01, hidden 0x02, system 0x04, directory 0x10,
  // archive 0x20; other bits have no effect.  An entry is selected if it has at least one of the
  // given attributes, if it is temporary, compressed or offline, or if it has none of these eight
  // attributes.  A directory is selected only with 0x10.  Default 0x37: all.
  void SetAttribute(unsigned int value);
  unsigned int GetAttribute() const;

  // Non-zero (the default) searches subdirectories at every depth.
  void SetSubDirectory(int value);
  int GetSubDirectory() const;

  // The base directory of masks without a root, with or without a trailing backslash.  The
  // process's current directory is neither read nor changed.
  void SetCurrentDirectoryA(const char* path);
  // Never null; valid until the object changes.
  const char* GetCurrentDirectoryA() const;

 protected:
  // Reserved for derived classes: no operation of the library calls it.  Returns 0.
  virtual int OnAbort();

 private:
  unsigned int attribute;
  int subDirectory;
  CString currentDirectory;
};
