// FileWalk.h - walks a directory, and the directories below it, for the entries that match a mask.
#pragma once

#include <functional>

#include "platform/classlib/CString.h"
#include "platform/win32/Win32.h"

// The file mask for all entries, the only one that is compared as text.
inline constexpr char kAllFiles[] = "*.*";
// A filter that every entry passes.
inline constexpr DWORD kAnyAttribute = 0xFFFFFFFF;

struct ZorFileWalk {
  CString directory;     // where to begin, with or without a trailing backslash
  CString fileMask;      // as FindFirstFileA takes it
  DWORD searchMask = 0;  // FILE_ATTRIBUTE_* bits, see below
  bool subDirectories = true;
  bool followLinks = true;  // false: a link to a directory is an entry, but isn't entered
  int prefixLength = 0;     // bytes of `directory` left out of reported names
};

// Called with the name of each entry and whether it is a directory.
using ZorFileWalkVisitor = std::function<void(const CString& name, bool isDirectory)>;

// Visits the matching entries that pass the filter: those with at least one attribute of
// `searchMask`, or with no attribute that a filter can select; directories only if it has
// FILE_ATTRIBUTE_DIRECTORY.  Directories are entered whether they pass or not.
//
// With the file mask "*.*" a directory comes right before its contents.  With any other, all
// matches of a directory come before those of its subdirectories.  Entries come in the platform's
// order.  A directory that can't be read counts as empty.  Returns NO_ERROR if all were read, else
// the system error of the first that couldn't be.
//
// A link to a directory is entered unless it leads back to one on the current path.  The depth
// isn't limited: levels are kept on the heap, and only one search is open at a time.
DWORD ZorWalkDirectory(const ZorFileWalk& walk, const ZorFileWalkVisitor& visit);
