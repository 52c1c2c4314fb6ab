// Restore.cpp - ZorMultiVolume::Restore: follows the record stream of a backup set from volume to
// volume and writes its files.
//
// Volumes and files end independently of each other, and neither end is marked.  If a volume ends
// inside a file, the payload of the next one continues with the file's bytes; if it ends between
// two files, the next payload begins with a record head.  The set ends when the number of files
// that the first volume states has been read.
//
// Volumes are untrusted input: every length is checked against its volume before use.
#include <algorithm>

#include "ZorFileServices.h"
#include "files/ParentDirectory.h"
#include "files/Path.h"
#include "volume/VolumeFormat.h"
#include "volume/VolumeRun.h"

namespace {

class RestoreRun final : public ZorVolumeRun {
 public:
  RestoreRun(ZorMultiVolume& object, const char* source, const char* targetDirectory)
      : ZorVolumeRun(Restore, object, source), destination(ZorDirectoryText(targetDirectory)) {}

 private:
  void Work() override {
    TakeNextVolume();
    while (progress.filesDone < progress.filesTotal) {
      while (remaining == 0) TakeNextVolume();
      if (FileIsCopied()) ReadHead();
      CopySlice();
    }
  }

  void ReleaseFiles() override {
    volumeFile.Abort();
    target.Abort();
  }

  void ReadHead() {
    ReadPayload(&record, kRecordFixedBytes);
    const std::uint32_t nameBytes = ZorNameBytes(record.nameWord);
    if (nameBytes > kNameAreaBytes) throw ZorFailure{ZorErrorFileFailure};
    ReadPayload(record.name, nameBytes);

    targetPath = MakeFileName(destination, ZorRecordName(record));
    BeginFile(targetPath, record.fileBytes);
    if (!targetPath.IsEmpty()) OpenTarget();
  }

  void OpenTarget() {
    if (!parent.Make(targetPath)) throw ZorFailure{ZorErrorMakeDirectory};
    constexpr unsigned int kFlags = CFile::modeCreate | CFile::modeWrite | CFile::shareExclusive;
    if (target.Open(targetPath, kFlags)) return;
    if (!parent.MakeAnew(targetPath)) throw ZorFailure{ZorErrorMakeDirectory};
    if (target.Open(targetPath, kFlags) == 0) throw ZorFailure{ZorErrorFileOpen};
  }

  // An empty file has one slice of 0 bytes.
  void CopySlice() {
    const std::uint32_t bytes =
        SliceBytes(static_cast<std::uint32_t>(std::min<std::uint64_t>(remaining, kSliceBytes)));
    ReadPayload(slice.get(), bytes);
    if (!targetPath.IsEmpty()) target.Write(slice.get(), bytes);
    CountSlice(bytes);
    if (FileIsCopied()) FinishFile();
  }

  void FinishFile() {
    if (!targetPath.IsEmpty()) {
      target.Close();
      // The time first: it can't be set on a read-only file.
      ZorSetFileTimeStamp(targetPath, record.timeStamp);
      ZorSetFileAttribute(targetPath, record.attribute);
    }
    EndFile();
  }

  // Fails with error 3 if the volume holds less, for example if it was truncated inside a head.
  void ReadPayload(void* buffer, std::uint32_t count) {
    if (count > remaining) throw ZorFailure{ZorErrorFileFailure};
    ReadWhole(volumeFile, buffer, count);
    remaining -= count;
  }

  void TakeNextVolume() {
    volumeFile.Abort();
    AskForVolume([this] {
      const auto objection = TryVolume();
      if (objection) volumeFile.Abort();
      return objection;
    });
    if (progress.volume == 0) {
      progress.filesTotal = header.numberOfFiles;
      if (progress.filesTotal < 1) return;
    }
    ++progress.volume;
  }

  // One attempt.  On success the volume is open at the start of its payload.
  std::optional<ZorMultiVolume::VolumeResult> TryVolume() {
    if (volumeFile.Open(VolumePath(), CFile::modeRead | CFile::shareExclusive) == 0) {
      return ZorMultiVolume::VolumeNoOpen;
    }
    const std::uint64_t volumeBytes = volumeFile.GetLength();
    if (volumeBytes < kShortestVolumeBytes) return ZorMultiVolume::VolumeNoOpen;
    if (!Accepts(volumeFile)) return ZorMultiVolume::VolumeBadIdentity;

    const std::uint64_t payload = volumeFile.Seek(0, CFile::current);
    volumeFile.Seek(0, CFile::begin);
    if (ZorReadVolumeHeader(volumeFile, &header) == 0) return ZorMultiVolume::VolumeBadIdentity;
    volumeFile.Seek(static_cast<std::int64_t>(payload), CFile::begin);
    remaining = volumeBytes - payload;
    if (header.volumeNumber != progress.volume + 1) return ZorMultiVolume::VolumeWrongNumber;
    return std::nullopt;
  }

  const CString destination;  // ends in a backslash, or is empty
  CFile volumeFile;
  CFile target;
  ZorParentDirectory parent{destination};
  CString targetPath;  // empty for a file that is skipped
  ZorFileRecord record{};
  ZorVolumeHeader header{};
  std::uint64_t remaining = 0;  // unread bytes of the current volume's payload
};

}  // namespace

int ZorMultiVolume::Restore(const char* source, const char* destination) {
  return RestoreRun(*this, source, destination).Run();
}
