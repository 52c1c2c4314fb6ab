// Path.h - taking paths apart, by looking at the text only.
//
// Paths are byte strings in the active ANSI code page; a null one reads as the empty text.  The
// backslash is the only separator, and every walk goes by whole characters, so the trail byte 0x5C
// of a double-byte character never separates.  Wild-cards are ordinary text here.
#pragma once

#include <vector>

#include "platform/classlib/CString.h"

// How every text argument is read: null as the empty text.
inline const char* ZorText(const char* text) {
  return text != nullptr ? text : "";
}

// Cuts `path` into root, directory and file name.  Each pointer points into `path`, where its piece
// begins, or is null when the piece is absent; a piece ends where the next one begins, or at the
// terminator.  A null out-parameter isn't reported.
//
//   path                      root         directory  file name
//   C:\dir\sub\file.txt       C:           \dir\sub\  file.txt
//   C:dir\file.txt            C:           dir\       file.txt
//   \\srv\share\dir\*.*       \\srv\share  \dir\      *.*
//   \\srv                     -            \\         srv
//   dir\                      -            dir\       -
void ZorSplitPath(const char* path, const char** root, const char** directory,
                  const char** fileName);

// The root of `path` with a trailing backslash, as the system's calls about disks take it; empty if
// it has none.
CString ZorRootDirectory(const char* path);

// The directories that `path` leads through, topmost first, each by the number of bytes of `path`
// that name it.  `directory` and `fileName` are what ZorSplitPath gave, `directory` beginning with
// a backslash; without a file name (null) all of it is directories.  Those of `C:\a\\b\c.txt` with
// a file name are C:\a and C:\a\\b.
std::vector<int> ZorDirectoryLevels(const char* path, const char* directory, const char* fileName);

// Cuts off the last backslash of `path` if it ends in one, and with `add` non-zero appends one: the
// form in which a file name can follow.  An empty path becomes "\".
void ZorSetTrailingBackslash(CString& path, int add);

// Whether `path` begins with a drive or a share.
bool ZorHasRoot(const char* path);

// A directory's path as a file name can follow it: with one trailing backslash.  An empty or null
// one is the empty text.
CString ZorDirectoryText(const char* directory);

// 1 if `path` names a file with its complete location: a root, a directory that begins with a
// backslash, and a file name.  Else 0.
int ZorIsFullPath(const char* path);
