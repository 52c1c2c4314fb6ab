// Volumes.h - what backup and restore have in common: the names of volumes, the change of media,
// and failures in words.
#pragma once

#include <filesystem>
#include <string>

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

class Volumes : public ZorMultiVolume {
 public:
  explicit Volumes(const VolumeName& name) : volumeName(name) {}

  // Passes on a success.  Otherwise throws Interrupted after a signal, and else Failure.
  void Require(int succeeded) const;

 protected:
  int OnAbort(const ONABORTPARAM& param) override;
  CString OnMakeVolumeName(int volumeNumber) override;

  // Asked before each attempt at a volume: why it must not be taken as it stands, empty to go on.
  virtual std::string ObjectionTo(const ONABORTPARAM& param);

  const VolumeName& volumeName;

 private:
  bool Ready(const ONABORTPARAM& param);

  std::string currentName;
  std::string whyStopped;
};

}  // namespace kozor::program
