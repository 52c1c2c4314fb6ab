// TemporaryArchive.h - the file "lhtmp???.lzh" in which an archive is written before it replaces
// the old one.
#pragma once

#include <functional>
#include <string>

#include "engine/container/File.h"

namespace kozor::container {

// Receives the number of bytes copied since the last call; may throw to stop.
using CopyProgress = std::function<void(std::uint64_t bytes)>;

// Copies a range of a file in large pieces; calls `write` with each.
void CopyBytes(File& from, std::uint64_t begin, std::uint64_t end,
               const std::function<void(ByteSpan)>& write, const CopyProgress& progress = {});

// The destructor removes the file unless it has been moved to its place.  While it is written, it
// has the temporary attribute and is open, denying others to write.  So a file with the attribute
// that nobody has open was left by a killed run.
class TemporaryArchive {
 public:
  // Best-effort removal of temporaries in a directory that no run has open.
  static void RemoveLeftovers(const std::string& directory);

  // Creates an empty file in the directory, whose path is empty or ends in a separator, and removes
  // what killed runs have left there.  Throws ResultCode::TemporaryNotOpened.
  explicit TemporaryArchive(const std::string& directory);
  ~TemporaryArchive();
  TemporaryArchive(const TemporaryArchive&) = delete;
  TemporaryArchive& operator=(const TemporaryArchive&) = delete;

  File& Contents() { return file; }
  const std::string& Path() const { return path; }

  // These close the file, which must be complete and flushed, and rename it atomically.  If the
  // target is on another file system, the bytes are first copied to a second temporary beside it.
  // They throw ResultCode::TemporaryNotCopied or ResultCode::NoDiskSpace and then leave the target
  // unchanged.

  // Replaces the archive that is open as `held`, keeping its attributes, and closes it.
  void Replace(File& held, const std::string& archivePath);
  // Replaces any file of that name.
  void Replace(const std::string& targetPath);
  // Throws ResultCode::ArchiveNotOpened if a file of that name has appeared.
  void BecomeNew(const std::string& archivePath);

 private:
  // Moves the file at `path` to the target; returns whether that worked.
  using Move = std::function<bool(const std::string& path)>;
  void Take(const std::string& targetPath, std::uint32_t attributes, const Move& move);
  void CopyBeside(const std::string& targetPath, std::uint32_t attributes, const Move& move);

  std::string path;
  File file;
};

}  // namespace kozor::container
