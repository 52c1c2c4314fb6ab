// FileWalk.cpp - walks a directory, and the directories below it, for the entries that match a
// mask.
#include "files/FileWalk.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <deque>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <vector>

#include "files/Path.h"
#include "platform/base/ByteOrder.h"
#include "platform/win32/HostRules.h"

namespace {

// An entry that has none of these passes every filter.
constexpr DWORD kFilteredAttributes = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN |
                                      FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_DIRECTORY |
                                      FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_TEMPORARY |
                                      FILE_ATTRIBUTE_COMPRESSED | FILE_ATTRIBUTE_OFFLINE;

// With a filter of all of these, only names and directories matter.
constexpr DWORD kFileAttributes = kFilteredAttributes & ~DWORD{FILE_ATTRIBUTE_DIRECTORY};

// Identifies a directory independently of the path that leads to it.
struct DirectoryIdentity {
  DWORD volume;
  std::uint64_t index;
  bool operator==(const DirectoryIdentity&) const = default;
};

std::optional<DirectoryIdentity> IdentityOf(const char* directory) {
  HANDLE handle = CreateFileA(directory, 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                              nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return std::nullopt;
  BY_HANDLE_FILE_INFORMATION information;
  const bool known = GetFileInformationByHandle(handle, &information) != 0;
  CloseHandle(handle);
  if (!known) return std::nullopt;
  return DirectoryIdentity{
      information.dwVolumeSerialNumber,
      kozor::JoinHalves(information.nFileIndexHigh, information.nFileIndexLow)};
}

struct CloseSearch {
  void operator()(HANDLE search) const { FindClose(search); }
};
using SearchHandle = std::unique_ptr<std::remove_pointer_t<HANDLE>, CloseSearch>;

bool IsDots(const char* name) {
  return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

struct Entry {
  CString name;
  DWORD attributes;

  bool Has(DWORD mask) const { return (attributes & mask) != 0; }
  bool IsDirectory() const { return Has(FILE_ATTRIBUTE_DIRECTORY); }
};

// A directory on the current path of the walk.  Its entries have been read and its search is
// closed, so a walk needs one handle at any depth.
struct Level {
  CString directory;  // with its trailing backslash
  CString reported;   // the same without the prefix
  std::vector<Entry> entries;
  std::size_t next = 0;
  bool identityKnown = false;
  std::optional<DirectoryIdentity> identity;  // read when the first link is checked
};

class Walker {
 public:
  Walker(const ZorFileWalk& task, const ZorFileWalkVisitor& visitor)
      : walk(task), visit(visitor), isForAll(task.fileMask == kAllFiles) {}

  DWORD Run() {
    Enter(walk.directory);
    while (!levels.empty()) {
      Level& level = levels.back();
      if (level.next == level.entries.size()) {
        levels.pop_back();
      } else {
        Take(level, level.entries[level.next++]);
      }
    }
    return firstError;
  }

 private:
  // With the mask for all entries, each entry is reported when Take reaches it, so that a
  // directory's contents follow it.  With any other mask, all matches are reported here and only
  // directories are kept.
  void Enter(CString directory) {
    ZorSetTrailingBackslash(directory, 1);
    Level& level = levels.emplace_back();
    level.directory = std::move(directory);
    level.reported = level.directory.Mid(walk.prefixLength);
    if (!isForAll) {
      ForEachEntry(level.directory + walk.fileMask, FindExSearchNameMatch,
                   [&](const Entry& entry) { Report(level, entry); });
    }
    if (!isForAll && !walk.subDirectories) return;
    const auto wanted = isForAll ? FindExSearchNameMatch : FindExSearchLimitToDirectories;
    ForEachEntry(level.directory + kAllFiles, wanted, [&](Entry&& entry) {
      if (isForAll || entry.IsDirectory()) level.entries.push_back(std::move(entry));
    });
  }

  template <class Action>
  void ForEachEntry(const CString& mask, FINDEX_SEARCH_OPS wanted, Action action) {
    WIN32_FIND_DATAA found;
    const bool anyFilePasses = (walk.searchMask & kFileAttributes) == kFileAttributes;
    HANDLE handle = anyFilePasses || wanted == FindExSearchLimitToDirectories
                        ? KzFindFirstName(mask, wanted, &found)
                        : FindFirstFileExA(mask, FindExInfoStandard, &found, wanted, nullptr, 0);
    if (handle == INVALID_HANDLE_VALUE) return NoteError(ERROR_FILE_NOT_FOUND);
    const SearchHandle search(handle);
    do {
      if (!IsDots(found.cFileName)) action(Entry{found.cFileName, found.dwFileAttributes});
    } while (KzFindNextFile(handle, &found));
    NoteError(ERROR_NO_MORE_FILES);
  }

  // Keeps the system's last error if none has been kept and it isn't the `usual` end of a search.
  void NoteError(DWORD usual) {
    const DWORD error = GetLastError();
    if (firstError == NO_ERROR && error != usual) firstError = error;
  }

  void Take(Level& level, const Entry& entry) {
    if (isForAll) Report(level, entry);
    if (!walk.subDirectories || !entry.IsDirectory()) return;
    const CString path = level.directory + entry.name;
    if (!entry.Has(FILE_ATTRIBUTE_REPARSE_POINT) || MayFollow(path)) Enter(path);
  }

  void Report(const Level& level, const Entry& entry) {
    if (!entry.Has(walk.searchMask) && entry.Has(kFilteredAttributes)) return;
    if (entry.IsDirectory() && (walk.searchMask & FILE_ATTRIBUTE_DIRECTORY) == 0) return;
    visit(level.reported + entry.name, entry.IsDirectory());
  }

  // A cycle always passes through a link, so only links have to be checked.
  bool MayFollow(const CString& link) {
    if (!walk.followLinks) return false;
    const std::optional<DirectoryIdentity> target = IdentityOf(link);
    if (!target) {
      NoteError(NO_ERROR);
      return false;
    }
    return std::none_of(levels.begin(), levels.end(), [&](Level& level) {
      if (!std::exchange(level.identityKnown, true)) level.identity = IdentityOf(level.directory);
      return level.identity == target;
    });
  }

  const ZorFileWalk& walk;
  const ZorFileWalkVisitor& visit;
  const bool isForAll;
  std::deque<Level> levels;
  DWORD firstError = NO_ERROR;
};

}  // namespace

DWORD ZorWalkDirectory(const ZorFileWalk& walk, const ZorFileWalkVisitor& visit) {
  return Walker(walk, visit).Run();
}
