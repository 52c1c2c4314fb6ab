// VolumeRun.h - what Backup and Restore have in common: the progress record, the calls of OnAbort,
// the prompt for a volume, and how a run ends.
//
// A run outlives the files it works on: they belong to the stretch that Perform guards and are
// closed by the time OnAbort hears of the end.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "ZorMultiVolume.h"

class ZorVolumeRun {
 public:
  using Progress = ZorMultiVolume::ONABORTPARAM;
  using AbortHook = std::function<int(const Progress&)>;
  enum Kind : std::int32_t { kBackup = 0, kRestore = 1 };

  // One piece of a file: the most that is copied between two calls of OnAbort, and all of a file
  // that is ever in memory.
  static constexpr std::uint32_t kSliceBytes = 65536;

  // `error` is the object's; it is cleared here and set by Perform.  `volumePath` is the path of
  // every volume, or empty.
  ZorVolumeRun(Kind kind, const char* volumePath, ZorError& error, AbortHook onAbort);

  // A whole run: phase 0, then `copy`, then phase 5.  `copy` returns when everything is done; it is
  // left early by the functions below and by exceptions of the class library, which become errors
  // here.  Other exceptions, and what phases 0 and 5 throw, pass to the caller.
  void Perform(const std::function<void()>& copy);

  // The rest is for use inside `copy`.

  // Leaves the run with this error.
  [[noreturn]] static void Leave(ZorError error);
  // Asks for volume number `volume` + 1 until `take` has one: it makes one attempt and returns why
  // that failed, or VolumeFirstAsk when the volume is in its hands.
  void AskForVolume(const std::function<ZorMultiVolume::VolumeResult()>& take);
  // The three steps of a file.  These and AskForVolume leave the run when OnAbort says so.  `path`
  // must stay as it is until the next file begins.
  void BeginFile(const char* path, std::uint32_t bytes);
  void CountSlice(std::uint32_t bytes);
  void EndFile();

  // Bytes of the present file that make the next slice, when no more than `room` are to be had.
  std::uint32_t SliceBytes(std::uint32_t room) const;
  bool FileIsCopied() const { return progress.bytesDone == progress.bytesTotal; }

  // Reads exactly `count` bytes or leaves the run with error 3: nothing that wasn't read is ever
  // taken for data.
  static void ReadWhole(CFile& file, void* buffer, std::uint32_t count);

  const CString& VolumePath() const { return volumePath; }
  void SetVolumePath(const CString& path);

  Progress progress{};
  const std::unique_ptr<std::uint8_t[]> slice;  // kSliceBytes

 private:
  int CallOnAbort(ZorMultiVolume::Phase phase);
  void Report(ZorMultiVolume::Phase phase);

  ZorError& error;
  AbortHook onAbort;
  CString volumePath;
};
