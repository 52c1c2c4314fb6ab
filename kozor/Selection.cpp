// Selection.cpp - see Selection.h.
#include "Selection.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <iterator>
#include <map>
#include <set>
#include <string_view>
#include <unordered_set>

#include "Console.h"
#include "Failure.h"
#include "Host.h"
#include "HostFiles.h"
#include "platform/text/Path.h"

namespace kozor::program {

namespace fs = std::filesystem;

namespace {

// Names that the library takes for the same if there are several masks.
struct IgnoringCase {
  bool operator()(const CString& a, const CString& b) const { return a.CompareNoCase(b) < 0; }
};
using CaseBlindNames = std::set<CString, IgnoringCase>;

// A member's header and a record of a backup set both hold 32-bit sizes.
constexpr std::uintmax_t kMaxFileBytes = 0xFFFFFFFF;
// The longest name that the archiver can list, in bytes.
constexpr std::size_t kMaxNameBytes = 512;

// The search for one word: `mask` in `directory`, with or without the folders below.
struct Search {
  std::string directory;  // library path
  std::string mask;
  bool recursive;
  bool meansDirectory = false;  // the word is the directory's own name
};

// Only the root ("C:\") ends with a backslash, but the prefix cut off from names always does.
std::string WithBackslash(std::string path) {
  if (!path.ends_with('\\')) path += '\\';
  return path;
}

Search ReadWord(const fs::path& base, const std::string& word, LinkRule links) {
  const fs::path path = AbsolutePathIn(base, word);
  if (!word.empty() && Exists(path)) {
    const bool isKeptLink = links == LinkRule::Kept && !word.ends_with('/') && IsLink(path);
    const FileState state = isKeptLink ? FileState() : Inspect(path);
    if (!state.problem.empty()) throw Failure(Visible(word) + ": " + state.problem);
    const std::string libraryPath = LibraryPath(path);
    if (state.isDirectory) return {libraryPath, "*.*", true, true};
    const text::Path pieces(libraryPath);
    return {std::string(pieces.Folder()), std::string(pieces.FileName()), false};
  }
  if (!HasWildcards(word)) throw Failure(Visible(word) + ": no such file or directory");
  const fs::path directory = AbsolutePathIn(base, Shown(FromUtf8(word).parent_path()));
  if (HasWildcards(directory.string())) {
    throw Failure(Visible(word) + ": * and ? are allowed in the last component of a path only");
  }
  if (!IsDirectory(directory)) {
    throw Failure(Visible(directory.string()) + ": no such directory");
  }
  // Both forms match every name; with this one the library reads each directory only once.
  const std::string mask = FromUtf8(word).filename().string();
  return {LibraryPath(directory), mask == "*" ? "*.*" : mask, true};
}

// Everything that the search finds, as complete library paths.  With a single mask, nothing is
// skipped.  `isWhole` tells whether every folder could be read to its end.
std::vector<std::string> Find(const Search& search, unsigned int attributes, bool& isWhole) {
  ZorFind find;
  find.SetCurrentDirectoryA(search.directory.c_str());
  find.SetSubDirectory(search.recursive ? 1 : 0);
  find.SetAttribute(attributes);
  find.AddTail(search.mask.c_str());
  ZorFileList list;
  find.Find(list, 1);
  isWhole = GetLastError() == NO_ERROR;
  std::vector<std::string> names;
  names.reserve(static_cast<std::size_t>(list.GetCount()));
  for (POSITION at = list.GetHeadPosition(); at != nullptr;) {
    names.emplace_back(static_cast<const char*>(list.GetNext(at)));
  }
  return names;
}

// The library shows "?" in a name that it can't express.
bool IsUnnameable(const std::string& name) {
  return name.find('?') != std::string::npos;
}

// The place of a file on the host.  Files of one folder come in succession, so the folder is
// converted and opened only once.
class HostPlace {
 public:
  void GoTo(const std::string& libraryPath) {
    const text::Path pieces(libraryPath);
    if (pieces.Folder() != libraryFolder) {
      libraryFolder = pieces.Folder();
      path = HostPath(libraryFolder) / "";
      folder = OpenDirectory(path);
    }
    path.replace_filename(HostName(std::string(pieces.FileName())));
  }
  const fs::path& Path() const { return path; }
  FileState Inspect() const { return program::Inspect(path, folder.Number()); }
  std::optional<FileVersion> Version() const { return VersionOf(path, folder.Number()); }

 private:
  std::string libraryFolder;
  fs::path path;
  Descriptor folder;  // not open if it can't be
};

// Collects the files of one group, word by word.
class Collector {
 public:
  Collector(const SelectionRequest& wanted, const MaskList& leaveOut, const std::string& base)
      : request(wanted), excludes(leaveOut), prefix(WithBackslash(base)) {
    group.base = base;
  }

  bool Covers(const Search& search) const {
    return WithBackslash(search.directory).starts_with(prefix);
  }

