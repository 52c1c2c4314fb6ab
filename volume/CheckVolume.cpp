// CheckVolume.cpp - checks whether a file is a volume that the application accepts.
#include <cstdint>
#include <limits>
#include <memory>
#include <new>

#include "ZorMultiVolume.h"
#include "volume/VolumeFormat.h"

namespace {

// The three areas of a volume, in their order on it.
struct Areas {
  std::array<std::int32_t, 3> lengths;
  std::unique_ptr<unsigned char[]> bytes;  // null when all three are empty

  // Returns false, before allocating, if the lengths in the header are impossible.
  bool Read(CFile& file, const ZorVolumeHeader& header);
};

bool Areas::Read(CFile& file, const ZorVolumeHeader& header) {
  lengths = {header.applicationIdBytes, header.volumeLabelBytes, header.memoBytes};
  std::int64_t sum = 0;
  for (const std::int32_t length : lengths) {
    if (length < 0) return false;
    sum += length;
  }
  const std::uint64_t bytesLeft = file.GetLength() - file.Seek(0, CFile::current);
  if (sum > std::numeric_limits<std::int32_t>::max() ||
      static_cast<std::uint64_t>(sum) > bytesLeft) {
    return false;
  }
  if (sum == 0) return true;
  const auto count = static_cast<unsigned int>(sum);
  bytes.reset(new (std::nothrow) unsigned char[count]);
  return bytes != nullptr && file.Read(bytes.get(), count) == count;
}

}  // namespace

int ZorMultiVolume::CheckVolume(CFile& file) {
  ZorVolumeHeader header;
  if (ZorReadVolumeHeader(file, &header) == 0 || !ZorIsVolumeHeader(header)) return 0;
  Areas areas;
  if (!areas.Read(file, header)) return 0;

  const unsigned char* data = areas.bytes.get();
  for (int kind = 0; kind < 3; ++kind) {
    const std::int32_t length = areas.lengths[static_cast<std::size_t>(kind)];
    if (OnCheckVolume(kind, data, length) == 0) return 0;
    if (data != nullptr) data += length;
  }
  return 1;
}

int ZorMultiVolume::CheckVolume(const char* path) {
  int accepted = 0;
  CFile file;
  if (file.Open(path, CFile::modeRead | CFile::shareExclusive) == 0) return 0;
  try {
    accepted = CheckVolume(file);
    file.Close();
  } catch (CException* failure) {  // NOLINT(misc-throw-by-value-catch-by-reference)
    failure->Delete();
  }
  return accepted;
}
