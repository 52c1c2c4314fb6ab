// SourceSelection.cpp - see SourceSelection.h.
#include "engine/commands/SourceSelection.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <set>
#include <unordered_map>
#include <utility>

#include "engine/commands/MemberPacker.h"
#include "engine/container/Failure.h"
#include "engine/container/File.h"
#include "engine/container/MemberName.h"
#include "engine/container/Path.h"
#include "platform/base/ByteOrder.h"
#include "platform/text/WildCard.h"
#include "platform/win32/HostRules.h"
#include "platform/win32/Win32.h"

namespace kozor::commands {
namespace {

using container::Failure;
using container::FileStamp;
using container::PathFrom;
using container::PathOf;
using container::ResultCode;

// A directory search, closed by the destructor.
class DirectorySearch {
 public:
  explicit DirectorySearch(const std::string& mask) : find(FindFirstFileA(mask.c_str(), &entry)) {}
  ~DirectorySearch() {
    if (find != INVALID_HANDLE_VALUE) FindClose(find);
  }
  DirectorySearch(const DirectorySearch&) = delete;
  DirectorySearch& operator=(const DirectorySearch&) = delete;

  // Calls `take` for each entry but "." and "..".  Returns false if nothing matches.
  bool ForEach(const std::function<void(const WIN32_FIND_DATAA& entry)>& take) {
    if (find == INVALID_HANDLE_VALUE) {
      const DWORD error = GetLastError();
      if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return false;
      throw Failure(ResultCode::CannotRead);
    }
    do {
      const std::string_view name = entry.cFileName;
      if (name != "." && name != "..") take(entry);
    } while (KzFindNextFile(find, &entry));
    if (GetLastError() != ERROR_NO_MORE_FILES) throw Failure(ResultCode::CannotRead);
    return true;
  }

