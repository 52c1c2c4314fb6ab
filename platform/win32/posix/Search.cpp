// Search.cpp - FindFirstFileA and related calls.
//
// A search reads its directory once and keeps the matching names in order.  The metadata of an
// entry is read only when the entry is returned, and only if more than its name is wanted.
#include <dirent.h>
#include <fcntl.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <optional>
#include <vector>

#include "platform/text/WildCard.h"
#include "platform/win32/HostRules.h"
#include "platform/win32/PosixAdmin.h"
#include "platform/win32/posix/Attributes.h"
#include "platform/win32/posix/HandleTable.h"
#include "platform/win32/posix/HostNames.h"
#include "platform/win32/posix/LookUp.h"
#include "platform/win32/posix/SystemCalls.h"

namespace {

using namespace kozor::posix;
using kozor::text::WildCard;

std::atomic<bool> followsLinks{true};

// The metadata that a search reports for an entry.
Metadata Told(Metadata metadata) {
  if (metadata.link && !followsLinks) {
    metadata.mode = S_IFLNK;
    metadata.dangling = true;
  }
  return metadata;
}

struct Entry {
  std::string hostName;
  std::u16string key;
  unsigned char type;  // DT_*, used if the metadata can't be read
};

// The order of the usual Windows file system; names that differ only in case are ordered by bytes.
bool ComesBefore(const Entry& a, const Entry& b) {
  const int order = a.key.compare(b.key);
  return order != 0 ? order < 0 : a.hostName < b.hostName;
}

void SetName(WIN32_FIND_DATAA& data, const std::string& libraryName) {
  std::memcpy(data.cFileName, libraryName.c_str(), libraryName.size() + 1);
}

void FillData(WIN32_FIND_DATAA& data, const Metadata& metadata, DWORD attributes,
              const std::string& libraryName) {
  data = {};
  FillMetadata(data, metadata, attributes);
  SetName(data, libraryName);
}

// The name to list.  If the code page can't distinguish two files of a directory, only the one that
// the name opens is listed by it.
std::string ListedName(int directory, const std::string& hostName) {
  std::string libraryName;
  std::string opened;
  Metadata ignored;
  if (ToLibraryName(hostName, libraryName) && ToHostName(libraryName, opened) &&
      opened != hostName && ReadMetadata(directory, opened.c_str(), ignored)) {
    ToStrictLibraryName(hostName, libraryName);
  }
  return libraryName;
}

// What a search tells about its entries.
enum class Wanted { Everything, Names };

// A link or an entry of unknown type may be a directory.
bool MayBeDirectory(unsigned char type) {
  return type == DT_DIR || type == DT_LNK || type == DT_UNKNOWN;
}

class Search : public Object {
 public:
  // A search without further entries.
  Search() = default;
  // The entries of an open directory stream that match.
  Search(DIR* stream, std::string hostDirectory, const WildCard& mask, bool withDots,
         FINDEX_SEARCH_OPS operation, Wanted wantedFacts)
      : directory(stream), host(std::move(hostDirectory)), wanted(wantedFacts) {
    if (!host.ends_with('/')) host += '/';
    while (const dirent* const entry = ReadEntry()) {
      if (operation == FindExSearchLimitToDirectories && !MayBeDirectory(entry->d_type)) continue;
      const std::string_view name = entry->d_name;
      const bool dots = name == "." || name == "..";
      std::u16string key = CaseKey(name);
      if ((dots && !withDots) || !mask.Matches(key)) continue;
      // Sort the dots before any other name.
      if (dots) key.insert(0, 1, u'\0');
      entries.push_back({std::string(name), std::move(key), entry->d_type});
    }
    std::sort(entries.begin(), entries.end(), ComesBefore);
  }
  ~Search() override {
    if (directory != nullptr) ::closedir(directory);
  }

  // Returns the next entry that still exists; false at the end.
  bool Next(WIN32_FIND_DATAA& data) {
    while (next < entries.size()) {
      if (Describe(entries[next++], data)) return true;
    }
    return false;
  }

  // ERROR_SUCCESS unless the directory could not be read to its end.
  DWORD ReadError() const { return readError; }

 private:
  const dirent* ReadEntry() {
    errno = 0;
    const dirent* const entry = Calls().readdir(directory);
    if (entry == nullptr) readError = ErrorFromErrno(errno);
    return entry;
  }

  bool Describe(const Entry& entry, WIN32_FIND_DATAA& data) {
    const bool needsLook = entry.type == DT_LNK || entry.type == DT_UNKNOWN;
    if (wanted == Wanted::Everything || needsLook) return Look(entry, data);
    const bool isDirectory = entry.type == DT_DIR;
    data.dwFileAttributes = isDirectory ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
    SetName(data, ListedName(::dirfd(directory), entry.hostName));
    return true;
  }

  bool Look(const Entry& entry, WIN32_FIND_DATAA& data) {
    Metadata metadata;
    DWORD attributes = 0;
    const bool isKnown = ReadMetadata(::dirfd(directory), entry.hostName.c_str(), metadata);
    if (!isKnown && errno == ENOENT) return false;
    // What a link leads to may be a directory, which nobody will look into now.
    const bool leadsNowhere = errno == ENOENT || errno == ENOTDIR || errno == ELOOP;
    const bool isUnread = isKnown ? metadata.dangling && !leadsNowhere : entry.type == DT_LNK;
    if (isUnread && followsLinks) readError = ErrorFromErrno(errno);
    if (isKnown) {
      metadata = Told(metadata);
      attributes = AttributesOf(metadata, entry.hostName, (host + entry.hostName).c_str());
    } else {
      // The directory may be read but not searched: the entry's name is all that is known.
      metadata.mode = entry.type == DT_DIR ? S_IFDIR : S_IFREG;
      attributes = entry.type == DT_DIR ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE;
    }
    FillData(data, metadata, attributes, ListedName(::dirfd(directory), entry.hostName));
    return true;
  }

