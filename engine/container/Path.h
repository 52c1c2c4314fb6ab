// Path.h - paths of archives and of files to be packed, in the working code page.  '/' separates
// like '\\'.
#pragma once

#include <string>
#include <string_view>

#include "platform/win32/AnsiPath.h"

namespace kozor::container {

inline text::Path PathOf(std::string_view path) {
  return text::Path(path, kAnsiSlashRules);
}

// The folder of a file, with its separator; empty for a bare name.
inline std::string FolderOf(std::string_view path) {
  return std::string(PathOf(path).Folder());
}

// A name relative to a base directory, unless it has a root.
inline std::string PathFrom(const std::string& base, const std::string& name) {
  return PathOf(name).IsRooted() ? name : base + name;
}

}  // namespace kozor::container