 private:
  WIN32_FIND_DATAA entry;
  HANDLE find;
};

bool IsDirectory(DWORD attributes) {
  return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// For WIN32_FIND_DATAA and WIN32_FILE_ATTRIBUTE_DATA.
template <typename Data>
std::uint64_t SizeOf(const Data& data) {
  return JoinHalves(data.nFileSizeHigh, data.nFileSizeLow);
}

FileStamp StampOf(const std::string& path) {
  const auto stamp = container::FindStamp(path);
  if (!stamp) throw Failure(SourceFailureCode());
  return *stamp;
}

// Recognises the archive of the command line, which is never put into itself.
class ArchiveItself {
 public:
  ArchiveItself(const std::string& archivePath, unsigned int codePage)
      : path(archivePath), workingPage(codePage), stamp(container::FindStamp(archivePath)) {}

  // Comparing sizes first avoids reading the identity of almost every file.
  bool Is(const std::string& file, std::uint64_t size) const {
    return stamp && stamp->size == size && stamp->IsSameFile(StampOf(file));
  }

  // Whether a path without a file was that of the archive before it was removed.
  bool WasAt(const std::string& file) const {
    if (NameKey(file) != NameKey(path)) return false;
    const auto directory = container::FindStamp(DirectoryPath(path));
    const auto other = container::FindStamp(DirectoryPath(file));
    return directory && other && directory->IsSameFile(*other);
  }

 private:
  std::u16string NameKey(const std::string& file) const {
    return container::KeyOf(PathOf(file).FileName(), workingPage);
  }
  static std::string DirectoryPath(const std::string& file) {
    const std::string directory = container::FolderOf(file);
    return directory.empty() ? "." : directory;
  }

  const std::string path;
  const unsigned int workingPage;
  const std::optional<FileStamp> stamp;
};

// Whether a name is the file's own, and not found only because look-ups ignore case.
bool IsHardLink(const Source& source) {
  container::File file;
  return KzCreatesExactly() && file.Open(source.path, container::File::Mode::Facts) &&
         file.FinalPath().ends_with(source.name);
}

class Selection {
 public:
  Selection(const CommandLine& line, unsigned int codePage)
      : workingPage(codePage),
        keepsUnixFacts(line.packing.keepsUnixFacts),
        archiveItself(line.archive, codePage) {}

  void AddName(const std::string& base, const std::string& name) {
    if (text::HasWildCards(name)) throw Failure(ResultCode::FileNotOpened);
    const std::string path = PathFrom(base, name);
    WIN32_FILE_ATTRIBUTE_DATA facts;
    if (!GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &facts)) {
      const ResultCode code = SourceFailureCode();
      if (code == ResultCode::NotFound && archiveItself.WasAt(path)) return;
      throw Failure(code);
    }
    if (IsKeptLink(facts.dwFileAttributes)) return AddLink(name, path);
    if (IsDirectory(facts.dwFileAttributes)) {
      if (!PathOf(name).IsFolder()) throw Failure(ResultCode::UnknownKind);
      return AddDirectory(name, path);
    }
    AddFile(name, path, SizeOf(facts));
  }

  void AddMatches(const std::string& base, const std::string& mask) {
    const std::string directory = container::FolderOf(mask);
    const bool isAnyFound =
        DirectorySearch(PathFrom(base, mask)).ForEach([&](const WIN32_FIND_DATAA& entry) {
          if (!IsDirectory(entry.dwFileAttributes)) AddName(base, directory + entry.cFileName);
        });
    if (!isAnyFound) throw Failure(ResultCode::NotFound);
  }

  // Adds the files and directories below a directory; names are relative to `top`.  The limit on
  // the length of a name also limits the depth.
  void AddTree(const std::string& top, const std::string& below = {}) {
    const std::string directory = top + below;
    const FileStamp stamp = StampOf(directory);
    const bool isCycle = std::any_of(walked.begin(), walked.end(), [&](const FileStamp& other) {
      return other.IsSameFile(stamp);
    });
    if (isCycle) return;
    walked.push_back(stamp);
    DirectorySearch(directory + '*').ForEach([&](const WIN32_FIND_DATAA& entry) {
      const std::string name = below + entry.cFileName;
      if (IsKeptLink(entry.dwFileAttributes)) {
        AddLink(name, top + name);
      } else if (IsDirectory(entry.dwFileAttributes)) {
        AddDirectory(name, top + name);
        AddTree(top, name + '\\');
      } else {
        AddFile(name, top + name, SizeOf(entry));
      }
    });
    walked.pop_back();
  }

  void AddListed(const std::string& list) {
    std::string base;
    for (const std::string& name : ReadResponseFile(list)) {
      if (PathOf(name).IsRooted() && PathOf(name).IsFolder()) {
        base = name;
      } else {
        AddName(base, name);
      }
    }
  }

  std::vector<Source> Finish() {
    DropRepeated();
    return std::move(sources);
  }

 private:
  std::string StoredName(const std::string& given) const {
    std::string name = container::StoredNameOf(given, workingPage);
    if (name.empty()) throw Failure(ResultCode::FileNotOpened);
    if (name.size() > container::kMaxShownBytes) throw Failure(ResultCode::NameTooLong);
    return name;
  }

  bool IsKeptLink(DWORD attributes) const {
    return keepsUnixFacts && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
  }

  void AddLink(const std::string& given, const std::string& path) {
    sources.push_back({path, StoredName(given), SourceKind::Link});
  }

  void AddDirectory(const std::string& given, const std::string& path) {
    sources.push_back({path, StoredName(given) + '\\', SourceKind::Directory});
  }

  void AddFile(const std::string& given, const std::string& path, std::uint64_t size) {
    std::string name = StoredName(given);
    if (archiveItself.Is(path, size)) return;
    if (size > kMaxMemberBytes) throw Failure(ResultCode::UnknownKind);
    sources.push_back({path, std::move(name), SourceKind::File});
  }

  // Names that differ only in case; they may refer to one file.
  struct Alike {
    std::set<std::pair<std::uint32_t, std::uint64_t>> files;  // by volume and identity
    std::set<std::string_view> names;

    // Returns false for a file already entered.
    bool Enter(const Source& source) {
      if (source.kind == SourceKind::Link) return names.insert(source.name).second;
      const FileStamp stamp = StampOf(source.path);
      const bool isKnown = !files.emplace(stamp.volume, stamp.identity).second;
      if (isKnown && !IsHardLink(source)) return false;
      if (names.insert(source.name).second) return true;
      if (!isKnown) throw Failure(ResultCode::SameName);
      return false;
    }
  };

  // Reads file identities only for names that are alike.
  void DropRepeated() {
    std::unordered_map<std::u16string, const Source*> firstByKey;
    std::unordered_map<const Source*, Alike> alikeByFirst;
    std::vector<Source> once;
    once.reserve(sources.size());  // pointers into it stay valid
    for (Source& source : sources) {
      const auto [first, isFirst] =
          firstByKey.try_emplace(container::KeyOf(source.name, workingPage), &source);
      once.push_back(std::move(source));
      if (isFirst) {
        first->second = &once.back();
        continue;
      }
      Alike& alike = alikeByFirst[first->second];
      if (alike.files.empty()) alike.Enter(*first->second);
      if (!alike.Enter(once.back())) once.pop_back();
    }
    sources = std::move(once);
  }

  const unsigned int workingPage;
  const bool keepsUnixFacts;
  const ArchiveItself archiveItself;
  std::vector<Source> sources;
  std::vector<FileStamp> walked;  // directories from the top of a tree to the current one
};

// A word that begins with '@' is a response file unless a file of exactly that name exists.
bool IsResponseFile(const std::string& base, const std::string& word) {
  const std::string asFile = PathFrom(base, word);
  return word.starts_with('@') && GetFileAttributesA(asFile.c_str()) == INVALID_FILE_ATTRIBUTES;
}

// Replaces words for response files by the names in those files.
std::vector<Operand> ExpandResponseFiles(const std::string& base, std::vector<Operand> words) {
  std::vector<Operand> names;
  for (Operand& word : words) {
    if (!IsResponseFile(base, word.text)) {
      names.push_back(std::move(word));
      continue;
    }
    for (std::string& name : ReadResponseFile(word.text.substr(1))) {
      names.push_back({std::move(name), true});
    }
  }
  return names;
}

void SelectNames(std::vector<Operand> words, Selection& selection) {
  std::string base;
  if (!words.empty() && PathOf(words.front().text).IsFolder()) {
    base = words.front().text;
    words.erase(words.begin());
  }
  const std::vector<Operand> names = ExpandResponseFiles(base, std::move(words));
  if (names.empty()) throw Failure(ResultCode::NoFileName);
  for (const Operand& name : names) {
    const bool isMask = !name.isQuoted && text::HasWildCards(name.text);
    isMask ? selection.AddMatches(base, name.text) : selection.AddName(base, name.text);
  }
}

void SelectTrees(const std::vector<Operand>& directories, Selection& selection) {
  for (const Operand& operand : directories) {
    const std::string& directory = operand.text;
    const DWORD attributes = GetFileAttributesA(directory.c_str());
    const bool isThere = attributes != INVALID_FILE_ATTRIBUTES && IsDirectory(attributes);
    if (!isThere) throw Failure(ResultCode::NotFound);
    selection.AddTree(PathOf(directory).AsFolder());
  }
}

}  // namespace

ResultCode SourceFailureCode() {
  const DWORD error = GetLastError();
  const bool isGone = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
  return isGone ? ResultCode::NotFound : ResultCode::FileNotOpened;
}

std::vector<Source> SelectSources(const CommandLine& line) {
  std::vector<Operand> words = line.operands;
  std::erase_if(words, [](const Operand& word) { return word.text.empty(); });
  if (words.empty() && line.nameList.empty()) throw Failure(ResultCode::NoFileName);
  Selection selection(line, GetACP());
  if (line.isDirectoryMode) {
    SelectTrees(words, selection);
  } else if (!words.empty()) {
    SelectNames(std::move(words), selection);
  }
  if (!line.nameList.empty()) selection.AddListed(PathFrom(line.workDirectory, line.nameList));
  return selection.Finish();
}

}  // namespace kozor::commands
