// VolumeFollower.h - catalogues a volume on a thread of its own while it is being written.
#pragma once

#include <filesystem>
#include <future>
#include <memory>

#include "Catalogue.h"

namespace kozor::program {

// The checksums take as long as the writing, so they go on beside it.  The volume is read back as
// SetScanner::Scan would read it afterwards, a little behind the writer.
class VolumeFollower {
 public:
  // Begins with the volume that has been created at the path.  The scanner must not be used until
  // Finish has returned.  Null if the system lets nobody read a file that is being written, or
  // allows no further thread.
  static std::unique_ptr<VolumeFollower> Start(SetScanner& scanner,
                                               const std::filesystem::path& path);
  // Gives up an unfinished volume.
  ~VolumeFollower();
  VolumeFollower(const VolumeFollower&) = delete;
  VolumeFollower& operator=(const VolumeFollower&) = delete;

  // More has been written.
  void NoteProgress();
  // The volume is complete: returns when it has been scanned.  Throws what the scanner throws.
  void Finish();

 private:
  class GrowingVolume;
  struct Growth;

  VolumeFollower(SetScanner& scanner, const std::filesystem::path& path,
                 std::unique_ptr<GrowingVolume> volume, std::shared_ptr<Growth> growing);
  void End(bool isGivenUp);

  const std::shared_ptr<Growth> growth;
  std::future<void> scan;
  unsigned notices = 0;
};

}  // namespace kozor::program