  // Returns how many files and directories the search found.
  std::size_t Add(const Search& search) {
    constexpr unsigned int kAll = 0x37;
    bool isWhole = false;
    remembers = request.words.size() > 1 || search.mask != "*.*";
    const int complaints = Complaints();
    const std::vector<std::string> paths = Find(search, kAll, isWhole);
    if (search.meansDirectory) TakeDirectoryItself(search.directory);
    for (const std::string& path : paths) Take(path);
    if (search.recursive && search.mask != "*.*") CheckDirectories(search);
    if (!isWhole) ++unread;
    if (!isWhole && Complaints() == complaints) {
      ++leftOut;
      Complain(VisibleLibraryName(search.directory.substr(2)) +
               ": files were left out: a directory can't be read to its end");
    }
    const std::string folder = WithBackslash(search.directory).substr(prefix.size());
    group.wholeMask = searches++ == 0 && search.recursive ? folder + search.mask : "";
    StopIfAsked();
    return paths.size() + (search.meansDirectory && request.takesFolders ? 1 : 0);
  }

  std::size_t LeftOut() const { return leftOut; }
  std::size_t UpToDate() const { return upToDate; }
  std::size_t Unread() const { return unread; }

  // Returns the collected group.
  FileGroup Finish() {
    if (leftOut > 0) group.wholeMask.clear();
    return std::move(group);
  }

 private:
  // One search of everything finds each name once.
  bool IsNew(const std::string& name) { return !remembers || seen.insert(name).second; }

  void Take(const std::string& path) {
    const std::string name = path.substr(prefix.size());
    if (!IsNew(name)) return;
    if (excludes.Means(name)) {
      ++leftOut;
      return;
    }
    if (IsUnnameable(name)) return LeaveOutUnnameable(path);
    place.GoTo(path);
    const FileState state = place.Inspect();
    const bool isLink = request.links != LinkRule::Followed && state.isLink;
    if (isLink && request.links == LinkRule::Kept) return TakeLink(path, name);
    if (isLink) group.links.push_back(name);
    // NOLINTNEXTLINE(bugprone-branch-clone): a row for each case, in their order
    if (isLink && state.leadsNowhere) {
      ++leftOut;
    } else if (!state.problem.empty()) {
      LeaveOutBad(path, state);
    } else if (state.isDirectory) {
      if (!isLink) TakeFolder(name);
    } else if (request.isOwnFile && request.isOwnFile(place.Path(), state)) {
      ++leftOut;
    } else if (state.version.size > kMaxFileBytes) {
      LeaveOut(path, "files of 4 GiB or more can't be stored");
    } else if (name.size() > kMaxNameBytes) {
      LeaveOut(path, "the name is too long");
    } else if (request.isUpToDate && request.isUpToDate(name, state)) {
      ++leftOut;
      ++upToDate;
    } else {
      group.bytes += state.version.size;
      group.names.push_back(name);
      group.modes.push_back(state.mode);
      group.versions.push_back(state.version);
    }
  }

  // Counts the link, which is at `place`, as left out of the files, so that they aren't selected by
  // the mask.
  void TakeLink(const std::string& path, const std::string& name) {
    ++leftOut;
    if (name.size() > kMaxNameBytes) return LeaveOut(path, "the name is too long");
    LinkState link;
    try {
      link = InspectLink(place.Path());
    } catch (const FileFailure& failure) {
      ++unread;
      return LeaveOut(path, failure.what());
    }
    FileState state;
    state.time = link.time;
    if (request.isUpToDate && request.isUpToDate(name, state)) {
      ++upToDate;
    } else if (link.target.find_first_of("\\:*?\"<>|") != std::string::npos) {
      LeaveOut(path, "the link's target contains a character that can't be stored");
    } else {
      group.links.push_back(name);
    }
  }

  // A directory that is named by a word and contained in the base directory.
  void TakeDirectoryItself(const std::string& directory) {
    if (directory.size() <= prefix.size()) return;
    const std::string name = directory.substr(prefix.size());
    if (!excludes.Means(name) && IsNew(name)) TakeFolder(name);
  }

  void TakeFolder(const std::string& name) {
    if (request.isUpToDate && request.isUpToDate(name + '\\', {})) {
      ++upToDate;
    } else {
      group.folders.push_back(name);
    }
  }

  // No mask finds the files in a directory that can't be read.  Reports such directories; only the
  // mask "*.*" finds them.
  void CheckDirectories(const Search& search) {
    bool ignored = false;  // a folder that can't be read is named below
    for (const std::string& path : Find({search.directory, "*.*", true}, 0x10, ignored)) {
      const std::string name = path.substr(prefix.size());
      if (seen.contains(name) || excludes.Means(name)) continue;
      if (IsUnnameable(name)) {
        LeaveOutUnnameable(path);
        continue;
      }
      const FileState state = Inspect(HostPath(path));
      if (state.isDirectory && !state.problem.empty()) LeaveOutBad(path, state);
    }
  }

