// NameChanges.cpp - creates and removes directories, deletes files, renames both.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <optional>

#include "platform/win32/HostRules.h"
#include "platform/win32/posix/Attributes.h"
#include "platform/win32/posix/DirectoryNames.h"
#include "platform/win32/posix/File.h"
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
  return IsReadOnly(found.metadata, StoredAttributes(found.host.c_str()));
}

// Flushes changes of names in a directory to the medium.
bool SyncDirectory(const std::string& hostDirectory) {
  const int directory = Calls().open(hostDirectory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC, 0);
  if (directory < 0) return false;
  const bool done = Calls().fsync(directory) == 0 || errno == EINVAL;
  const int cause = errno;
  ::close(directory);
  errno = cause;
  return done;
}

bool Unlink(const std::string& host) {
  DirectoryChange change(host);
  if (Calls().unlink(host.c_str()) != 0) return false;
  change.Removed();
  return true;
}

// Both ends of a move.
struct Move {
  Found source;
  Found target;         // what the new name refers to now
  std::string newHost;  // where the source goes
  // The new name refers to the source's own directory entry, at most in another case.
  bool respelled = false;
  // The new name refers to the same file.
  bool sameFile = false;
};

// Whether two paths to the same file name one directory entry rather than two hard links: they do
// through a link to its directory, or on a case-insensitive host.
bool IsOneName(const Found& a, const Found& b) {
  if (a.metadata.links == 1 || a.metadata.IsDirectory()) return true;
  Metadata parentOfA;
  Metadata parentOfB;
  return a.HostName() == b.HostName() &&
         ReadMetadata(AT_FDCWD, HostParentOf(a.host).c_str(), parentOfA) &&
         ReadMetadata(AT_FDCWD, HostParentOf(b.host).c_str(), parentOfB) &&
         parentOfA.id == parentOfB.id;
}

bool FindEnds(LPCSTR existingName, LPCSTR newName, Purpose purpose, Move& move) {
  std::optional<LibraryPath> oldPath;
  if (!ParseAndLookUp(existingName, oldPath, move.source)) return false;
  const std::optional<LibraryPath> newPath = ParsePath(newName);
  if (!newPath) return false;
  if (oldPath->IsRoot() || newPath->IsRoot()) return Fail(ERROR_ACCESS_DENIED);
  move.target = LookUp(*newPath, purpose);
  if (!move.target.exists && move.target.error != ERROR_FILE_NOT_FOUND) {
    return Fail(move.target.error);
  }
  move.newHost = move.target.host;
  const Metadata& metadata = move.source.metadata;
  const bool links = metadata.link || move.target.metadata.link;
  move.sameFile = move.target.exists && !links && move.target.metadata.id == metadata.id;
  const bool oneName = move.sameFile && IsOneName(move.source, move.target);
  move.respelled = oneName || (move.target.exists && move.target.host == move.source.host);
  if (move.respelled) {
    move.newHost = JoinHost(HostParentOf(move.source.host), newPath->names.back());
  }
  return true;
}

// Whether the file is the one the caller has open, and no other open handle forbids deleting it.
bool IsHeldAlone(const File& held, const Metadata& metadata) {
  Metadata heldMetadata;
  return ReadMetadata(held.Descriptor(), heldMetadata) && heldMetadata.id == metadata.id &&
         !IsDeleteDeniedByOthers(held.Descriptor(), metadata.id);
}

bool MayReplace(const Move& move, DWORD flags, const File* held) {
  const Found& target = move.target;
  if ((flags & MOVEFILE_REPLACE_EXISTING) == 0) return Fail(ERROR_ALREADY_EXISTS);
  if (target.metadata.IsDirectory() || move.source.metadata.IsDirectory() ||
      target.metadata.dangling || IsReadOnly(target)) {
    return Fail(ERROR_ACCESS_DENIED);
  }
  if (held != nullptr) return IsHeldAlone(*held, target.metadata) || Fail(ERROR_SHARING_VIOLATION);
  // Refuse even if its opener permits deleting: the open file can't be replaced, only its name.
  const bool open =
      IsOpenHere(target.metadata.id) ||
      (target.metadata.IsRegular() && IsDeleteDenied(target.host.c_str(), target.metadata.id));
  return !open || Fail(ERROR_ACCESS_DENIED);
}

