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

// Exists until it has taken its place, and is removed with its object otherwise.  It carries the
// attribute for temporary files while it is written, and is open against everybody who wants more
// than to read it: what a killed run has left is known by the one without the other.
class TemporaryArchive {
 public:
  // Makes a new empty file in the directory, which is empty or ends in a separator, and removes
  // what killed runs have left there.  Throws ResultCode::TemporaryNotOpened.
  explicit TemporaryArchive(const std::string& directory);
  ~TemporaryArchive();
  TemporaryArchive(const TemporaryArchive&) = delete;
  TemporaryArchive& operator=(const TemporaryArchive&) = delete;

  File& Contents() { return file; }
  const std::string& Path() const { return path; }

  // These close the file, which is complete and flushed, and give it a name in one step.  On
  // another file system the bytes are first copied to a second temporary beside the target.  Throw
  // ResultCode::TemporaryNotCopied, or ResultCode::NoDiskSpace; what was there is as it was then.

  // Replaces the archive that is open as `held`, whose attributes it takes over; that is closed.
  void Replace(File& held, const std::string& archivePath);
  // Replaces whatever file has the name.
  void Replace(const std::string& targetPath);
  // Throws ResultCode::ArchiveNotOpened where a file has got the name meanwhile.
  void BecomeNew(const std::string& archivePath);

 private:
  // Gives a path to the name, by a call that may fail.
  using Move = std::function<bool(const std::string& path)>;
  void Take(const std::string& targetPath, std::uint32_t attributes, const Move& move);
  void CopyBeside(const std::string& targetPath, std::uint32_t attributes, const Move& move);

  std::string path;
  File file;
};

}  // namespace kozor::container