  DIR* directory = nullptr;
  std::string host;  // of the directory, with a trailing '/'
  Wanted wanted = Wanted::Everything;
  std::vector<Entry> entries;
  std::size_t next = 0;
  DWORD readError = ERROR_SUCCESS;
};

std::shared_ptr<Search> Refuse(DWORD error) {
  SetLastError(error);
  return nullptr;
}

// A name without wild-cards is looked up without reading its directory.
std::shared_ptr<Search> FindOne(LibraryPath& path, WIN32_FIND_DATAA& data) {
  if (path.trailingSeparator || path.IsRoot()) return Refuse(ERROR_FILE_NOT_FOUND);
  if (!MakeAbsolute(path)) return nullptr;
  const Found found = LookUp(path);
  if (!found.exists) return Refuse(found.error);
  std::string libraryName;
  ToLibraryName(found.HostName(), libraryName);
  const Metadata metadata = Told(found.metadata);
  FillData(data, metadata, AttributesOf(metadata, found.HostName(), found.host.c_str()),
           libraryName);
  return std::make_shared<Search>();
}

// Opens the directory of a search; null with the last error set.  `host` receives its host path.
DIR* OpenDirectory(const LibraryPath& path, std::string& host) {
  host = path.Host();
  if (DIR* const directory = Calls().opendir(host.c_str())) return directory;
  const Found found = LookUp(path);
  if (!found.exists || found.metadata.dangling) {
    SetLastError(found.error == ERROR_FILE_NOT_FOUND || found.exists ? ERROR_PATH_NOT_FOUND
                                                                     : found.error);
    return nullptr;
  }
  host = found.host;
  DIR* const directory = Calls().opendir(host.c_str());
  if (directory == nullptr) {
    SetLastError(found.metadata.IsDirectory() ? ErrorFromErrno(errno) : ERROR_DIRECTORY);
  }
  return directory;
}

std::shared_ptr<Search> FindMatching(const LibraryPath& path, FINDEX_SEARCH_OPS operation,
                                     Wanted wanted, WIN32_FIND_DATAA& data) {
  std::u16string mask;
  std::string host;
  if (!MaskKey(path.mask, mask)) return nullptr;
  DIR* const directory = OpenDirectory(path, host);
  if (directory == nullptr) return nullptr;
  // The root of a drive has no "." and "..".
  const bool withDots = !path.IsRoot() || path.share;
  auto search = std::make_shared<Search>(directory, std::move(host), WildCard(mask), withDots,
                                         operation, wanted);
  if (search->Next(data)) return search;
  return Refuse(search->ReadError() != ERROR_SUCCESS ? search->ReadError() : ERROR_FILE_NOT_FOUND);
}

HANDLE FindFirst(LPCSTR name, FINDEX_SEARCH_OPS operation, Wanted wanted, WIN32_FIND_DATAA& data) {
  std::optional<LibraryPath> path = ParsePath(name, PathUse::Search);
  if (!path) return INVALID_HANDLE_VALUE;
  auto search =
      path->mask.empty() ? FindOne(*path, data) : FindMatching(*path, operation, wanted, data);
  return search ? AddHandle(std::move(search)) : INVALID_HANDLE_VALUE;
}

}  // namespace

int KzSetSearchFollowsLinks(int on) {
  return followsLinks.exchange(on != 0) ? 1 : 0;
}

HANDLE WINAPI FindFirstFileA(LPCSTR name, LPWIN32_FIND_DATAA data) {
  return FindFirstFileExA(name, FindExInfoStandard, data, FindExSearchNameMatch, nullptr, 0);
}

HANDLE WINAPI FindFirstFileExA(LPCSTR name, FINDEX_INFO_LEVELS level, LPVOID record,
                               FINDEX_SEARCH_OPS operation, LPVOID filter, DWORD flags) {
  if (level != FindExInfoStandard || filter != nullptr || flags != 0) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return INVALID_HANDLE_VALUE;
  }
  return FindFirst(name, operation, Wanted::Everything, *static_cast<WIN32_FIND_DATAA*>(record));
}

HANDLE KzFindFirstName(const char* name, FINDEX_SEARCH_OPS operation, WIN32_FIND_DATAA* data) {
  return FindFirst(name, operation, Wanted::Names, *data);
}

BOOL WINAPI FindNextFileA(HANDLE find, LPWIN32_FIND_DATAA data) {
  const auto search = FindObject<Search>(find);
  if (!search) return FALSE;
  if (search->Next(*data)) return TRUE;
  return Fail(search->ReadError() != ERROR_SUCCESS ? search->ReadError() : ERROR_NO_MORE_FILES);
}

BOOL WINAPI FindClose(HANDLE find) {
  if (!FindObject<Search>(find)) return FALSE;
  return RemoveHandle(find) ? TRUE : Fail(ERROR_INVALID_HANDLE);
}
