// DirectoryNames.h - case-insensitive look-up of a name in a host directory.
//
// The host can't do this, so the directory has to be read.  The process caches one large
// directory until it changes, so that creating ten thousand files doesn't read it ten thousand
// times.
#pragma once

#include <optional>
#include <string>

namespace kozor::posix {

enum class Match {
  IgnoreCase,
  // Also matches a name that the code page can't distinguish.
  ExactCase,
};

// Whether an entry of another name can match `name` at all.
bool OthersMayMatch(const std::string& name, Match match);

// An entry of the directory that matches `name` but isn't `name` itself.  Of several, the first by
// byte values, so that the result doesn't depend on the host's order.
std::optional<std::string> FindMatchingName(const std::string& hostDirectory,
                                            const std::string& name, Match match);

// Keeps the cache up to date when this process changes a directory.  Construct it before the system
// call; call Added or Removed after success.
class DirectoryChange {
 public:
  explicit DirectoryChange(const std::string& hostPath);  // of the file concerned
  void Added();
  void Removed();

 private:
  // Applies a change to the cache if it was up to date before.
  template <typename Change>
  void Apply(Change change);

  std::string directory;  // empty unless the cache was up to date before the change
  std::string name;
};

}  // namespace kozor::posix
