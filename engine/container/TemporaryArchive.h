// TemporaryArchive.h - the file "lhtmp???.lzh" in which an archive is made anew before it takes the
// old one's place.
#pragma once

#include <functional>
#include <string>

#include "engine/container/File.h"

namespace kozor::container {

// Told how many more bytes have been copied; may throw to stop.
using CopyProgress = std::function<void(std::uint64_t bytes)>;

// Copies bytes of one file in large pieces.  `write` is called with each.
void CopyBytes(File& from, std::uint64_t begin, std::uint64_t end,
               const std::function<void(ByteSpan)>& write, const CopyProgress& progress = {});

// Exists until it has taken its place, and is removed with its object otherwise.
class TemporaryArchive {
 public:
  // Makes a new empty file in the directory, which is empty or ends in a separator.  Throws
  // ResultCode::TemporaryNotOpened.
  explicit TemporaryArchive(const std::string& directory);
  ~TemporaryArchive();
  TemporaryArchive(const TemporaryArchive&) = delete;
  TemporaryArchive& operator=(const TemporaryArchive&) = delete;

  File& Contents() { return file; }
  const std::string& Path() const { return path; }

  enum class Target { IsThere, IsNew };
  // Closes the file, which is complete and flushed, and gives it the name of the archive in one
  // step; an archive that is there is replaced and passes its attributes on.  On another file
  // system the bytes are first copied to a second temporary beside the archive.  Throws
  // ResultCode::TemporaryNotCopied, or ResultCode::NoDiskSpace; the archive is as it was then.
  void TakePlaceOf(const std::string& archivePath, Target target);

 private:
  void CopyBeside(const std::string& archivePath, Target target);

  std::string path;
  File file;
};

// The directory of a path with its separator, or an empty string for a bare name.
std::string DirectoryOf(const std::string& path);
// The path of a directory with a separator at its end.
std::string AsDirectory(const std::string& path);

}  // namespace kozor::container
