// OtherSpelling.cpp - see OtherSpelling.h.
#include "platform/win32/posix/OtherSpelling.h"

#include <dirent.h>
#include <fcntl.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <unordered_map>

#include "platform/text/Case.h"
#include "platform/win32/PosixAdmin.h"
#include "platform/win32/posix/ActiveCodePage.h"
#include "platform/win32/posix/HostNames.h"

namespace kozor::posix {

namespace {

std::atomic<bool> caseSensitive{false};

struct CloseDirectory {
  void operator()(DIR* directory) const { ::closedir(directory); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

bool IsAscii(std::string_view name) {
  return std::all_of(name.begin(), name.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::u16string SearchKey(std::string_view name) {
  return caseSensitive ? ExactKey(name) : CaseKey(name);
}

// A name to look for, prepared for being compared with many.
class Wanted {
 public:
  explicit Wanted(const std::string& name)
      : key(SearchKey(name)), length(name.size()), ascii(IsAscii(name)) {}

  // Whether any other name can count as this one.
  bool MayHaveOtherSpelling() const {
    return !caseSensitive || (ActiveCodePage() == text::kCodePage932 && !ascii);
  }

  // No character beyond ASCII counts as one of ASCII, so that most names can be told by their
  // length.
  bool Equals(std::string_view candidate) const {
    if (ascii && candidate.size() != length) return false;
    if (!ascii) return !IsAscii(candidate) && SearchKey(candidate) == key;
    for (std::size_t i = 0; i < length; ++i) {
      if (text::ToUpper(static_cast<unsigned char>(candidate[i])) != key[i]) return false;
    }
    return true;
  }

  const std::u16string& Key() const { return key; }

 private:
  std::u16string key;
  std::size_t length;  // bytes
  bool ascii;
};

template <typename Action>
void ForEachName(DIR* directory, Action action) {
  while (const dirent* const entry = ::readdir(directory)) action(std::string_view(entry->d_name));
}

// Directories with fewer entries than this are read anew each time.
constexpr std::size_t kLarge = 256;
// How long to believe a directory's time stamp.  Hosts keep it in steps of some milliseconds, so
// that a name which another program makes in the very step of ours can stay unseen for this long.
constexpr std::chrono::seconds kBelieveFor{1};

using Clock = std::chrono::steady_clock;

// The names of one large directory by key.
struct Remembered {
  std::string directory;  // host path; empty if there is none
  FileId id{};
  timespec changed{};
  Clock::time_point readAt;
  UINT codePage = 0;
  bool exact = false;
  bool hasDoubles = false;  // several names with one key, of which `names` has the first
  std::unordered_map<std::u16string, std::string> names;

  void Add(std::string_view name) {
    std::string& place = names[exact ? ExactKey(name) : CaseKey(name)];
    hasDoubles = hasDoubles || (!place.empty() && place != name);
    if (place.empty() || name < place) place = name;
  }

  // Whether this is what is in the directory now.
  bool IsGood(const std::string& hostDirectory) const {
    FileFacts facts;
    return directory == hostDirectory && codePage == ActiveCodePage() && exact == caseSensitive &&
           Clock::now() - readAt < kBelieveFor &&
           ReadFacts(AT_FDCWD, hostDirectory.c_str(), facts) && facts.id == id &&
           facts.changed.tv_sec == changed.tv_sec && facts.changed.tv_nsec == changed.tv_nsec;
  }

  // The facts must have been read before the directory is.
  void Read(const std::string& hostDirectory, const FileFacts& facts, DIR* stream) {
    *this = {hostDirectory,    facts.id,      facts.changed, Clock::now(),
             ActiveCodePage(), caseSensitive, false,         {}};
    ::rewinddir(stream);
    ForEachName(stream, [&](std::string_view name) { Add(name); });
  }
};

thread_local Remembered remembered;

std::optional<std::string> FindRemembered(const Wanted& wanted) {
  const auto found = remembered.names.find(wanted.Key());
  if (found == remembered.names.end()) return std::nullopt;
  return found->second;
}

}  // namespace

std::optional<std::string> FindOtherSpelling(const std::string& hostDirectory,
                                             const std::string& name) {
  const Wanted wanted(name);
  if (!wanted.MayHaveOtherSpelling()) return std::nullopt;
  if (remembered.IsGood(hostDirectory)) return FindRemembered(wanted);
  FileFacts facts;
  if (!ReadFacts(AT_FDCWD, hostDirectory.c_str(), facts)) return std::nullopt;
  const Directory directory(::opendir(hostDirectory.c_str()));
  if (!directory) return std::nullopt;
  std::optional<std::string> best;
  std::size_t count = 0;
  ForEachName(directory.get(), [&](std::string_view candidate) {
    ++count;
    if (wanted.Equals(candidate) && (!best || candidate < *best)) best = candidate;
  });
  if (count >= kLarge) remembered.Read(hostDirectory, facts, directory.get());
  return best;
}

DirectoryChange::DirectoryChange(const std::string& hostPath) {
  const std::size_t slash = hostPath.rfind('/');
  known = slash != std::string::npos && !remembered.directory.empty() &&
          hostPath.compare(0, slash, remembered.directory) == 0 &&
          remembered.IsGood(remembered.directory);
  if (known) name = hostPath.substr(slash + 1);
}

void DirectoryChange::Added() {
  if (known) remembered.Add(name);
  Keep();
}

void DirectoryChange::Removed() {
  if (known && remembered.hasDoubles) {
    remembered.directory.clear();
    known = false;
  }
  if (known) remembered.names.erase(SearchKey(name));
  Keep();
}

void DirectoryChange::Keep() {
  FileFacts facts;
  if (known && ReadFacts(AT_FDCWD, remembered.directory.c_str(), facts)) {
    remembered.changed = facts.changed;
  }
}

bool SetCaseSensitive(bool on) {
  return caseSensitive.exchange(on);
}

}  // namespace kozor::posix

int KzSetCaseSensitive(int on) {
  return kozor::posix::SetCaseSensitive(on != 0) ? 1 : 0;
}
