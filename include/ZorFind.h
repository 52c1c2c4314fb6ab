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

// An ordered list of file names.  It keeps strings in the order in which they were added, accepts
// the same string twice and sorts nothing.
class ZorFileList : public CList<CString, const CString&> {};

// A selection of files: masks (the elements of the list), a base directory, an attribute filter and
// a flag for subdirectories.
//
// A mask reads [>][root][directory][file mask], each part optional.  A leading ">" makes it an
// exclusion mask.  A mask with a root ("C:\data\*.txt") stands for itself; one without is taken
// under the base directory and is ignored when there is none.  No file mask ("sub\", or an empty
// text) means "*.*".  A mask of any other form ("C:*.txt", "\sub\*.txt", "\\srv\share") is ignored.
class ZOR_API ZorFind : public ZorFileList {
 public:
  // No masks, every attribute, subdirectories included, no base directory.
  ZorFind();
  ZorFind(const ZorFind& other);
  const ZorFind& operator=(const ZorFind& other);
  ~ZorFind() override;

  // Appends the names of the selected files to `list`, mask by mask.  When there is more than one
  // mask, later duplicates are dropped; then what exclusion masks found.  Both passes look at the
  // whole of `list`, including what stood in it before the call.  Names are compared without case.
  //
  // `fullPath` non-zero: every name is complete.  Zero: the base directory is cut off the names
  // that masks without a root found.  Nothing is sorted: within a directory the order is the
  // platform's, and with the mask "*.*" a directory stands right before its contents.
  //
  // The result is always ZorErrorNone: a directory that is missing or can't be read adds nothing.
  // The platform's last error tells afterwards: 0 when every directory was read, else why the first
  // one that wasn't couldn't be.
  ZorError Find(ZorFileList& list, int fullPath) const;

  // The filter, of FILE_ATTRIBUTE_* bits: read-only 0x01, hidden 0x02, system 0x04, directory 0x10,
  // archive 0x20; other bits have no effect.  An entry is selected when it has at least one of the
  // given attributes, when it is temporary, compressed or offline, or when it has none of these
  // eight; a directory only with 0x10.  Default 0x37: all.
  void SetAttribute(unsigned int value);
  unsigned int GetAttribute() const;

  // Non-zero (the default): the search goes down into every subdirectory.
  void SetSubDirectory(int value);
  int GetSubDirectory() const;

  // The base directory of masks without a root, with or without a trailing backslash.  This is the
  // object's own text: the process's current directory is neither read nor changed.
  void SetCurrentDirectoryA(const char* path);
  // Never null; valid until the next change of the object.
  const char* GetCurrentDirectoryA() const;

 protected:
  // Reserved for derived classes: no operation of the library calls it.  Returns 0.
  virtual int OnAbort();

 private:
  unsigned int attribute;
  int subDirectory;
  CString currentDirectory;
};