bool MayMove(const Move& move, DWORD flags, const File* held) {
  const Metadata& metadata = move.source.metadata;
  if (metadata.IsRegular() && !metadata.link &&
      IsDeleteDenied(move.source.host.c_str(), metadata.id)) {
    return Fail(ERROR_SHARING_VIOLATION);
  }
  return !move.target.exists || move.respelled || MayReplace(move, flags, held);
}

// If nothing is to be replaced, a target that has appeared meanwhile must not be overwritten.
bool Rename(const std::string& from, const std::string& to, bool replaces) {
  const auto rename = [&](unsigned flags) {
    return Calls().renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flags) == 0;
  };
  if (replaces) return rename(0);
  if (rename(RENAME_NOREPLACE)) return true;
  if (errno != EINVAL) return false;
  // The file system doesn't support the flag: check first.
  if (::access(to.c_str(), F_OK) == 0) {
    errno = EEXIST;
    return false;
  }
  return rename(0);
}

// Copies owner, group and permissions of the replaced file: a private archive must not become
// public by being rewritten.  They are in force before the file has its new name, and are taken
// back if it doesn't get that name.
class AccessChange {
 public:
  explicit AccessChange(const std::string& changed) : path(changed) {}
  ~AccessChange() {
    if (isDone) return;
    const int cause = errno;
    if (hasOwner) Keep(::chown(path.c_str(), before.st_uid, before.st_gid));
    if (hasMode || hasOwner) Keep(::chmod(path.c_str(), before.st_mode & kAllBits));
    errno = cause;
  }
  AccessChange(const AccessChange&) = delete;
  AccessChange& operator=(const AccessChange&) = delete;

  // False with errno set.  If the owner can't be changed, only the owner's permission bits are
  // copied.  Where all files have the same bits there is nothing to do.
  bool TakeFrom(const std::string& replaced) {
    struct stat old {};
    if (::stat(replaced.c_str(), &old) != 0 || ::stat(path.c_str(), &before) != 0) return false;
    if (!S_ISREG(old.st_mode)) return true;
    const bool isSameOwner = old.st_uid == before.st_uid && old.st_gid == before.st_gid;
    hasOwner = !isSameOwner && ::chown(path.c_str(), old.st_uid, old.st_gid) == 0;
    const mode_t mode = old.st_mode & (isSameOwner || hasOwner ? 0777U : 0700U);
    if ((before.st_mode & 0777U) == mode) return true;
    hasMode = ::chmod(path.c_str(), mode) == 0;
    return hasMode;
  }
  void Done() { isDone = true; }

 private:
  static constexpr mode_t kAllBits = 07777;
  static void Keep(int /*result*/) {}  // best effort

  const std::string& path;
  struct stat before {};
  bool hasOwner = false;
  bool hasMode = false;
  bool isDone = false;
};

bool Perform(const Move& move) {
  const std::string& from = move.source.host;
  const bool unchanged =
      move.respelled && move.newHost.ends_with('/' + std::string(move.source.HostName()));
  if (unchanged) return true;
  // rename() does nothing for two names of one file.
  if (move.sameFile && !move.respelled) return Unlink(from);
  DirectoryChange added(move.newHost);
  DirectoryChange removed(from);
  const bool replaces = move.target.exists && !move.respelled;
  AccessChange access(from);
  if (replaces && !access.TakeFrom(move.newHost)) return false;
  if (!Rename(from, move.newHost, replaces)) return false;
  access.Done();
  added.Added();
  removed.Removed();
  return true;
}

bool SyncMove(const Move& move) {
  const std::string to = HostParentOf(move.newHost);
  const std::string from = HostParentOf(move.source.host);
  return SyncDirectory(to) && (from == to || SyncDirectory(from));
}

BOOL MoveName(LPCSTR existingName, LPCSTR newName, DWORD flags, const File* held) {
  Move move;
  // A held file was opened by look-up, so it is found case-insensitively here too.
  const Purpose purpose = held != nullptr ? Purpose::Find : Purpose::Create;
  if (!FindEnds(existingName, newName, purpose, move)) return FALSE;
  if (held != nullptr && !move.target.exists) return Fail(ERROR_SHARING_VIOLATION);
  if (!MayMove(move, flags, held)) return FALSE;
  if (!Perform(move)) return FailErrno();
  const bool sync = (flags & MOVEFILE_WRITE_THROUGH) != 0;
  return !sync || SyncMove(move) ? TRUE : FailErrno();
}

