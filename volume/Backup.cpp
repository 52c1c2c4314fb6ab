// Backup.cpp - ZorMultiVolume::Backup: writes the record stream of a set and cuts it into volumes.
//
// Each volume is asked once how much it takes; from then on a byte count alone decides where the
// stream is cut, inside a file's data or between two records.  A record head is never cut, and at
// least one more byte of room must follow it on the same volume.  So a request for a volume states
// how many bytes it must take in one piece.
#include <algorithm>
#include <cstring>
#include <limits>

#include "ZorFileServices.h"
#include "files/Path.h"
#include "platform/base/Clock.h"
#include "volume/VolumeFormat.h"
#include "volume/VolumeRun.h"

namespace {

constexpr std::uint32_t kMaxBytes = std::numeric_limits<std::uint32_t>::max();

bool IsNetworkPath(const char* path) {
  const char* root = nullptr;
  ZorSplitPath(path, &root, nullptr, nullptr);
  return root != nullptr && _mbsnbcmp(reinterpret_cast<const unsigned char*>(root),
                                      reinterpret_cast<const unsigned char*>("\\\\"), 2) == 0;
}

// A volume being written.  Every Write reaches the medium before it returns, so a killed run leaves
// volumes that are complete up to the last write.
class VolumeFile final : public CFile {
 public:
  void Write(const void* buffer, unsigned int count) override {
    CFile::Write(buffer, count);
    Flush();
  }
};

class BackupRun final : public ZorVolumeRun {
 public:
  BackupRun(ZorMultiVolume& object, const ZorFind& selection, const char* target)
      : ZorVolumeRun(Backup, object, target),
        find(selection),
        baseDirectory(ZorDirectoryText(selection.GetCurrentDirectoryA())),
        header(ZorMakeVolumeHeader()) {}

 private:
  // Directories themselves are never stored.
  bool Prepare() override {
    ZorFind filesOnly(find);
    filesOnly.SetAttribute(find.GetAttribute() & ~unsigned{FILE_ATTRIBUTE_DIRECTORY});
    filesOnly.Find(names, 0);
    progress.filesTotal = names.GetCount();
    header.numberOfFiles = names.GetCount();
    return !names.IsEmpty();
  }

  void Work() override {
    for (const CString& name : names) StoreFile(name);
    volumeFile.Close();
  }

  void ReleaseFiles() override { volumeFile.Abort(); }

  void StoreFile(const CString& name) {
    sourcePath = ZorIsFullPath(name) != 0 ? name : baseDirectory + name;
    CFile source;
    OpenSource(source);
    RecordStatus(source);
    const std::uint32_t headBytes = RecordName(name);

    BeginFile(sourcePath, record.fileBytes);
    // The head and one byte after it must fit, or the volume ends here.
    if (remaining <= headBytes) TakeNextVolume(headBytes + 1);
    WriteHead(headBytes);
    while (!FileIsCopied()) {
      if (remaining == 0) TakeNextVolume(1);
      CopySlice(source);
    }
    source.Close();
    EndFile();
  }

  void OpenSource(CFile& source) {
    if (source.Open(sourcePath, CFile::modeRead | CFile::shareExclusive) != 0) return;
    CFileStatus status;
    const bool isThere = CFile::GetStatus(sourcePath, status) != 0;
    throw ZorFailure{isThere ? ZorErrorFileOpen : ZorErrorFileFailure};
  }

  // Of the open file, so that all facts are of the same file.
  void RecordStatus(const CFile& source) {
    CFileStatus status;
    if (!source.GetStatus(status) || status.m_size > kMaxBytes) {
      throw ZorFailure{ZorErrorFileFailure};
    }
    record.attribute = status.m_attribute;
    record.timeStamp = kozor::UnixIn31Bits(kozor::Ticks(status.m_mtime)).value_or(0);
    record.fileBytes = static_cast<std::uint32_t>(status.m_size);
  }

  // Returns the size of the whole head in bytes.
  std::uint32_t RecordName(const CString& name) {
    const auto length = static_cast<std::uint32_t>(name.GetLength());
    if (length >= kNameAreaBytes) throw ZorFailure{ZorErrorFileFailure};
    record.nameWord = ZorNameWord(length);
    std::memcpy(record.name, static_cast<const char*>(name), length + 1);
    return kRecordFixedBytes + length + 1;
  }

  void WriteHead(std::uint32_t headBytes) {
    volumeFile.Write(&record, headBytes);
    remaining -= headBytes;
  }

  void CopySlice(CFile& source) {
    const std::uint32_t bytes = SliceBytes(remaining);
    ReadWhole(source, slice.get(), bytes);
    volumeFile.Write(slice.get(), bytes);
    remaining -= bytes;
    CountSlice(bytes);
  }

  // Moves on to a volume that takes at least `wanted` bytes of payload.
  void TakeNextVolume(std::uint32_t wanted) {
    volumeFile.Close();
    AskForVolume([&] { return TryVolume(wanted); });
    ++progress.volume;
    WriteVolumeHead();
    remaining -= static_cast<std::uint32_t>(Overhead());
  }

  // One attempt.  On success the empty volume is open and `remaining` holds all of its room.
  std::optional<ZorMultiVolume::VolumeResult> TryVolume(std::uint32_t wanted) {
    // The space of a share isn't queried: it counts as the largest possible volume.
    remaining =
        IsNetworkPath(VolumePath())
            ? kMaxBytes
            : static_cast<std::uint32_t>(std::min<std::uint64_t>(QueryDiskSpace(), kMaxBytes));
    if (remaining < Overhead() + wanted) return ZorMultiVolume::VolumeNoSpace;
    if (ZorCreateDirectory(VolumePath(), 1, nullptr) == 0) return ZorMultiVolume::VolumeNoDirectory;
    constexpr unsigned int kFlags = CFile::modeCreate | CFile::modeWrite | CFile::shareExclusive;
    if (volumeFile.Open(VolumePath(), kFlags) == 0) return ZorMultiVolume::VolumeNoCreate;
    return std::nullopt;
  }

  // Bytes before the payload of every volume.
  std::uint64_t Overhead() const {
    std::uint64_t bytes = ZorVolumeHeaderBytes(BackupVersion());
    for (const Area& area : Areas()) bytes += static_cast<std::uint32_t>(area.length);
    return bytes;
  }

  void WriteVolumeHead() {
    const std::array<Area, 3> areas = Areas();
    header.applicationIdBytes = areas[0].length;
    header.volumeLabelBytes = areas[1].length;
    header.memoBytes = areas[2].length;
    header.volumeNumber = progress.volume;
    if (BackupVersion() == kBackupVersion100) {
      const ZorVolumeHeader100 narrow = ZorNarrowVolumeHeader(header);
      volumeFile.Write(&narrow, sizeof(narrow));
    } else {
      volumeFile.Write(&header, sizeof(header));
    }
    for (const Area& area : areas) {
      if (area.length > 0) volumeFile.Write(area.data, static_cast<unsigned int>(area.length));
    }
  }

  const ZorFind& find;
  const CString baseDirectory;  // ends in a backslash, or is empty
  ZorFileList names;
  CString sourcePath;
  ZorFileRecord record{};
  ZorVolumeHeader header;
  VolumeFile volumeFile;
  std::uint32_t remaining = 0;  // bytes that the current volume still takes
};

}  // namespace

int ZorMultiVolume::Backup(const ZorFind& find, const char* target) {
  return BackupRun(*this, find, target).Run();
}
