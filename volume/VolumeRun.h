// VolumeRun.h - the frame that Backup and Restore share: the progress record, the calls of OnAbort,
// the prompt for a volume, and how a run ends.
//
// A run derives from it and implements Work.  A step that fails, or that OnAbort stops, throws
// (files/Failure.h), which ends the run.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

#include "ZorMultiVolume.h"
#include "files/Failure.h"

class ZorVolumeRun {
 public:
  ZorVolumeRun(const ZorVolumeRun&) = delete;
  ZorVolumeRun& operator=(const ZorVolumeRun&) = delete;

  // The whole run: phase 0, the work, phase 5.  Returns 1, or 0 with the cause in the object's
  // error.  An exception from phase 0 or 5 reaches the caller at once.  One from a hook in between
  // that isn't the class library's is rethrown after phase 5.
  int Run();

 protected:
  enum Kind : std::int32_t { Backup = 0, Restore = 1 };

  // A slice: the most that is copied between two calls of OnAbort, and the only buffer for file
  // data.
  static constexpr std::uint32_t kSliceBytes = 65536;

  // `path` is the path of every volume; if it is null, OnMakeVolumeName gives the path of each.
  ZorVolumeRun(Kind kind, ZorMultiVolume& object, const char* path);
  virtual ~ZorVolumeRun() = default;

  // Returns false if there is nothing to do: the run then ends before phase 0.
  virtual bool Prepare() { return true; }
  virtual void Work() = 0;
  // Closes the files that a run may have left open.  Called before phase 5.
  virtual void ReleaseFiles() = 0;

  // Asks for volume number `volume` + 1 until `take` succeeds.  `take` makes one attempt and
  // returns why it failed, or nothing on success.
  void AskForVolume(const std::function<std::optional<ZorMultiVolume::VolumeResult>()>& take);
  // The three steps of a file.  `path` must stay valid until the next file begins.
  void BeginFile(const char* path, std::uint32_t bytes);
  void CountSlice(std::uint32_t bytes);
  void EndFile();

  // Bytes of the next slice of the current file, at most `room`.
  std::uint32_t SliceBytes(std::uint32_t room) const;
  bool FileIsCopied() const { return progress.bytesDone == progress.bytesTotal; }

  // Reads exactly `count` bytes, or fails with error 3.
  static void ReadWhole(CFile& file, void* buffer, std::uint32_t count);

  // Access to the object for derived runs: only this class is its friend.
  struct Area {
    const unsigned char* data;
    int length;  // bytes
  };
  // Application ID, volume label and memo, in their order on a volume.
  std::array<Area, 3> Areas() const;
  int BackupVersion() const { return volumes.backupVersion; }
  unsigned long QueryDiskSpace() { return volumes.OnQueryDiskSpace(volumePath); }
  bool Accepts(CFile& volume) { return volumes.CheckVolume(volume) != 0; }
  CString MakeFileName(const char* destination, const char* name) {
    return volumes.OnMakeFileName(destination, name);
  }

  const CString& VolumePath() const { return volumePath; }

  ZorMultiVolume::ONABORTPARAM progress{};
  const std::unique_ptr<std::uint8_t[]> slice;  // kSliceBytes

 private:
  int CallOnAbort(ZorMultiVolume::Phase phase);
  void Report(ZorMultiVolume::Phase phase);

  ZorMultiVolume& volumes;
  const bool namedByHook;
  CString volumePath;
};
