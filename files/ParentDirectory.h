// ParentDirectory.h - makes the directories of many files, one after the other.
#pragma once

#include "platform/classlib/CString.h"

// Neighbouring files mostly share a directory.  So the last one is remembered, and another file in
// it costs no look-up; whoever then can't open the file calls MakeAnew and tries once more, as
// somebody may have removed the directory.
class ZorParentDirectory {
 public:
  // Makes the directories that lead to the file `path`.  False when that is impossible, or when the
  // path has no root.
  bool Make(const char* path);
  bool MakeAnew(const char* path);

 private:
  CString last;  // with its trailing backslash; empty before the first
};
