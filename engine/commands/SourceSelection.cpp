// SourceSelection.cpp - see SourceSelection.h.
#include "engine/commands/SourceSelection.h"

#include <algorithm>
#include <functional>
#include <unordered_map>

#include "engine/commands/MemberPacker.h"
#include "engine/commands/ResponseFile.h"
#include "engine/container/Failure.h"
#include "engine/container/File.h"
#include "engine/container/MemberName.h"
#include "engine/container/TemporaryArchive.h"
#include "platform/win32/Win32.h"

namespace kozor::commands {
namespace {

using container::Failure;
using container::File;
using container::FileStamp;
using container::ResultCode;

bool EndsInSeparator(const std::string& path) {
  return !path.empty() && container::DirectoryOf(path) == path;
}

bool IsSeparator(char c) {
  return c == '\\' || c == '/';
}

bool HasRoot(const std::string& name) {
  return (!name.empty() && IsSeparator(name[0])) || (name.size() > 1 && name[1] == ':');
}

bool HasWildCard(const std::string& name) {
  return name.find_first_of("*?") != std::string::npos;
}

// Calls `take` for each entry that a search gives, but for "." and "..".  False when there is none
// at all.
bool ForEachEntry(const std::string& mask,
                  const std::function<void(const WIN32_FIND_DATAA& entry)>& take) {
  WIN32_FIND_DATAA entry;
  HANDLE find = FindFirstFileA(mask.c_str(), &entry);
  if (find == INVALID_HANDLE_VALUE) return false;
  struct Closer {
    HANDLE handle;
    ~Closer() { FindClose(handle); }
  } closer{find};
  do {
    const std::string_view name = entry.cFileName;
    if (name != "." && name != "..") take(entry);
  } while (FindNextFileA(find, &entry));
  return true;
}

bool IsDirectory(const WIN32_FIND_DATAA& entry) {
  return (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

FileStamp StampOf(const std::string& path) {
  File file;
  if (!file.Open(path, File::Mode::Facts)) throw Failure(ResultCode::FileNotOpened);
  return file.Facts().stamp;
}

class Selection {
 public:
  explicit Selection(unsigned int codePage) : workingPage(codePage) {}

  void AddName(const std::string& base, const std::string& name) {
    const std::string path = HasRoot(name) ? name : base + name;
    if (HasWildCard(name)) {
      AddMatches(base, name, path);
      return;
    }
    WIN32_FILE_ATTRIBUTE_DATA facts;
    if (!GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &facts)) {
      throw Failure(ResultCode::FileNotOpened);
    }
    const bool isDirectory = (facts.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (isDirectory || facts.nFileSizeHigh != 0) throw Failure(ResultCode::UnknownKind);
    AddFile(base, name, path);
  }

  // The files of a directory and of all below it, and the directories themselves; names are
  // relative to `top`.
  void AddTree(const std::string& top, const std::string& below = {}) {
    const std::string directory = top + below;
    const FileStamp stamp = StampOf(directory);
    const bool isCycle = std::any_of(walked.begin(), walked.end(), [&](const FileStamp& other) {
      return other.IsSameFile(stamp);
    });
    if (isCycle) return;
    walked.push_back(stamp);
    ForEachEntry(directory + '*', [&](const WIN32_FIND_DATAA& entry) {
      const std::string name = below + entry.cFileName;
      if (IsDirectory(entry)) {
        sources.push_back({top, top + name, StoredName(name) + '\\', true});
        AddTree(top, name + '\\');
      } else {
        if (entry.nFileSizeHigh != 0) throw Failure(ResultCode::UnknownKind);
        AddFile(top, name, top + name);
      }
    });
    walked.pop_back();
  }

  std::vector<Source> Finish() {
    DropRepeated();
    return std::move(sources);
  }

 private:
  void AddMatches(const std::string& base, const std::string& mask, const std::string& path) {
    const std::string directory = container::DirectoryOf(mask);
    const bool found = ForEachEntry(path, [&](const WIN32_FIND_DATAA& entry) {
      if (!IsDirectory(entry)) AddName(base, directory + entry.cFileName);
    });
    if (!found) throw Failure(ResultCode::FileNotOpened);
  }

  std::string StoredName(const std::string& given) const {
    std::string name = container::StoredNameOf(given, workingPage);
    if (name.empty()) throw Failure(ResultCode::FileNotOpened);
    if (name.size() > container::kMaxShownBytes) throw Failure(ResultCode::NameTooLong);
    return name;
  }

  void AddFile(const std::string& base, const std::string& given, const std::string& path) {
    std::string name = StoredName(given);
    const bool endsAlike = path.ends_with(name);
    std::string root = endsAlike ? path.substr(0, path.size() - name.size()) : base;
    sources.push_back({std::move(root), path, std::move(name), false});
  }

  // Of the names that differ in case alone, each must mean a file of its own.
  void DropRepeated() {
    std::unordered_map<std::u16string, std::vector<const Source*>> byKey;
    std::vector<Source> once;
    once.reserve(sources.size());  // pointers into it stay good
    for (Source& source : sources) {
      auto& alike = byKey[container::KeyOf(source.name, workingPage)];
      if (std::any_of(alike.begin(), alike.end(),
                      [&](const Source* other) { return IsRepeated(source, *other); })) {
        continue;
      }
      once.push_back(std::move(source));
      alike.push_back(&once.back());
    }
    sources = std::move(once);
  }

  static bool IsRepeated(const Source& source, const Source& other) {
    if (source.path == other.path || !IsAnotherFile(source.path, other)) return true;
    if (source.name == other.name) throw Failure(ResultCode::SameName);
    return false;
  }

  const unsigned int workingPage;
  std::vector<Source> sources;
  std::vector<FileStamp> walked;  // the directories from the top of a tree down to the present one
};

void AddNames(const std::string& base, const std::string& word, Selection& selection) {
  const std::string asFile = HasRoot(word) ? word : base + word;
  const bool isResponse =
      word.starts_with('@') && GetFileAttributesA(asFile.c_str()) == INVALID_FILE_ATTRIBUTES;
  if (!isResponse) {
    selection.AddName(base, word);
    return;
  }
  for (const std::string& name : ReadResponseFile(word.substr(1))) selection.AddName(base, name);
}

}  // namespace

bool IsAnotherFile(const std::string& path, const Source& source) {
  File file;
  if (GetFileAttributesA(path.c_str()) == INVALID_FILE_ATTRIBUTES) return false;
  if (!file.Open(path, File::Mode::Facts)) return true;
  return !file.Facts().stamp.IsSameFile(StampOf(source.path));
}

std::vector<Source> SelectSources(const CommandLine& line) {
  std::vector<std::string> words(line.operands.begin() + 1, line.operands.end());
  std::string base;
  if (!line.isDirectoryMode && !words.empty() && EndsInSeparator(words.front())) {
    base = words.front();
    words.erase(words.begin());
  }
  std::erase(words, std::string());
  if (words.empty()) throw Failure(ResultCode::NoFileName);

  Selection selection(GetACP());
  for (const std::string& word : words) {
    if (!line.isDirectoryMode) {
      AddNames(base, word, selection);
      continue;
    }
    const DWORD attributes = GetFileAttributesA(word.c_str());
    const bool isThere =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (!isThere) throw Failure(ResultCode::NotFound);
    selection.AddTree(EndsInSeparator(word) ? word : word + '\\');
  }
  return selection.Finish();
}

}  // namespace kozor::commands
