// VolumeRun.h - the frame that Backup and Restore share: the progress record, the calls of OnAbort,
// the prompt for a volume, and how a run ends.
//
// A run derives from it and says in Work what is copied.  A step that fails, or that OnAbort stops,
// throws (files/Failure.h), and so ends the run.
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
  // error.  What phases 0 and 5 throw passes to the caller at once; an exception that a hook throws
  // in between and that isn't of the class library does so after phase 5.
  int Run();

 protected:
  enum Kind : std::int32_t { Backup = 0, Restore = 1 };

  // One piece of a file: the most that is copied between two calls of OnAbort, and all of a file
  // that is ever in memory.
  static constexpr std::uint32_t kSliceBytes = 65536;

  // `path` is that of every volume; with null OnMakeVolumeName gives the path of each.
  ZorVolumeRun(Kind kind, ZorMultiVolume& object, const char* path);
  virtual ~ZorVolumeRun() = default;

  // False when there is nothing to do: the run ends before phase 0.
  virtual bool Prepare() { return true; }
  virtual void Work() = 0;
  // Closes what a run that was left has open, before OnAbort hears of the end.
  virtual void ReleaseFiles() = 0;

  // Asks for volume number `volume` + 1 until `take` has one.  It makes one attempt and returns why
  // that failed, or nothing when the volume is in its hands.
  void AskForVolume(const std::function<std::optional<ZorMultiVolume::VolumeResult>()>& take);
  // The three steps of a file.  `path` must stay as it is until the next file begins.
  void BeginFile(const char* path, std::uint32_t bytes);
  void CountSlice(std::uint32_t bytes);
  void EndFile();

  // Bytes of the next slice of the current file, at most `room`.
  std::uint32_t SliceBytes(std::uint32_t room) const;
  bool FileIsCopied() const { return progress.bytesDone == progress.bytesTotal; }

  // Reads exactly `count` bytes, or fails with error 3: nothing that wasn't read is ever taken for
  // data.
  static void ReadWhole(CFile& file, void* buffer, std::uint32_t count);

  // What runs may know and ask of their object, whose friend this class alone is.
  struct Area {
    const unsigned char* data;
    int length;  // bytes
  };
  // Application ID, volume label and memo, in the order in which they stand on a volume.
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
