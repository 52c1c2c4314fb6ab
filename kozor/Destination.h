// Destination.h - the directory that files are brought out to, and nothing outside of it.
//
// Directories are opened one by one from the destination down and never through a symbolic link,
// but for links that were there before and lead to another place inside.  Files are named relative
// to open directories.  So it doesn't matter what someone puts there meanwhile.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "WorkFolder.h"

namespace kozor::program {

// Where a file is to stand: a name in an open directory.  Good until the next call of Find,
// MakeFolder or FinishFolder.
struct Place {
  HostHandle directory = kNotOpen;
  std::string name;
  std::filesystem::path folder{};      // the directory, relative to the destination, free of links
  std::optional<Occupant> occupant{};  // when it was looked for
};

// Everything here throws FileFailure when it can't be done.
class Destination {
 public:
  enum class Links { StayInside, MayLeadOut };
  Destination(std::filesystem::path directory, Links links);

  // The place of a path; makes directories that are missing on the way.  Where a link stands there,
  // the place is where it leads, or the link's own.
  enum class FinalLink { IsFollowed, IsMeant };
  Place Find(const std::filesystem::path& path, FinalLink finalLink = FinalLink::IsFollowed);

  // The folder for files on their way here; made when it is asked for first.
  WorkFolder& Work();
  // Bytes of free room there.
  std::uint64_t FreeBytes();

  // Moves a finished file from the work folder to its place.  False, with the file where it was,
  // when something stands there and isn't to be replaced.
  enum class Existing { Stays, IsReplaced };
  bool MoveIn(const std::string& workName, const Place& place, Existing existing);
  // Whether the file or link at the place has the same contents as one in the work folder.
  bool HasContentsOf(const std::string& workName, const Place& place);

  // Makes a directory; one that is there already will do.
  void MakeFolder(const std::filesystem::path& path);
  // Sets its permission bits, unless they are 0, and its time, in 100 ns since 1601.
  void FinishFolder(const std::filesystem::path& path, unsigned int mode, std::uint64_t lastWrite);

  // Makes a link in the work folder for a place where it must not lead out of the destination.
  void PrepareLink(const std::string& workName, const Place& place,
                   const std::filesystem::path& target, std::uint64_t lastWrite);

 private:
  HostHandle Root();
  HostHandle Open(const std::filesystem::path& path, std::filesystem::path& reached, int linksLeft);
  std::filesystem::path Resolve(const std::filesystem::path& link);
  std::optional<std::filesystem::path> Inside(const std::filesystem::path& real) const;

  std::filesystem::path root;
  const Links links;
  Descriptor rootDirectory;
  std::optional<WorkFolder> work;
  // The directories from the root down to the one opened last: files come sorted by directories,
  // mostly.
  struct Level {
    std::string name;
    Descriptor directory;
  };
  std::vector<Level> levels;
  Descriptor beyondLevels;  // the last one, where it isn't among them
  // The directory found last, if any.
  HostHandle lastDirectory = kNotOpen;
  std::filesystem::path lastAsked;
  std::filesystem::path lastReached;
};

// What stands at a place, links not followed; nothing when nothing does.
inline std::optional<Occupant> LookAt(const Place& place) {
  return LookAt(place.directory, place.name);
}

}  // namespace kozor::program