  // Names that differ only in such characters look the same in the library, so the real names are
  // read from the host.
  void LeaveOutUnnameable(const std::string& path) {
    const text::Path pieces(path);
    const Mask shown(std::string(pieces.FileName()));
    const fs::path folder = HostPath(std::string(pieces.Folder()));
    const Descriptor opened = OpenDirectory(folder);
    if (!opened.IsOpen()) return LeaveOut(path, kUnnameable);
    for (const std::string& name : NamesIn(opened.Number())) {
      // A file that can't be found by its name as text has one that isn't text.
      const fs::path real = folder / FromUtf8(name);
      if (!shown.MeansItself(name) || (CanBeExpressed(real) && Exists(real))) continue;
      if (!unnameable.insert(real.native()).second) continue;
      ++leftOut;
      Complain(Visible(Shown(real)) + ": left out: " + kUnnameable);
    }
  }

  void LeaveOutBad(const std::string& path, const FileState& state) {
    if (state.isRefused) ++unread;
    LeaveOut(path, state.problem);
  }

  void LeaveOut(const std::string& path, const std::string& why) {
    ++leftOut;
    Complain(Visible(HostPath(path).string()) + ": left out: " + why);
  }

  const SelectionRequest& request;
  const MaskList& excludes;
  const std::string prefix;
  FileGroup group;
  bool remembers = true;
  std::unordered_set<std::string> seen;

  HostPlace place;
  std::set<fs::path::string_type> unnameable;  // host paths
  std::size_t leftOut = 0;
  std::size_t upToDate = 0;  // of those
  std::size_t unread = 0;    // could be stored if they could be read
  std::size_t searches = 0;
};

// During its lifetime searches treat links as a request demands.
class LinkManner {
 public:
  explicit LinkManner(LinkRule links) { FollowLinks(links != LinkRule::Kept); }
  ~LinkManner() { FollowLinks(true); }
  LinkManner(const LinkManner&) = delete;
  LinkManner& operator=(const LinkManner&) = delete;
};

void RefuseCommonNames(const std::vector<FileGroup>& groups) {
  if (groups.size() < 2) return;
  std::unordered_set<std::string_view> names;
  for (const FileGroup& group : groups) {
    for (const std::string& name : group.names) {
      if (names.insert(name).second) continue;
      throw Failure(VisibleLibraryName(name) + ": two files would be stored by this name");
    }
  }
}

}  // namespace

ZorFind FileGroup::Find(std::vector<std::string>& others) const {
  ZorFind find;
  find.SetCurrentDirectoryA(base.c_str());
  find.SetSubDirectory(wholeMask.empty() ? 0 : 1);
  if (!wholeMask.empty()) {
    find.AddTail(wholeMask.c_str());
    return find;
  }
  CaseBlindNames selected;
  for (const std::string& name : names) {
    if (selected.insert(name.c_str()).second) {
      find.AddTail(name.c_str());
    } else {
      others.push_back(name);
    }
  }
  return find;
}

std::vector<FileGroup> Select(const SelectionRequest& request) {
  if (!IsDirectory(request.base)) {
    throw Failure(Visible(Shown(request.base)) + ": no such directory");
  }
  const LinkManner manner(request.links);
  const MaskList excludes(request.excludes);
  // The first one is for the base, the others for the roots of the disks that other words lead to.
  std::deque<Collector> collectors;
  collectors.emplace_back(request, excludes, LibraryPath(request.base));
  for (const std::string& word : request.words) {
    const Search search = ReadWord(request.base, word, request.links);
    const auto covers = [&](const Collector& collector) { return collector.Covers(search); };
    auto collector = std::find_if(collectors.begin(), collectors.end(), covers);
    if (collector == collectors.end()) {
      const std::string root(text::Path(search.directory).Root());
      collectors.emplace_back(request, excludes, WithBackslash(root));
      collector = std::prev(collectors.end());
    }
    if (collector->Add(search) == 0) throw Failure(Visible(word) + ": nothing matches");
  }
  const bool isWhole = std::all_of(collectors.begin(), collectors.end(),
                                   [](const Collector& each) { return each.Unread() == 0; });
  if (!isWhole && !request.refusal.empty()) throw Failure(request.refusal);
  std::vector<FileGroup> groups;
  std::size_t upToDate = 0;
  for (Collector& collector : collectors) {
    upToDate += collector.UpToDate();
    FileGroup group = collector.Finish();
    const bool isWanted = request.takesFolders ? !group.IsEmpty() : !group.names.empty();
    if (isWanted) groups.push_back(std::move(group));
  }
  if (groups.empty() && upToDate == 0) throw Failure("there is nothing to store");
  RefuseCommonNames(groups);
  return groups;
}

void ReportChangedFiles(const FileGroup& group) {
  const std::string prefix = WithBackslash(group.base);
  HostPlace place;
  for (std::size_t i = 0; i < group.names.size(); ++i) {
    place.GoTo(prefix + group.names[i]);
    const auto version = place.Version();
    if (!version || *version == group.versions[i]) continue;
    Complain(VisibleLibraryName(group.names[i]) +
             ": was written to during the run; what is stored may be half old, half new");
  }
}

}  // namespace kozor::program
