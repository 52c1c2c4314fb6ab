// Path.cpp - taking paths apart, by looking at the text only.
#include "files/Path.h"

#include "ZorFileServices.h"

namespace {

// Walks by whole characters to the `count`-th backslash, or to the terminator.
const char* FindBackslash(const char* text, int count) {
  for (; *text != '\0'; text = CharNextA(text)) {
    if (*text == '\\' && --count == 0) return text;
  }
  return text;
}

// The end of the drive or network root; `path` itself when there is none.
const char* SkipRoot(const char* path) {
  if (path[0] == '\0') return path;
  if (path[1] == ':') return path + 2;
  if (path[0] != '\\' || path[1] != '\\') return path;
  const char* server = path + 2;
  const bool hasShare = *FindBackslash(server, 1) != '\0';
  return hasShare ? FindBackslash(server, 2) : path;
}

void Report(const char** piece, const char* value) {
  if (piece != nullptr) *piece = value;
}

}  // namespace

void ZorSplitPath(const char* path, const char** root, const char** directory,
                  const char** fileName) {
  path = ZorText(path);
  const char* rest = SkipRoot(path);
  const char* name = rest;
  const char* end = rest;
  for (; *end != '\0'; end = CharNextA(end)) {
    if (*end == '\\') name = end + 1;
  }
  Report(root, rest != path ? path : nullptr);
  Report(directory, name != rest ? rest : nullptr);
  Report(fileName, name != end ? name : nullptr);
}

const char* ZorGetFileName(const char* path) {
  const char* fileName;
  ZorSplitPath(path, nullptr, nullptr, &fileName);
  return fileName;
}

CString ZorRootDirectory(const char* path) {
  path = ZorText(path);
  const char* end = SkipRoot(path);
  return end != path ? CString(path, static_cast<int>(end - path)) + '\\' : CString();
}

std::vector<int> ZorDirectoryLevels(const char* path, const char* directory, const char* fileName) {
  std::vector<int> levels;
  const char* backslash = directory;
  while (*backslash != '\0' && (fileName == nullptr || backslash + 1 < fileName)) {
    const char* end = FindBackslash(backslash + 1, 1);
    if (end - backslash > 1) levels.push_back(static_cast<int>(end - path));
    backslash = end;
  }
  return levels;
}

void ZorSetTrailingBackslash(CString& path, int add) {
  const char* last = nullptr;
  for (const char* p = path; *p != '\0'; p = CharNextA(p)) {
    if (*p == '\\') last = p;
  }
  const int length = path.GetLength();
  const bool endsInBackslash = last != nullptr && last == path + (length - 1);
  if (endsInBackslash && !add) path = path.Left(length - 1);
  if (!endsInBackslash && add) path += '\\';
}

bool ZorHasRoot(const char* path) {
  path = ZorText(path);
  return SkipRoot(path) != path;
}

CString ZorDirectoryText(const char* directory) {
  CString text(directory);
  if (!text.IsEmpty()) ZorSetTrailingBackslash(text, 1);
  return text;
}

int ZorIsFullPath(const char* path) {
  const char* root;
  const char* directory;
  const char* fileName;
  ZorSplitPath(path, &root, &directory, &fileName);
  return root != nullptr && directory != nullptr && *directory == '\\' && fileName != nullptr;
}
