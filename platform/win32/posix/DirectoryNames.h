// DirectoryNames.h - case-insensitive look-up of a name in a host directory.
//
// The host can't do this, so the directory has to be read.  A large one is remembered, one per
// thread, until it changes: making ten thousand files in a directory must not read it ten thousand
// times.
#pragma once

#include <optional>
#include <string>

namespace kozor::posix {

enum class Match {
  IgnoreCase,
  // Also matches where the code page can't tell two names apart.
  ExactCase,
};

// The entry of a directory that isn't `name` itself but matches it.  Of several, the first by byte
// values, so that the result doesn't depend on the order in which the host keeps them.
std::optional<std::string> FindMatchingName(const std::string& hostDirectory,
                                            const std::string& name, Match match);

// A change that this process makes to a directory's names.  Begun before the system call and told
// its outcome, it keeps what is remembered of a large directory up to date.
class DirectoryChange {
 public:
  explicit DirectoryChange(const std::string& hostPath);  // of the file concerned
  void Added();
  void Removed();

 private:
  void Keep();

  std::string name;
  bool known;  // what is remembered was up to date before the change
};

}  // namespace kozor::posix
