// DirectoryNames.cpp - see DirectoryNames.h.
#include "platform/win32/posix/DirectoryNames.h"

#include <dirent.h>
#include <fcntl.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <mutex>
#include <unordered_map>

#include "platform/text/Case.h"
#include "platform/win32/posix/HostNames.h"
#include "platform/win32/posix/Metadata.h"
#include "platform/win32/posix/Paths.h"

namespace kozor::posix {

namespace {

struct CloseDirectory {
  void operator()(DIR* directory) const { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

bool IsAscii(std::string_view name) {
  return std::all_of(name.begin(), name.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

// A name to look for, prepared for comparison with many.
class Wanted {
 public:
  Wanted(const std::string& wantedName, Match wantedMatch)
      : name(wantedName), match(wantedMatch), key(CaseKey(name)), ascii(IsAscii(name)) {
    if (match == Match::ExactCase) exactKey = ExactKey(name);
  }

  bool Matches(std::string_view candidate) const {
    if (candidate == name) return false;
    if (match == Match::ExactCase) return ExactKey(candidate) == exactKey;
    // No other character folds to an ASCII one, so ASCII names match only at equal length.
    if (!ascii) return !IsAscii(candidate) && CaseKey(candidate) == key;
    return candidate.size() == name.size() &&
           std::equal(candidate.begin(), candidate.end(), key.begin(), [](char c, char16_t unit) {
             return text::ToUpper(static_cast<unsigned char>(c)) == unit;
           });
  }

  const std::u16string& Key() const { return key; }

 private:
  const std::string& name;
  Match match;
  std::u16string key;
  std::u16string exactKey;  // of ExactCase
  bool ascii;
};

// Keeps the match that comes first by byte values.
void KeepFirst(std::optional<std::string>& best, const Wanted& wanted, std::string_view candidate) {
  if ((!best || candidate < *best) && wanted.Matches(candidate)) best = candidate;
}

// Directories with fewer entries than this are read each time.
constexpr std::size_t kLarge = 256;
// How long a cached directory is valid at most.  Its time stamp has a resolution of some
// milliseconds, so a name that another program adds within the same step can go unnoticed for this
// long.
constexpr std::chrono::seconds kBelieveFor{1};

using Clock = std::chrono::steady_clock;

// The cached names of one large directory, by key.
struct Remembered {
  std::string directory;  // host path; empty if there is none
  FileId id{};
  timespec changed{};
  Clock::time_point readAt;
  unsigned codePage = 0;  // that the keys belong to
  std::unordered_multimap<std::u16string, std::string> names;

  // Whether the cache still matches the directory.
  bool IsCurrent(const std::string& hostDirectory) const {
    Metadata metadata;
    return directory == hostDirectory && codePage == ActiveCodePage() &&
           Clock::now() - readAt < kBelieveFor &&
           ReadMetadata(AT_FDCWD, hostDirectory.c_str(), metadata) && metadata.id == id &&
           metadata.changed.tv_sec == changed.tv_sec && metadata.changed.tv_nsec == changed.tv_nsec;
  }

  void Add(std::string_view name) { names.emplace(CaseKey(name), name); }

  void Remove(const std::string& name) {
    auto [entry, end] = names.equal_range(CaseKey(name));
    while (entry != end) entry = entry->second == name ? names.erase(entry) : std::next(entry);
  }

  std::optional<std::string> Find(const Wanted& wanted) const {
    std::optional<std::string> best;
    const auto [begin, end] = names.equal_range(wanted.Key());
    std::for_each(begin, end, [&](const auto& entry) { KeepFirst(best, wanted, entry.second); });
    return best;
  }
};

// For the whole process: the C library ends it if a thread's own object can't be registered for
// destruction.
std::mutex lock;
Remembered remembered;

}  // namespace

bool OthersMayMatch(const std::string& name, Match match) {
  return match == Match::IgnoreCase || (ActiveCodePage() == text::kCodePage932 && !IsAscii(name));
}

std::optional<std::string> FindMatchingName(const std::string& hostDirectory,
                                            const std::string& name, Match match) {
  if (!OthersMayMatch(name, match)) return std::nullopt;
  const Wanted wanted(name, match);
  const std::scoped_lock guard(lock);
  if (remembered.IsCurrent(hostDirectory)) return remembered.Find(wanted);
  Metadata metadata;  // read before the names, so that a change meanwhile is noticed
  if (!ReadMetadata(AT_FDCWD, hostDirectory.c_str(), metadata)) return std::nullopt;
  const Directory directory(::opendir(hostDirectory.c_str()));
  if (!directory) return std::nullopt;
  std::optional<std::string> best;
  std::size_t count = 0;
  while (const dirent* const entry = ::readdir(directory.get())) {
    ++count;
    KeepFirst(best, wanted, entry->d_name);
  }
  if (count < kLarge) return best;
  remembered = {hostDirectory, metadata.id, metadata.changed, Clock::now(), ActiveCodePage(), {}};
  ::rewinddir(directory.get());
  while (const dirent* const entry = ::readdir(directory.get())) remembered.Add(entry->d_name);
  return best;
}

DirectoryChange::DirectoryChange(const std::string& hostPath) {
  const std::scoped_lock guard(lock);
  const bool isKnown = !remembered.directory.empty() &&
                       HostParentOf(hostPath) == remembered.directory &&
                       remembered.IsCurrent(remembered.directory);
  if (!isKnown) return;
  directory = remembered.directory;
  name = HostNameOf(hostPath);
}

template <typename Change>
void DirectoryChange::Apply(Change change) {
  const std::scoped_lock guard(lock);
  if (directory.empty() || directory != remembered.directory) return;
  change();
  Metadata metadata;
  if (ReadMetadata(AT_FDCWD, directory.c_str(), metadata)) remembered.changed = metadata.changed;
}

void DirectoryChange::Added() {
  Apply([this] { remembered.Add(name); });
}

void DirectoryChange::Removed() {
  Apply([this] { remembered.Remove(name); });
}

}  // namespace kozor::posix
