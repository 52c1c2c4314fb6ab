// RestoreRun.h - follows the record stream of a backup set from volume to volume and writes its
// files.
#pragma once

#include <cstdint>
#include <optional>

#include "ZorMultiVolume.h"
#include "volume/VolumeFormat.h"
#include "volume/VolumeRun.h"

class ZorRestoreRun {
 public:
  // `destination` ends in a backslash or is empty.  With `source` null, OnMakeVolumeName gives the
  // path of each volume.
  ZorRestoreRun(ZorMultiVolume& volumes, ZorVolumeRun& run, const char* source,
                const CString& destination);

  // Restores the whole set.  Leaves the run by an exception when it can't.
  void RestoreFiles();

 private:
  void ReadHead();
  CString ReadName();
  void OpenTarget();
  void CopySlice();
  void FinishFile();
  void ReadPayload(void* buffer, std::uint32_t count);

  void TakeNextVolume();
  ZorMultiVolume::VolumeResult TryVolume();

  ZorMultiVolume& volumes;
  ZorVolumeRun& run;
  const CString destination;
  const bool namedByHook;
  std::optional<CFile> volumeFile;
  ZorVolumeHeader header{};
  std::uint64_t remaining = 0;  // bytes of the present volume's payload that aren't read yet
  ZorFileRecord record{};       // head of the present file
  CString targetPath;           // empty for a file that is left out
  CFile target;
};
