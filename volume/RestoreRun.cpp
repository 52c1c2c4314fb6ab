// RestoreRun.cpp - follows the record stream of a backup set from volume to volume and writes its
// files.
//
// The end of a volume and the end of a file are two independent events, and neither has a mark.
// Where a volume ends inside a file, the next one's payload is the file's next bytes; where it ends
// between two files, the next payload begins with a head.  The set has ended when as many files
// have been read as the first volume announced.
//
// Volumes are hostile input: no length is believed before it is known to lie inside its volume.
#include "volume/RestoreRun.h"

#include <algorithm>

#include "ZorFileServices.h"

ZorRestoreRun::ZorRestoreRun(ZorMultiVolume& object, ZorVolumeRun& frame, const char* source,
                             const CString& targetDirectory)
    : volumes(object), run(frame), destination(targetDirectory), namedByHook(source == nullptr) {}

void ZorRestoreRun::RestoreFiles() {
  TakeNextVolume();
  while (run.progress.filesDone < run.progress.filesTotal) {
    while (remaining == 0) TakeNextVolume();
    if (run.FileIsCopied()) ReadHead();
    CopySlice();
  }
}

void ZorRestoreRun::ReadHead() {
  ReadPayload(&record, kRecordFixedBytes);
  const std::uint32_t nameBytes = ZorNameBytes(record.nameWord);
  if (nameBytes > kNameAreaBytes) ZorVolumeRun::Leave(ZorErrorFileFailure);
  ReadPayload(record.name, nameBytes);

  targetPath = volumes.OnMakeFileName(destination, ZorRecordName(record));
  run.BeginFile(targetPath, record.fileBytes);
  if (!targetPath.IsEmpty()) OpenTarget();
}

void ZorRestoreRun::OpenTarget() {
  if (ZorCreateDirectory(targetPath, 1, nullptr) == 0) ZorVolumeRun::Leave(ZorErrorMakeDirectory);
  if (target.Open(targetPath, CFile::modeCreate | CFile::modeWrite | CFile::shareExclusive) == 0) {
    ZorVolumeRun::Leave(ZorErrorFileOpen);
  }
}

// An empty file has one slice too, of no bytes.
void ZorRestoreRun::CopySlice() {
  const std::uint32_t bytes = run.SliceBytes(
      static_cast<std::uint32_t>(std::min<std::uint64_t>(remaining, ZorVolumeRun::kSliceBytes)));
  ReadPayload(run.slice.get(), bytes);
  if (!targetPath.IsEmpty()) target.Write(run.slice.get(), bytes);
  run.CountSlice(bytes);
  if (run.FileIsCopied()) FinishFile();
}

void ZorRestoreRun::FinishFile() {
  if (!targetPath.IsEmpty()) {
    target.Close();
    // In this order: a file that is read-only by then takes no time.
    ZorSetFileTimeStamp(targetPath, record.timeStamp);
    ZorSetFileAttribute(targetPath, record.attribute);
  }
  run.EndFile();
}

// Error 3 when the volume doesn't hold that much, as one that was cut inside a head.
void ZorRestoreRun::ReadPayload(void* buffer, std::uint32_t count) {
  if (count > remaining) ZorVolumeRun::Leave(ZorErrorFileFailure);
  ZorVolumeRun::ReadWhole(*volumeFile, buffer, count);
  remaining -= count;
}

void ZorRestoreRun::TakeNextVolume() {
  ZorVolumeRun::Progress& progress = run.progress;
  if (namedByHook) run.SetVolumePath(volumes.OnMakeVolumeName(progress.volume + 1));
  volumeFile.reset();
  run.AskForVolume([this] {
    const ZorMultiVolume::VolumeResult result = TryVolume();
    if (result != ZorMultiVolume::VolumeFirstAsk) volumeFile.reset();
    return result;
  });
  if (progress.volume == 0) {
    progress.filesTotal = header.numberOfFiles;
    if (progress.filesTotal < 1) return;
  }
  ++progress.volume;
}

// One attempt.  Success leaves the volume open at the start of its payload.
ZorMultiVolume::VolumeResult ZorRestoreRun::TryVolume() {
  CFile& file = volumeFile.emplace();
  if (file.Open(run.VolumePath(), CFile::modeRead | CFile::shareExclusive) == 0) {
    return ZorMultiVolume::VolumeNoOpen;
  }
  const std::uint64_t volumeBytes = file.GetLength();
  if (volumeBytes < kShortestVolumeBytes) return ZorMultiVolume::VolumeNoOpen;
  if (volumes.CheckVolume(file) == 0) return ZorMultiVolume::VolumeBadIdentity;

  const std::uint64_t payload = file.Seek(0, CFile::current);
  file.Seek(0, CFile::begin);
  if (ZorReadVolumeHeader(file, &header) == 0) return ZorMultiVolume::VolumeBadIdentity;
  file.Seek(static_cast<std::int64_t>(payload), CFile::begin);
  remaining = volumeBytes - payload;
  return header.volumeNumber == run.progress.volume + 1 ? ZorMultiVolume::VolumeFirstAsk
                                                        : ZorMultiVolume::VolumeWrongNumber;
}
