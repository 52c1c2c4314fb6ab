// Volumes.h - what backup and restore have in common: the names of volumes, the change of media,
// and failures in words.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "Console.h"
#include "ZorMultiVolume.h"

namespace kozor::program {

// A VOLUME word of the command line.
class VolumeName {
 public:
  explicit VolumeName(const std::string& pathOrPattern);

  // A '#' in the file's name stands for the volume's number; without one every volume has this
  // path, on a medium of its own.
  bool IsPattern() const { return pattern; }
  std::filesystem::path Path(int volumeNumber) const;
  // Whether `path` is one of these volumes.
  bool Means(const std::filesystem::path& path) const;
  const std::string& Word() const { return word; }

 private:
  std::string word;
  std::filesystem::path directory;
  std::string before;  // of the file's name, in front of '#' and behind it
  std::string behind;
  bool pattern;
};

// Why a volume can't be taken, by a ZorMultiVolume::VolumeResult; empty for VolumeFirstAsk.
std::string ReasonText(int volumeResult);

class Volumes : public ZorMultiVolume {
 public:
  // `totalBytes` of all files of the run, 0 when that isn't known.
  explicit Volumes(const VolumeName& name, std::uint64_t totalBytes = 0)
      : volumeName(name), bytes(totalBytes), progress(totalBytes) {}

  // Passes on a success.  Otherwise throws Interrupted after a signal, and else Failure.
  void Require(int succeeded) const;
  // Complains unless so many files have been stored.
  void RequireAll(std::size_t selected) const { progress.RequireAll(selected); }

 protected:
  int OnAbort(const ONABORTPARAM& param) override;
  CString OnMakeVolumeName(int volumeNumber) override;

  // Asked before each attempt at a volume: why it must not be taken as it stands, empty to go on.
  virtual std::string ObjectionTo(const ONABORTPARAM& param);

  // What stands in front of names in the progress line.
  void SetTitle(const std::string& title) { progress = Progress(bytes, title); }

  const VolumeName& volumeName;
  std::string currentName;  // of the file that the run came to last

 private:
  bool Ready(const ONABORTPARAM& param);

  const std::uint64_t bytes;
  Progress progress;
  std::string whyStopped;
};

}  // namespace kozor::program
