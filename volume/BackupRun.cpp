// BackupRun.cpp - writes the record stream of a backup set and cuts it into volumes.
//
// Each volume says once how much it takes, and from then on a count decides alone where the stream
// is cut: inside a file's data or between two records.  A record head never crosses a cut, and at
// least one byte of the file's data follows it on the same volume; so whoever asks for a volume
// says how many bytes in one piece it must take.
#include "volume/BackupRun.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "ZorFileServices.h"
#include "files/Path.h"

namespace {

constexpr std::uint32_t kMaxBytes = std::numeric_limits<std::uint32_t>::max();

bool IsNetworkPath(const char* path) {
  const char* root = nullptr;
  ZorSplitPath(path, &root, nullptr, nullptr);
  return root != nullptr && _mbsnbcmp(reinterpret_cast<const unsigned char*>(root),
                                      reinterpret_cast<const unsigned char*>("\\\\"), 2) == 0;
}

}  // namespace

void ZorVolumeFile::Write(const void* buffer, unsigned int count) {
  CFile::Write(buffer, count);
  Flush();
}

ZorBackupRun::ZorBackupRun(ZorMultiVolume& object, ZorVolumeRun& frame, const CString& base,
                           const char* target)
    : volumes(object),
      run(frame),
      baseDirectory(base),
      namedByHook(target == nullptr),
      header(ZorMakeVolumeHeader()) {}

void ZorBackupRun::StoreFiles(const ZorFileList& names) {
  header.numberOfFiles = names.GetCount();
  for (POSITION position = names.GetHeadPosition(); position != nullptr;) {
    StoreFile(names.GetNext(position));
  }
  volumeFile.Close();
}

void ZorBackupRun::StoreFile(const CString& name) {
  sourcePath = ZorIsFullPath(name) != 0 ? name : baseDirectory + name;
  RecordAttributes();
  CFile source;
  RecordSize(source);
  const std::uint32_t headBytes = RecordName(name);

  run.BeginFile(sourcePath, record.fileBytes);
  // With no more bytes left than the head has, the volume is given up.
  if (remaining <= headBytes) TakeNextVolume(headBytes + 1);
  WriteHead(headBytes);
  while (!run.FileIsCopied()) {
    if (remaining == 0) TakeNextVolume(1);
    CopySlice(source);
  }
  source.Close();
  run.EndFile();
}

void ZorBackupRun::RecordAttributes() {
  unsigned int attribute = 0;
  if (ZorGetFileAttribute(sourcePath, attribute) == 0) ZorVolumeRun::Leave(ZorErrorFileFailure);
  record.attribute = static_cast<std::uint8_t>(attribute);
  long timeStamp = 0;  // stays when the time can't be read
  ZorGetFileTimeStamp(sourcePath, timeStamp);
  record.timeStamp = static_cast<std::int32_t>(timeStamp);
}

void ZorBackupRun::RecordSize(CFile& source) {
  if (source.Open(sourcePath, CFile::modeRead | CFile::shareExclusive) == 0) {
    ZorVolumeRun::Leave(ZorErrorFileOpen);
  }
  const std::uint64_t size = source.GetLength();
  if (size > kMaxBytes) ZorVolumeRun::Leave(ZorErrorFileFailure);
  record.fileBytes = static_cast<std::uint32_t>(size);
}

// Returns the bytes of the whole head.
std::uint32_t ZorBackupRun::RecordName(const CString& name) {
  const auto length = static_cast<std::uint32_t>(name.GetLength());
  if (length >= kNameAreaBytes) ZorVolumeRun::Leave(ZorErrorFileFailure);
  record.nameWord = ZorNameWord(length);
  std::memcpy(record.name, static_cast<const char*>(name), length + 1);
  return kRecordFixedBytes + length + 1;
}

void ZorBackupRun::WriteHead(std::uint32_t headBytes) {
  volumeFile.Write(&record, headBytes);
  remaining -= headBytes;
}

void ZorBackupRun::CopySlice(CFile& source) {
  const std::uint32_t bytes = run.SliceBytes(remaining);
  ZorVolumeRun::ReadWhole(source, run.slice.get(), bytes);
  volumeFile.Write(run.slice.get(), bytes);
  remaining -= bytes;
  run.CountSlice(bytes);
}

// Moves on to a volume that takes at least `wanted` bytes of payload.
void ZorBackupRun::TakeNextVolume(std::uint32_t wanted) {
  volumeFile.Close();
  const int volumeNumber = run.progress.volume + 1;
  if (namedByHook) run.SetVolumePath(volumes.OnMakeVolumeName(volumeNumber));
  run.AskForVolume([&] { return TryVolume(wanted); });
  run.progress.volume = volumeNumber;
  WriteVolumeHead();
  remaining -= static_cast<std::uint32_t>(Overhead());
}

// One attempt.  Success leaves the empty volume open and its whole room in `remaining`.
ZorMultiVolume::VolumeResult ZorBackupRun::TryVolume(std::uint32_t wanted) {
  const CString& path = run.VolumePath();
  remaining = QuerySpace();
  if (remaining < Overhead() + wanted) return ZorMultiVolume::VolumeNoSpace;
  if (ZorCreateDirectory(path, 1, nullptr) == 0) return ZorMultiVolume::VolumeNoDirectory;
  if (volumeFile.Open(path, CFile::modeCreate | CFile::modeWrite | CFile::shareExclusive) == 0) {
    return ZorMultiVolume::VolumeNoCreate;
  }
  return ZorMultiVolume::VolumeFirstAsk;
}

// The room of a share isn't asked for: it counts as all that a volume can ever take.
std::uint32_t ZorBackupRun::QuerySpace() {
  const CString& path = run.VolumePath();
  if (IsNetworkPath(path)) return kMaxBytes;
  return static_cast<std::uint32_t>(
      std::min<std::uint64_t>(volumes.OnQueryDiskSpace(path), kMaxBytes));
}

// What stands in front of the payload of every volume, in bytes.
std::uint64_t ZorBackupRun::Overhead() const {
  return std::uint64_t{ZorVolumeHeaderBytes(volumes.backupVersion)} +
         static_cast<std::uint32_t>(volumes.applicationIdLength) +
         static_cast<std::uint32_t>(volumes.volumeLabelLength) +
         static_cast<std::uint32_t>(volumes.memoLength);
}

void ZorBackupRun::WriteVolumeHead() {
  header.applicationIdBytes = volumes.applicationIdLength;
  header.volumeLabelBytes = volumes.volumeLabelLength;
  header.memoBytes = volumes.memoLength;
  header.volumeNumber = run.progress.volume;
  if (volumes.backupVersion == kBackupVersion100) {
    const ZorVolumeHeader100 narrow = ZorNarrowVolumeHeader(header);
    volumeFile.Write(&narrow, sizeof(narrow));
  } else {
    volumeFile.Write(&header, sizeof(header));
  }
  WriteArea(volumes.applicationId, volumes.applicationIdLength);
  WriteArea(volumes.volumeLabel, volumes.volumeLabelLength);
  WriteArea(volumes.memo, volumes.memoLength);
}

void ZorBackupRun::WriteArea(const unsigned char* data, int length) {
  if (length > 0) volumeFile.Write(data, static_cast<unsigned int>(length));
}
