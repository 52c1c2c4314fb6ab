// NameChanges.cpp - calls that make, move and remove names: directories, DeleteFileA, MoveFileExA.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <optional>

#include "platform/win32/posix/Attributes.h"
#include "platform/win32/posix/LastError.h"
#include "platform/win32/posix/LookUp.h"
#include "platform/win32/posix/Sharing.h"
#include "platform/win32/posix/SystemCalls.h"

namespace {

using namespace kozor::posix;

constexpr mode_t kNewDirectoryMode = 0777;

bool ParseAndLookUp(LPCSTR name, std::optional<LibraryPath>& path, Found& found) {
  path = ParsePath(name);
  return path && LookUpExisting(*path, found);
}

bool IsReadOnly(const Found& found) {
  return IsReadOnly(found.facts, StoredAttributes(found.host.c_str()));
}

// The directory part of a host path.
std::string ParentOf(const std::string& host) {
  const std::size_t slash = host.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : host.substr(0, slash);
}

// Waits until changes of names in a directory are on the medium.
bool SyncDirectory(const std::string& hostDirectory) {
  const int directory = Calls().open(hostDirectory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0);
  if (directory < 0) return false;
  const bool done = Calls().fsync(directory) == 0 || errno == EINVAL;
  const int cause = errno;
  ::close(directory);
  errno = cause;
  return done;
}

// What stands in the way of moving a file or directory to a name that exists.
bool MayReplace(const Found& source, const Found& target, DWORD flags) {
  if ((flags & MOVEFILE_REPLACE_EXISTING) == 0) return Fail(ERROR_ALREADY_EXISTS);
  if (target.facts.IsDirectory() || source.facts.IsDirectory() || target.facts.dangling ||
      IsReadOnly(target)) {
    return Fail(ERROR_ACCESS_DENIED);
  }
  // Also a file that its opener lets others delete: only the name could be given away.
  if (IsOpenHere(target.facts.id) || IsDeleteDenied(target.host.c_str(), target.facts.id)) {
    return Fail(ERROR_ACCESS_DENIED);
  }
  return true;
}

// Two names of one file: the host's call would leave both.
bool RenameOntoItself(const Found& source, const Found& target) {
  return source.host == target.host || Calls().unlink(source.host.c_str()) == 0;
}

// Without an old file there, the new name may not come to exist meanwhile.
bool Rename(const Found& source, const std::string& target, bool replaces) {
  const auto rename = [&](unsigned flags) {
    return Calls().renameat2(AT_FDCWD, source.host.c_str(), AT_FDCWD, target.c_str(), flags) == 0;
  };
  if (replaces) return rename(0);
  if (rename(RENAME_NOREPLACE)) return true;
  if (errno != EINVAL) return false;
  // The file system can't refuse by itself.
  if (::access(target.c_str(), F_OK) == 0) {
    errno = EEXIST;
    return false;
  }
  return rename(0);
}

bool SyncMove(const std::string& source, const std::string& target) {
  const std::string to = ParentOf(target);
  const std::string from = ParentOf(source);
  return SyncDirectory(to) && (from == to || SyncDirectory(from));
}

}  // namespace

BOOL WINAPI DeleteFileA(LPCSTR name) {
  std::optional<LibraryPath> path;
  Found found;
  if (!ParseAndLookUp(name, path, found)) return FALSE;
  if (found.facts.IsDirectory()) return Fail(ERROR_ACCESS_DENIED);
  // The link goes, and what it points to doesn't matter.
  if (!found.facts.link) {
    if (IsReadOnly(found)) return Fail(ERROR_ACCESS_DENIED);
    if (found.facts.IsRegular() && IsDeleteDenied(found.host.c_str(), found.facts.id)) {
      return Fail(ERROR_SHARING_VIOLATION);
    }
  }
  return Calls().unlink(found.host.c_str()) == 0 ? TRUE : FailErrno();
}

BOOL WINAPI CreateDirectoryA(LPCSTR name, LPSECURITY_ATTRIBUTES security) {
  if (security != nullptr && security->lpSecurityDescriptor != nullptr) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const std::optional<LibraryPath> path = ParsePath(name);
  if (!path) return FALSE;
  const Found found = LookUp(*path);
  if (found.exists) return Fail(path->IsRoot() ? ERROR_ACCESS_DENIED : ERROR_ALREADY_EXISTS);
  if (found.error != ERROR_FILE_NOT_FOUND) return Fail(found.error);
  return Calls().mkdir(found.host.c_str(), kNewDirectoryMode) == 0 ? TRUE : FailErrno();
}

BOOL WINAPI RemoveDirectoryA(LPCSTR name) {
  std::optional<LibraryPath> path;
  Found found;
  if (!ParseAndLookUp(name, path, found)) return FALSE;
  if (path->IsRoot()) return Fail(ERROR_ACCESS_DENIED);
  if (!found.facts.IsDirectory()) return Fail(ERROR_DIRECTORY);
  if (found.facts.link) return Calls().unlink(found.host.c_str()) == 0 ? TRUE : FailErrno();
  if (IsReadOnly(found)) return Fail(ERROR_ACCESS_DENIED);
  if (Calls().rmdir(found.host.c_str()) == 0) return TRUE;
  // Some hosts say "exists" for a directory that isn't empty.
  return errno == EEXIST ? Fail(ERROR_DIR_NOT_EMPTY) : FailErrno();
}

BOOL WINAPI MoveFileExA(LPCSTR existingName, LPCSTR newName, DWORD flags) {
  constexpr DWORD kKnown = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
  if ((flags & ~kKnown) != 0) return Fail(ERROR_INVALID_PARAMETER);
  std::optional<LibraryPath> oldPath;
  Found source;
  if (!ParseAndLookUp(existingName, oldPath, source)) return FALSE;
  const std::optional<LibraryPath> newPath = ParsePath(newName);
  if (!newPath) return FALSE;
  if (oldPath->IsRoot() || newPath->IsRoot()) return Fail(ERROR_ACCESS_DENIED);
  if (source.facts.IsRegular() && !source.facts.link &&
      IsDeleteDenied(source.host.c_str(), source.facts.id)) {
    return Fail(ERROR_SHARING_VIOLATION);
  }

  const Found target = LookUp(*newPath);
  if (!target.exists && target.error != ERROR_FILE_NOT_FOUND) return Fail(target.error);
  std::string targetHost = target.host;
  const bool sameFile = target.exists && target.facts.id == source.facts.id && !source.facts.link &&
                        !target.facts.link;
  // A name that differs in case alone finds the file itself, and is where it goes.
  const bool respelled = target.exists && target.host == source.host;
  if (respelled) targetHost = ParentOf(source.host) + '/' + newPath->names.back();
  if (target.exists && !respelled && !MayReplace(source, target, flags)) return FALSE;

  const bool done = sameFile && !respelled
                        ? RenameOntoItself(source, target)
                        : Rename(source, targetHost, target.exists && !respelled);
  if (!done) return FailErrno();
  if ((flags & MOVEFILE_WRITE_THROUGH) != 0 && !SyncMove(source.host, targetHost)) {
    return FailErrno();
  }
  return TRUE;
}
