// OtherSpelling.h - finds a name in a directory that differs from the one asked for in case alone.
//
// The host can't do this, so a directory has to be read.  A large one is remembered, one per
// thread, until it changes: making ten thousand files in a directory must not read it ten thousand
// times.
#pragma once

#include <optional>
#include <string>

#include "platform/win32/posix/FileFacts.h"

namespace kozor::posix {

// The entry of a directory that isn't `name` but counts as it: by case (unless SetCaseSensitive),
// or because the code page can't tell the two apart.  Of several, the first by byte values, so that
// the result doesn't depend on how the directory is kept.
std::optional<std::string> FindOtherSpelling(const std::string& hostDirectory,
                                             const std::string& name);

// A change that this process makes to a directory's names.  Begun before the system call and told
// of what it did, it keeps what is remembered of a large directory good.
class DirectoryChange {
 public:
  explicit DirectoryChange(const std::string& hostPath);  // of the file concerned
  void Added();
  void Removed();

 private:
  void Keep();

  std::string directory;
  std::string name;
  bool known;  // what is remembered was good before the change
};

// Compares names by case unless `on`; returns the old value.
bool SetCaseSensitive(bool on);

}  // namespace kozor::posix
