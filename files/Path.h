// Path.h - splits paths; only the text is examined.
//
// Paths are byte strings in the active ANSI code page; a null one reads as the empty text.  The
// backslash is the only separator, and the trail byte 0x5C of a double-byte character never counts
// as one.  Wild-cards are ordinary characters here.
#pragma once

#include <vector>

#include "platform/classlib/CString.h"

// Reads a text argument: null is the empty text.
inline const char* ZorText(const char* text) {
  return text != nullptr ? text : "";
}

// Splits `path` into root, directory and file name.  Each result points to the beginning of its
// piece in `path`, or is null if the piece is absent.  A piece ends where the next one begins, or
// at the terminator.  Out-parameters may be null.
//
//   path                      root         directory  file name
//   C:\dir\sub\file.txt       C:           \dir\sub\  file.txt
//   C:dir\file.txt            C:           dir\       file.txt
//   \\srv\share\dir\*.*       \\srv\share  \dir\      *.*
//   \\srv                     -            \\         srv
//   dir\                      -            dir\       -
void ZorSplitPath(const char* path, const char** root, const char** directory,
                  const char** fileName);

// The root of `path` with a trailing backslash, as the system's disk calls require; empty if it has
// none.
CString ZorRootDirectory(const char* path);

// The directories on the way along `path`, topmost first, each as the length in bytes of the prefix
// of `path` that names it.  `directory` and `fileName` come from ZorSplitPath; `directory` begins
// with a backslash.  If `fileName` is null, the last piece is a directory too.  The levels of
// `C:\a\\b\c.txt` with a file name are C:\a and C:\a\\b.
std::vector<int> ZorDirectoryLevels(const char* path, const char* directory, const char* fileName);

// With `add` non-zero makes `path` end in a backslash, so that a file name can be appended; an
// empty path becomes "\".  With 0 removes one trailing backslash, if there is one.
void ZorSetTrailingBackslash(CString& path, int add);

// Whether `path` begins with a drive or a share.
bool ZorHasRoot(const char* path);

// `directory` with a trailing backslash, so that a file name can be appended.  The empty text if it
// is empty or null.
CString ZorDirectoryText(const char* directory);

// 1 if `path` is complete: a root, a directory that begins with a backslash, and a file name.  Else
// 0.
int ZorIsFullPath(const char* path);
