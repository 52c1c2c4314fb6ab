// FileWalk.cpp - walks a directory, and the directories below it, for the entries that match a
// mask.
#include "files/FileWalk.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <utility>
#include <vector>

#include "files/Path.h"
#include "platform/classlib/CFileFind.h"

namespace {

// An entry with none of these passes every filter.
constexpr DWORD kFilteredAttributes = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN |
                                      FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_DIRECTORY |
                                      FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_TEMPORARY |
                                      FILE_ATTRIBUTE_COMPRESSED | FILE_ATTRIBUTE_OFFLINE;

// Tells one directory from another, whatever path leads to it.
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
      std::uint64_t{information.nFileIndexHigh} << 32 | information.nFileIndexLow};
}

struct Entry {
  CString name;
  DWORD attributes;

  bool Has(DWORD mask) const { return (attributes & mask) != 0; }
  bool IsDirectory() const { return Has(FILE_ATTRIBUTE_DIRECTORY); }
};

// A directory that the walk is in.  No search stays open: a walk needs one handle, however deep.
struct Level {
  CString directory;  // with its trailing backslash
  CString reported;   // the same without the prefix
  std::vector<Entry> entries;
  std::size_t next = 0;
  bool identityKnown = false;
  std::optional<DirectoryIdentity> identity;  // found out when a link asks for it
};

class Walker {
 public:
  Walker(const ZorFileWalk& task, const ZorFileWalkVisitor& visitor)
      : walk(task), visit(visitor), isForAll(task.fileMask == kAllFiles) {}

  void Run() {
    Enter(walk.directory);
    while (!levels.empty()) {
      Level& level = levels.back();
      if (level.next == level.entries.size()) {
        levels.pop_back();
      } else {
        Take(level, level.entries[level.next++]);
      }
    }
  }

 private:
  // With the mask for all entries, each is reported when its turn comes, so that a directory's
  // contents follow it.  With another, all matches are reported here and directories remain.
  void Enter(CString directory) {
    ZorSetTrailingBackslash(directory, 1);
    Level& level = levels.emplace_back();
    level.directory = std::move(directory);
    level.reported = level.directory.Mid(walk.prefixLength);
    if (!isForAll) {
      ForEachEntry(level.directory + walk.fileMask,
                   [&](const Entry& entry) { Report(level, entry); });
    }
    if (!isForAll && !walk.subDirectories) return;
    ForEachEntry(level.directory + kAllFiles, [&](const Entry& entry) {
      if (isForAll || entry.IsDirectory()) level.entries.push_back(entry);
    });
  }

  template <class Action>
  static void ForEachEntry(const CString& mask, Action action) {
    CFileFind search;
    for (int more = search.FindFile(mask); more;) {
      more = search.FindNextFileA();
      if (!search.IsDots()) action(Entry{search.GetFileName(), search.GetAttributes()});
    }
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

  // Every endless way leads through the same link again and again, so links are the place to look.
  bool MayFollow(const CString& link) {
    if (!walk.followLinks) return false;
    const std::optional<DirectoryIdentity> target = IdentityOf(link);
    if (!target) return false;
    return std::none_of(levels.begin(), levels.end(), [&](Level& level) {
      if (!std::exchange(level.identityKnown, true)) level.identity = IdentityOf(level.directory);
      return level.identity == target;
    });
  }

  const ZorFileWalk& walk;
  const ZorFileWalkVisitor& visit;
  const bool isForAll;
  std::deque<Level> levels;
};

}  // namespace

void ZorWalkDirectory(const ZorFileWalk& walk, const ZorFileWalkVisitor& visit) {
  Walker(walk, visit).Run();
}
