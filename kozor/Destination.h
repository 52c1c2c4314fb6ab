// Destination.h - creates and finds files in the directory that files are extracted to, and never
// outside of it.
//
// Directories are opened one by one from the destination down and never through a symbolic link,
// except links that existed before the run and lead to another place inside.  Files are named
// relative to open directories.  So changes that someone makes there during the run do no harm.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "WorkFolder.h"

namespace kozor::program {

// A directory stays open as long as anyone uses it.
using OpenFolderHandle = std::shared_ptr<const Descriptor>;

// The location of a file: a name in an open directory.
struct Place {
  OpenFolderHandle directory;
  std::string name;
  std::filesystem::path folder{};      // the directory, relative to the destination, free of links
  std::optional<Occupant> occupant{};  // at the time of the search
  HostHandle Directory() const { return directory->Number(); }
};

// Every function throws FileFailure if it fails.
class Destination {
 public:
  enum class Links { StayInside, MayLeadOut };
  Destination(std::filesystem::path directory, Links links);

  // The place of a path; creates missing directories.  If the path ends in a link, `finalLink`
  // selects its target or the link itself.
  enum class FinalLink { IsFollowed, IsMeant };
  Place Find(const std::filesystem::path& path, FinalLink finalLink = FinalLink::IsFollowed);
  // The same, but takes for granted that nothing is in a directory that was made here.  MoveIn
  // notices if something is.
  Place FindNew(const std::filesystem::path& path, FinalLink finalLink);

  // The folder for unfinished files; created on first use.
  WorkFolder& Work();
  // The free space there in bytes.
  std::uint64_t FreeBytes();

  // Moves a finished file from the work folder to its place.  Returns false, without moving it, if
  // the place is taken and nothing may be replaced.
  enum class Existing { Stays, IsReplaced };
  bool MoveIn(const std::string& workName, const Place& place, Existing existing);
  // Whether the file or link at the place has the same contents as one in the work folder.
  bool HasContentsOf(const std::string& workName, const Place& place);

  // Makes a directory; accepts an existing one.
  void MakeFolder(const std::filesystem::path& path);
  // Sets its permission bits, unless they are 0, and its last-write time, in 100 ns since 1601.
  void FinishFolder(const std::filesystem::path& path, unsigned int mode, std::uint64_t lastWrite);

  // Makes a link in the work folder.  Refuses a link that would lead out of the destination from
  // its later place.
  void PrepareLink(const std::string& workName, const Place& place,
                   const std::filesystem::path& target, std::uint64_t lastWrite);

 private:
  const OpenFolderHandle& Root();
  OpenFolderHandle Open(const std::filesystem::path& path, std::filesystem::path& reached,
                        int linksLeft);
  void OpenFolderOf(const std::filesystem::path& path);
  std::filesystem::path Resolve(const std::filesystem::path& link);
  std::optional<std::filesystem::path> Inside(const std::filesystem::path& real) const;

  std::filesystem::path root;
  const Links links;
  OpenFolderHandle rootDirectory;
  std::optional<WorkFolder> work;
  // The directories from the root down to the one opened last.  They are kept because files mostly
  // come sorted by directories.
  struct Level {
    std::string name;
    OpenFolderHandle directory;
    bool isNew;  // made here, so that only files of this run are in it
  };
  std::vector<Level> levels;
  // The directory found last, if any.
  OpenFolderHandle lastDirectory;
  bool lastIsNew = false;
  std::filesystem::path lastAsked;
  std::filesystem::path lastReached;
};

// What exists at a place, without following links; null if nothing does.
inline std::optional<Occupant> LookAt(const Place& place) {
  return LookAt(place.Directory(), place.name);
}

}  // namespace kozor::program