bool DeleteName(LPCSTR name, const File* held) {
  std::optional<LibraryPath> path;
  Found found;
  if (!ParseAndLookUp(name, path, found)) return false;
  if (found.metadata.IsDirectory()) return Fail(ERROR_ACCESS_DENIED);
  // For a link, only the link itself matters.
  if (!found.metadata.link) {
    if (IsReadOnly(found)) return Fail(ERROR_ACCESS_DENIED);
    const bool inUse = held != nullptr ? !IsHeldAlone(*held, found.metadata)
                                       : found.metadata.IsRegular() &&
                                             IsDeleteDenied(found.host.c_str(), found.metadata.id);
    if (inUse) return Fail(ERROR_SHARING_VIOLATION);
  }
  return Unlink(found.host) || FailErrno();
}

bool RemoveEmptyDirectory(LPCSTR name) {
  std::optional<LibraryPath> path;
  Found found;
  if (!ParseAndLookUp(name, path, found)) return false;
  if (path->IsRoot()) return Fail(ERROR_ACCESS_DENIED);
  if (!found.metadata.IsDirectory()) return Fail(ERROR_DIRECTORY);
  if (found.metadata.link) return Unlink(found.host) || FailErrno();
  if (IsReadOnly(found)) return Fail(ERROR_ACCESS_DENIED);
  DirectoryChange change(found.host);
  // Some hosts say "exists" for a directory that isn't empty.
  if (Calls().rmdir(found.host.c_str()) != 0) {
    return errno == EEXIST ? Fail(ERROR_DIR_NOT_EMPTY) : FailErrno();
  }
  change.Removed();
  return true;
}

// Calls `change` with the file of a handle, and closes the handle on success.
template <typename Change>
int WhileHeld(HANDLE* held, Change change) {
  const auto file = FindObject<File>(*held);
  if (!file || !change(file.get())) return 0;
  CloseHandle(*held);
  *held = nullptr;
  return 1;
}

}  // namespace

BOOL WINAPI DeleteFileA(LPCSTR name) {
  return WithoutThrowing([&] { return DeleteName(name, nullptr); });
}

int KzDeleteHeld(const char* path, HANDLE* held) {
  return WithoutThrowing(
      [&] { return WhileHeld(held, [&](const File* file) { return DeleteName(path, file); }); });
}

BOOL WINAPI CreateDirectoryA(LPCSTR name, LPSECURITY_ATTRIBUTES security) {
  if (security != nullptr && security->lpSecurityDescriptor != nullptr) {
    return Fail(ERROR_INVALID_PARAMETER);
  }
  const std::optional<LibraryPath> path = ParsePath(name);
  if (!path) return FALSE;
  const Found found = LookUp(*path, Purpose::Create);
  if (found.exists) return Fail(path->IsRoot() ? ERROR_ACCESS_DENIED : ERROR_ALREADY_EXISTS);
  if (found.error != ERROR_FILE_NOT_FOUND) return Fail(found.error);
  DirectoryChange change(found.host);
  if (Calls().mkdir(found.host.c_str(), kNewDirectoryMode) != 0) return FailErrno();
  change.Added();
  return TRUE;
}

BOOL WINAPI RemoveDirectoryA(LPCSTR name) {
  return WithoutThrowing([&] { return RemoveEmptyDirectory(name); });
}

BOOL WINAPI MoveFileExA(LPCSTR existingName, LPCSTR newName, DWORD flags) {
  constexpr DWORD kKnown = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
  if ((flags & ~kKnown) != 0) return Fail(ERROR_INVALID_PARAMETER);
  return MoveName(existingName, newName, flags, nullptr);
}

int KzReplaceHeld(const char* path, const char* target, HANDLE* held) {
  constexpr DWORD kFlags = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
  return WhileHeld(held, [&](const File* file) { return MoveName(path, target, kFlags, file); });
}
