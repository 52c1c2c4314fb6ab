// Output.h - the archive that a run writes, and its work directory.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "WorkFolder.h"

namespace kozor::program {

// The self-extracting program that is made of an archive stands beside it.
std::filesystem::path ProgramOf(std::filesystem::path archive, const std::string& suffix);

// An archive to write, and the work directory for it.
//
// Unless the user names a work directory, the run makes its own beside the archive, so that
// temporaries are on the same disk and apart from those of other runs.  A new archive that replaces
// an old one is written there and renamed when it is complete, so the old one survives a run that
// is stopped.  The destructor removes the directory with everything left in it.
class Output {
 public:
  // With `fresh` an existing file at `archive` is replaced; it must be an archive.
  Output(const std::string& archive, bool fresh, const std::string& workDirectory);

  // The library path of the archive to write, and whether to append to it.
  const std::string& Path() const { return path; }
  int Append() const { return append; }
  const std::string& WorkDirectory() const { return workDirectory; }

  // Moves a finished new archive, and the program of that suffix made from it, to their places.
  void Commit(const std::string& programSuffix = "");

 private:
  void MakeOwnDirectory();

  std::filesystem::path archive;
  std::optional<WorkFolder> ownDirectory;
  Descriptor staging;  // not open if the archive is written in place
  std::string path;
  std::string workDirectory;
  int append;
};

}  // namespace kozor::program
