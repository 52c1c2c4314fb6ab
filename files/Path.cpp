// Path.cpp - see Path.h.
#include "files/Path.h"

#include "ZorFileServices.h"
#include "platform/win32/AnsiPath.h"

namespace {

using kozor::AnsiPath;

// Stores a piece as a pointer into the path, or null if it is empty.
void Report(const char** piece, std::string_view text) {
  if (piece != nullptr) *piece = text.empty() ? nullptr : text.data();
}

}  // namespace

void ZorSplitPath(const char* path, const char** root, const char** directory,
                  const char** fileName) {
  const auto pieces = AnsiPath(ZorText(path));
  Report(root, pieces.Root());
  Report(directory, pieces.Directory());
  Report(fileName, pieces.FileName());
}

const char* ZorGetFileName(const char* path) {
  const char* fileName;
  ZorSplitPath(path, nullptr, nullptr, &fileName);
  return fileName;
}

CString ZorRootDirectory(const char* path) {
  const std::string_view root = AnsiPath(ZorText(path)).Root();
  return root.empty() ? CString() : CString(root.data(), static_cast<int>(root.size())) + '\\';
}

std::vector<int> ZorDirectoryLevels(const char* path, const char* directory, const char* fileName) {
  const std::string_view whole = path;
  const auto end = fileName == nullptr ? whole.size() : static_cast<std::size_t>(fileName - path);
  std::vector<int> levels;
  for (auto backslash = static_cast<std::size_t>(directory - path); backslash + 1 < end;) {
    const std::size_t next = kozor::text::FindSeparator(whole, backslash + 1, kozor::kAnsiRules);
    if (next - backslash > 1) levels.push_back(static_cast<int>(next));
    backslash = next;
  }
  return levels;
}

void ZorSetTrailingBackslash(CString& path, int add) {
  const bool isThere = AnsiPath(static_cast<const char*>(path)).EndsInSeparator();
  if (isThere && !add) path = path.Left(path.GetLength() - 1);
  if (!isThere && add) path += '\\';
}

bool ZorHasRoot(const char* path) {
  return !AnsiPath(ZorText(path)).Root().empty();
}

CString ZorDirectoryText(const char* directory) {
  CString text(directory);
  if (!text.IsEmpty()) ZorSetTrailingBackslash(text, 1);
  return text;
}

int ZorIsFullPath(const char* path) {
  const auto pieces = AnsiPath(ZorText(path));
  return !pieces.Root().empty() && pieces.Directory().starts_with('\\') &&
         !pieces.FileName().empty();
}
