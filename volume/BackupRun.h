// BackupRun.h - writes the record stream of a backup set and cuts it into volumes.
#pragma once

#include <cstdint>

#include "ZorMultiVolume.h"
#include "volume/VolumeFormat.h"
#include "volume/VolumeRun.h"

// A volume being written.  What Write has returned from is on the medium, so a run that is torn
// down leaves volumes that are whole up to some write.
class ZorVolumeFile : public CFile {
 public:
  void Write(const void* buffer, unsigned int count) override;
};

class ZorBackupRun {
 public:
  // `baseDirectory` ends in a backslash or is empty.  With `target` null, OnMakeVolumeName gives
  // the path of each volume.
  ZorBackupRun(ZorMultiVolume& volumes, ZorVolumeRun& run, const CString& baseDirectory,
               const char* target);

  // Stores the files in the order of the list.  Leaves the run by an exception when it can't.
  void StoreFiles(const ZorFileList& names);

 private:
  void StoreFile(const CString& name);
  void RecordAttributes();
  void RecordSize(CFile& source);
  std::uint32_t RecordName(const CString& name);
  void WriteHead(std::uint32_t headBytes);
  void CopySlice(CFile& source);

  void TakeNextVolume(std::uint32_t wanted);
  ZorMultiVolume::VolumeResult TryVolume(std::uint32_t wanted);
  std::uint32_t QuerySpace();
  std::uint64_t Overhead() const;
  void WriteVolumeHead();
  void WriteArea(const unsigned char* data, int length);

  ZorMultiVolume& volumes;
  ZorVolumeRun& run;
  const CString baseDirectory;
  const bool namedByHook;
  CString sourcePath;
  ZorFileRecord record{};
  ZorVolumeHeader header;
  ZorVolumeFile volumeFile;
  std::uint32_t remaining = 0;  // bytes that the present volume still takes
};
