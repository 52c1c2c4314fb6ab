// ParentDirectory.h - makes the parent directories of a sequence of files.
#pragma once

#include "platform/classlib/CString.h"

// Consecutive files mostly share a directory or those above it, so the last one is remembered:
// another file in it costs no look-up, and its levels aren't looked up again.  Another process may
// have removed it meanwhile: a caller that can't open its file calls MakeAnew and tries once more.
//
// Where the host can have two directories that differ in case alone, those below the base are made
// exactly as they are spelt: files of two such directories must not come to one.
class ZorParentDirectory {
 public:
  // The base has a trailing backslash when a path is made, and outlives the object.
  explicit ZorParentDirectory(const CString& baseDirectory) : base(baseDirectory) {}

  // Makes the directories that lead to the file `path`.  Returns false if that fails or the path
  // has no root.
  bool Make(const char* path);
  bool MakeAnew(const char* path);

 private:
  // The levels of the directory `known` aren't looked up.
  bool MakeBelow(const char* path, const char* known);

  const CString& base;
  CString last;  // with its trailing backslash; empty before the first
};
