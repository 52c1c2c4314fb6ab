// Directory.cpp - makes and removes directory trees; their paths must have a root.
#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

#include "ZorFileServices.h"
#include "files/FileWalk.h"
#include "files/ParentDirectory.h"
#include "files/Path.h"

namespace {

// The directory piece of a path that begins with a root and a backslash, else null.
const char* RootedDirectory(const char* path, const char** fileName = nullptr) {
  const char* root;
  const char* directory;
  ZorSplitPath(path, &root, &directory, fileName);
  const bool isRooted = root != nullptr && directory != nullptr && *directory == '\\';
  return isRooted ? directory : nullptr;
}

bool HasAttribute(DWORD attributes, DWORD wanted) {
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & wanted) != 0;
}

// False for a root: no directory lists it.  So ".." can't lead above a root.
bool IsDirectory(const char* path) {
  CFileStatus status;
  return CFile::GetStatus(path, status) && (status.m_attribute & CFile::directory) != 0;
}

// The common case takes one look-up: if the last level is a directory, all levels above it exist.
// That doesn't hold for a path with "..", whose last level can exist without an earlier one.
bool AllLevelsExist(const char* path, int length) {
  const CString last(path, length);
  return std::strstr(last, "..") == nullptr && IsDirectory(last);
}

// Whether `path` names a root in any spelling: "C:\", "C:\a\..".
bool IsRoot(const char* path) {
  if (RootedDirectory(path)[1] == '\0') return true;
  const DWORD size = GetFullPathNameA(path, 0, nullptr, nullptr);
  if (size == 0) return false;
  CString full;
  GetFullPathNameA(path, size, full.GetBuffer(static_cast<int>(size)), nullptr);
  full.ReleaseBuffer();
  const char* directory = RootedDirectory(full);
  return directory == nullptr || directory[1] == '\0';
}

// Removes files first, then directories in reverse order, as a walk reports parents before their
// children.  Links are removed, not followed.
bool RemoveContents(const char* path) {
  ZorFileWalk walk;
  walk.directory = path;
  walk.fileMask = kAllFiles;
  walk.searchMask = kAnyAttribute;
  walk.followLinks = false;
  std::vector<CString> files;
  std::vector<CString> directories;
  ZorWalkDirectory(walk, [&](const CString& name, bool isDirectory) {
    (isDirectory ? directories : files).push_back(name);
  });

  for (const CString& file : files) {
    if (!DeleteFileA(file)) return false;
  }
  for (; !directories.empty(); directories.pop_back()) {
    if (!RemoveDirectoryA(directories.back())) return false;
  }
  return true;
}

struct Making {
  // Levels longer than this are made even if one that differs in case is there, where the host can
  // have both.
  int exactFrom = std::numeric_limits<int>::max();
  // Levels that lead to this directory, which has a trailing backslash, are known to exist.
  const char* known = "";
};

// As ZorCreateDirectory.
bool MakeDirectories(const char* path, bool hasFileName, CString* firstCreated,
                     const Making& making = {}) {
  const char* fileName;
  const char* directory = RootedDirectory(path, &fileName);
  if (directory == nullptr) return false;
  if (firstCreated != nullptr) firstCreated->Empty();
  const std::vector<int> levels =
      ZorDirectoryLevels(path, directory, hasFileName ? fileName : nullptr);
  const auto unknown = std::find_if(levels.begin(), levels.end(), [&](int length) {
    return std::strncmp(path, making.known, static_cast<std::size_t>(length) + 1) != 0;
  });
  const auto exact = std::upper_bound(unknown, levels.end(), making.exactFrom);
  const bool exist = exact == unknown || AllLevelsExist(path, *(exact - 1));

  for (auto length = exist ? exact : unknown; length != levels.end(); ++length) {
    const CString level(path, *length);
    if (length < exact && IsDirectory(level)) continue;
    if (CreateDirectoryA(level, nullptr)) {
      if (firstCreated != nullptr && firstCreated->IsEmpty()) *firstCreated = level;
    } else if (!IsDirectory(level)) {  // another process may have made it meanwhile
      return false;
    }
  }
  return true;
}

}  // namespace

int ZorCreateDirectory(const char* path, int hasFileName, CString* firstCreated) {
  return MakeDirectories(path, hasFileName != 0, firstCreated);
}

// If `path` itself is a link, the link is removed and its target left alone.  With `contentsOnly`
// the caller means the directory that the link leads to.
int ZorRemoveDirectory(const char* path, int contentsOnly) {
  if (RootedDirectory(path) == nullptr || IsRoot(path)) return 1;
  if (contentsOnly) return RemoveContents(path);
  const bool isLink = HasAttribute(GetFileAttributesA(path), FILE_ATTRIBUTE_REPARSE_POINT);
  if (!isLink && !RemoveContents(path)) return 0;
  return RemoveDirectoryA(path) != 0;
}

bool ZorParentDirectory::Make(const char* path) {
  const char* fileName = ZorGetFileName(path);
  const bool isLast = fileName != nullptr && !last.IsEmpty() &&
                      last == CString(path, static_cast<int>(fileName - path));
  return isLast || MakeBelow(path, std::exchange(last, CString())) || MakeAnew(path);
}

bool ZorParentDirectory::MakeAnew(const char* path) {
  last.Empty();
  return MakeBelow(path, "");
}

bool ZorParentDirectory::MakeBelow(const char* path, const char* known) {
  Making making{.known = known};
  const bool isBelow =
      !base.IsEmpty() && std::strncmp(path, base, static_cast<std::size_t>(base.GetLength())) == 0;
  if (isBelow) making.exactFrom = base.GetLength();
  if (!MakeDirectories(path, true, nullptr, making)) return false;
  const char* fileName = ZorGetFileName(path);
  if (fileName != nullptr) last = CString(path, static_cast<int>(fileName - path));
  return true;
}
