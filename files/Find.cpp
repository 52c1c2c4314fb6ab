// Find.cpp - a selection of files and its evaluation in three steps: walk every mask in list order,
// drop later duplicates, remove what exclusion masks found.
#include <optional>

#include "ZorFind.h"
#include "files/FileWalk.h"
#include "files/NameSet.h"
#include "files/Path.h"

namespace {

// The attributes that a caller can filter by, and those that always pass.
constexpr DWORD kChosenAttributes = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN |
                                    FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_DIRECTORY |
                                    FILE_ATTRIBUTE_ARCHIVE;
constexpr DWORD kFreeAttributes = FILE_ATTRIBUTE_NORMAL | FILE_ATTRIBUTE_TEMPORARY |
                                  FILE_ATTRIBUTE_COMPRESSED | FILE_ATTRIBUTE_OFFLINE;

// The walk that a mask stands for, or nothing if its form can't be used.  `base` is empty or ends
// in a backslash.
std::optional<ZorFileWalk> WalkOfMask(const char* mask, const CString& base, bool fullPath) {
  const char* root;
  const char* directory;
  const char* fileName;
  ZorSplitPath(mask, &root, &directory, &fileName);
  const bool isRooted = directory != nullptr && *directory == '\\';
  const CString upToName =
      fileName != nullptr ? CString(mask, static_cast<int>(fileName - mask)) : CString(mask);
  ZorFileWalk walk;
  walk.fileMask = fileName != nullptr ? fileName : kAllFiles;
  if (root != nullptr) {
    if (!isRooted) return std::nullopt;
    walk.directory = upToName;
  } else {
    if (isRooted || base.IsEmpty()) return std::nullopt;
    walk.directory = base + upToName;
    walk.prefixLength = fullPath ? 0 : base.GetLength();
  }
  return walk;
}

}  // namespace

ZorFind::ZorFind() : attribute(kChosenAttributes), subDirectory(1) {}

ZorFind::ZorFind(const ZorFind& other) : ZorFind() {
  *this = other;
}

const ZorFind& ZorFind::operator=(const ZorFind& other) {
  if (this == &other) return *this;
  attribute = other.attribute;
  subDirectory = other.subDirectory;
  currentDirectory = other.currentDirectory;
  RemoveAll();
  for (const CString& mask : other) AddTail(mask);
  return *this;
}

ZorFind::~ZorFind() = default;

ZorError ZorFind::Find(ZorFileList& list, int fullPath) const {
  const CString base = ZorDirectoryText(currentDirectory);

  DWORD firstError = NO_ERROR;
  ZorFileList excluded;
  for (const CString& mask : *this) {
    const char* text = mask;
    const bool isExclusion = *text == '>';
    if (isExclusion) ++text;
    std::optional<ZorFileWalk> walk = WalkOfMask(text, base, fullPath != 0);
    if (!walk) continue;
    walk->searchMask = kFreeAttributes | (attribute & kChosenAttributes);
    walk->subDirectories = subDirectory != 0;
    ZorFileList& destination = isExclusion ? excluded : list;
    const DWORD error =
        ZorWalkDirectory(*walk, [&](const CString& name, bool) { destination.AddTail(name); });
    if (firstError == NO_ERROR) firstError = error;
  }

  if (GetCount() > 1) ZorRemoveDuplicates(list, base);
  ZorRemoveExcluded(list, excluded, base);
  SetLastError(firstError);
  return ZorErrorNone;
}

void ZorFind::SetAttribute(unsigned int value) {
  attribute = value;
}

unsigned int ZorFind::GetAttribute() const {
  return attribute;
}

void ZorFind::SetSubDirectory(int value) {
  subDirectory = value;
}

int ZorFind::GetSubDirectory() const {
  return subDirectory;
}

void ZorFind::SetCurrentDirectoryA(const char* path) {
  currentDirectory = path;
}

const char* ZorFind::GetCurrentDirectoryA() const {
  return currentDirectory;
}

int ZorFind::OnAbort() {
  return 0;
}
