// Paths.h - parses library paths and converts them to host paths.
//
// ".." and "." are resolved in the text, as in the real calls, before anything is looked up on
// disk; ".." never climbs above a drive's or a share's root.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kozor::posix {

struct LibraryPath {
  // Host directory that `names` are relative to: "" for the process's own, else absolute with a
  // trailing '/'.
  std::string base;
  std::vector<std::string> names;  // host form
  std::string mask;  // last component if it holds wild-cards (Search, Text); in the code page
  // The root as the caller wrote it, "C:" or "\\\\server\\share"; "" for a path relative to
  // the process's directory.
  std::string root;
  bool share = false;              // below \\server\share
  bool trailingSeparator = false;  // so only a directory can match

  bool IsRoot() const { return names.empty() && !base.empty(); }
  // The host path of the first `count` names.
  std::string Host(std::size_t count) const;
  std::string Host() const { return Host(names.size()); }
};

enum class PathUse {
  OneName,
  Search,  // the last component may hold wild-cards
  Text,    // the same, and the drive or share needn't exist
};

// Parses a path.  Empty with the last error set: ERROR_PATH_NOT_FOUND (empty text, unknown drive),
// ERROR_BAD_NETPATH, ERROR_BAD_NET_NAME, ERROR_BAD_PATHNAME (a server alone), ERROR_INVALID_NAME (a
// forbidden character; a wild-card outside the last component of a search).
std::optional<LibraryPath> ParsePath(const char* path, PathUse use = PathUse::OneName);

// Makes a path to the process's own directory (".", "C:") absolute, so that it has a last name.
// Returns false with the last error set if that directory is gone.
bool MakeAbsolute(LibraryPath& path);

// The library path of an absolute host path.  Characters that the code page lacks become '?';
// `*whole`, if given, receives whether there are none.  Empty with the last error
// ERROR_PATH_NOT_FOUND if no drive holds it.
std::optional<std::string> ToLibraryPath(std::string_view hostPath, bool* whole = nullptr);

// The last name of a host path, and the directory that holds it: "." for a bare name.
std::string_view HostNameOf(std::string_view hostPath);
std::string HostParentOf(std::string_view hostPath);
std::string JoinHost(const std::string& directory, const std::string& name);

// Splits at '/', skipping empty components.
std::vector<std::string_view> SplitHostPath(std::string_view hostPath);

}  // namespace kozor::posix
