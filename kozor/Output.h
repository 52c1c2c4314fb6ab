// Output.h - where a run that changes an archive writes.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "WorkFolder.h"

namespace kozor::program {

// An archive about to be written, and the work directory for it.
//
// Unless the user names a work directory the run gets one of its own beside the archive, so that
// temporaries lie on the same disk and other runs don't meet them.  An archive that is to be
// replaced as a whole is written in there, and takes the old one's place when it is complete:
// whatever stops the run, the old one is still there.  What the run leaves in the directory goes
// with the object.
class Output {
 public:
  // With `fresh` what stands at `archive` is to be replaced; it must be an archive then.
  Output(const std::string& archive, bool fresh, const std::string& workDirectory);

  // Library path of the archive to write, and whether to add to what it holds.
  const std::string& Path() const { return path; }
  int Append() const { return append; }
  const std::string& WorkDirectory() const { return workDirectory; }

  // Puts a finished new archive, and a program made of it, in their places.
  void Commit();

 private:
  void MakeOwnDirectory();

  std::filesystem::path archive;
  std::optional<WorkFolder> ownDirectory;
  std::filesystem::path staging;  // empty when the archive is written in its place
  std::string path;
  std::string workDirectory;
  int append;
};

}  // namespace kozor::program
