// Volumes.h - common parts of backup and restore: volume names, changing media, failures as text.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>

#include "Console.h"
#include "ZorMultiVolume.h"

namespace kozor::program {

// The VOLUME operand of the command line.
class VolumeName {
 public:
  explicit VolumeName(const std::string& pathOrPattern);

  // A '#' in the file name stands for the volume's number.  Without one every volume has the same
  // path, on its own medium.
  bool IsPattern() const { return pattern; }
  std::filesystem::path Path(int volumeNumber) const;
  // Whether `path` is one of these volumes.
  bool Means(const std::filesystem::path& path) const;
  // The highest number of a volume that is there; 0 when none is.
  int LastNumber() const;
  const std::string& Word() const { return word; }

 private:
  // The digits in the place of the '#'; empty if there are none.
  std::string NumberIn(const std::string& file) const;

  std::string word;
  std::filesystem::path directory;
  std::string before;  // parts of the file name before and after '#'
  std::string behind;
  bool pattern;
};

// The text for a ZorMultiVolume::VolumeResult; empty for VolumeFirstAsk.
std::string ReasonText(int volumeResult);

class Volumes : public ZorMultiVolume {
 public:
  // `totalBytes` is the size of all files of the run, 0 if unknown.
  explicit Volumes(const VolumeName& name, std::uint64_t totalBytes = 0)
      : volumeName(name), bytes(totalBytes), progress(totalBytes) {}

  // Returns if `succeeded`.  Otherwise throws Interrupted after a signal, else Failure.
  void Require(int succeeded) const;
  // Complains if fewer files than selected have been stored.
  void RequireAll(std::size_t selected) const { progress.RequireAll(selected); }

 protected:
  int OnAbort(const ONABORTPARAM& param) override;
  CString OnMakeVolumeName(int volumeNumber) override;

  // Called before each attempt at a volume.  Returns why it must not be used as it is, or an empty
  // text.
  virtual std::string ObjectionTo(const ONABORTPARAM& param);

  // For OnAbort: ends the run for this reason, which Require throws.
  int Stop(std::string why) {
    whyStopped = std::move(why);
    return 1;
  }
  // Sets the text before names in the progress line.
  void SetTitle(const std::string& title) { progress = Progress(bytes, title); }

  const VolumeName& volumeName;
  std::string currentName;  // of the current or last file

 private:
  bool Ready(const ONABORTPARAM& param);

  const std::uint64_t bytes;
  Progress progress;
  std::string whyStopped;
};

}  // namespace kozor::program
