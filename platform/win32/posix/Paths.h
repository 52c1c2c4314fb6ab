// Paths.h - a library path taken apart, and the host path it stands for.
//
// ".." and "." are worked out in the text, as the real calls do, before anything on disk is looked
// at; ".." never climbs above a drive's or a share's root.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kozor::posix {

struct LibraryPath {
  // Host directory that `names` start from: "" for the process's own, else absolute with a '/' at
  // the end.
  std::string base;
  std::vector<std::string> names;  // host form
  std::string mask;  // the last component in the code page, where it holds wild-cards (ForSearch)
  // The root as the caller wrote it, "C:" or "\\\\server\\share"; "" for a path relative to
  // the process's directory.
  std::string root;
  bool share = false;              // below \\server\share
  bool trailingSeparator = false;  // so it can only mean a directory

  bool IsRoot() const { return names.empty() && !base.empty(); }
  // The host path of the first `count` names.
  std::string Host(std::size_t count) const;
  std::string Host() const { return Host(names.size()); }
};

enum class PathUse {
  OneName,
  Search,  // the last component may hold wild-cards
  Text,    // the same, and the drive or share needn't be there
};

// Empty, with the last error set: ERROR_PATH_NOT_FOUND (empty text, unknown drive),
// ERROR_BAD_NETPATH, ERROR_BAD_NET_NAME, ERROR_BAD_PATHNAME (a server alone), ERROR_INVALID_NAME (a
// character that names can't hold; a wild-card that isn't in the last component of a search).
std::optional<LibraryPath> ParsePath(const char* path, PathUse use = PathUse::OneName);

// Gives a relative path that names the process's directory itself (".", "C:") its host path, so
// that it has a last name.  False, with the last error set, if that directory is gone.
bool MakeAbsolute(LibraryPath& path);

// The library path of an absolute host path.  Characters that the code page lacks are '?' in it,
// and
// `*whole` (if given) tells whether there are none.  Empty, with the last error
// ERROR_PATH_NOT_FOUND, where no drive holds it.
std::optional<std::string> ToLibraryPath(std::string_view hostPath, bool* whole = nullptr);

// The last name of a host path, and the directory that holds it: "." for a bare name.
std::string_view HostNameOf(std::string_view hostPath);
std::string HostParentOf(std::string_view hostPath);
std::string JoinHost(const std::string& directory, const std::string& name);

// Splits at '/', leaving out empty components.
std::vector<std::string_view> SplitHostPath(std::string_view hostPath);

}  // namespace kozor::posix
