// VolumeFuzz.cpp - any bytes as a set of two volumes: restoring ends, writes nothing outside the
// destination, and delivers what a slow and simple reader delivers.
//
// Input: where the first volume ends (2 bytes), both volumes.
#include <utility>

#include "ZorMultiVolume.h"
#include "fuzz/Fuzz.h"
#include "platform/base/ByteOrder.h"
#include "tests/support/TestFolder.h"
#include "volume/VolumeFormat.h"

namespace kozor::fuzz {
namespace {

constexpr std::int32_t kMostFiles = 50;

const test::TestFolder& Folder() {
  static const test::TestFolder folder;
  return folder;
}

using Span = std::span<const std::uint8_t>;
using test::Bytes;

class Volumes : public ZorMultiVolume {
 public:
  void Check(const char* path) { CheckVolume(path); }
  // The contents of completed files, in order.
  std::vector<Bytes> files;

 protected:
  // Gives up if a volume is asked for a second time, or if the header states many files.
  int OnAbort(const ONABORTPARAM& param) override {
    if (param.phase == PhaseFileEnd) files.push_back(Folder().ReadFile(Target(files.size())));
    return param.volumeResult != VolumeFirstAsk || param.volume > 2 || param.filesDone > kMostFiles;
  }
  // Names are the application's affair: here they are numbers.
  CString OnMakeFileName(const char* destination, const char* name) override {
    ZorMultiVolume::OnMakeFileName(destination, name);
    return Folder().Lib(Target(files.size())).c_str();
  }
  CString OnMakeVolumeName(int number) override {
    return Folder().Lib(std::to_string(number)).c_str();
  }

 private:
  static std::string Target(std::size_t number) { return "target/" + std::to_string(number); }
};

// The payload of the volume with this number; false if it has none.
bool SlowPayload(Span volume, std::int32_t number, std::int32_t& count, Span& payload) {
  ZorVolumeHeader header;
  if (volume.size() < kShortestVolumeBytes) return false;
  const std::uint32_t headerBytes = ZorParseVolumeHeader(volume.data(), volume.size(), &header);
  if (headerBytes == 0 || !ZorIsVolumeHeader(header)) return false;
  std::uint64_t begin = headerBytes;
  for (const std::int32_t length :
       {header.applicationIdBytes, header.volumeLabelBytes, header.memoBytes}) {
    if (length < 0) return false;
    begin += static_cast<std::uint64_t>(length);
  }
  if (begin > volume.size() || header.volumeNumber != number) return false;
  payload = volume.subspan(static_cast<std::size_t>(begin));
  count = header.numberOfFiles;
  return true;
}

// The files of a set according to docs/volume-format.md.
std::vector<Bytes> SlowRestore(Span one, Span two) {
  std::vector<Bytes> files;
  std::int32_t count = 0;
  std::int32_t ignored = 0;
  Span left;
  Span next;
  if (!SlowPayload(one, 1, count, left)) return files;
  SlowPayload(two, 2, ignored, next);
  const auto turn = [&] {
    if (left.empty()) left = std::exchange(next, {});
    return !left.empty();
  };
  while (static_cast<std::int32_t>(files.size()) < std::min(count, kMostFiles)) {
    if (!turn() || left.size() < kRecordFixedBytes) break;
    const auto bytes = LoadLittle<std::uint32_t>(&left[6]);
    const std::uint32_t nameBytes = ZorNameBytes(LoadLittle<std::uint16_t>(&left[10]));
    if (nameBytes > kNameAreaBytes || left.size() < kRecordFixedBytes + nameBytes) break;
    left = left.subspan(kRecordFixedBytes + nameBytes);
    Bytes file;
    while (file.size() < bytes && turn()) {
      const auto part = left.first(std::min(bytes - file.size(), left.size()));
      file.insert(file.end(), part.begin(), part.end());
      left = left.subspan(part.size());
    }
    if (file.size() < bytes) break;
    files.push_back(std::move(file));
  }
  return files;
}

}  // namespace

void TestInput(Input input) {
  const std::size_t cut = input.Word();
  const auto bytes = input.Rest();
  const std::size_t first = std::min(cut, bytes.size());
  Folder().WriteFile("1", bytes.first(first));
  Folder().WriteFile("2", bytes.subspan(first));

  Volumes volumes;
  for (const char* name : {"1", "2"}) volumes.Check(Folder().Lib(name).c_str());
  const int result = volumes.Restore(nullptr, Folder().Lib("target\\").c_str());
  Require(result == (volumes.GetError() == ZorErrorNone ? 1 : 0));
  const auto expected = SlowRestore(bytes.first(first), bytes.subspan(first));
  volumes.files.resize(std::min<std::size_t>(volumes.files.size(), kMostFiles));
  Require(volumes.files == expected);
  std::filesystem::remove_all(Folder().Path("target"));
  Require(Folder().List() == std::vector<std::string>{"1", "2"});
}

}  // namespace kozor::fuzz
