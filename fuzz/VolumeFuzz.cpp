// VolumeFuzz.cpp - any bytes as a set of two volumes: restoring ends, writes nothing outside the
// destination, and delivers what a slow and simple reader delivers.
//
// Input: where the first volume ends (2 bytes), both volumes.
#include <utility>
#include <vector>

#include "ZorMultiVolume.h"
#include "fuzz/Fuzz.h"
#include "volume/VolumeFormat.h"

namespace kozor::fuzz {
namespace {

constexpr std::int32_t kMostFiles = 50;

const ScratchFolder& Folder() {
  static const ScratchFolder folder;
  return folder;
}

using Text = std::string;

class Volumes : public ZorMultiVolume {
 public:
  void Check(const char* path) { CheckVolume(path); }
  // The contents of completed files, in order.
  std::vector<Text> files;

 protected:
  // Gives up if a volume is asked for a second time, or if the header states many files.
  int OnAbort(const ONABORTPARAM& param) override {
    if (param.phase == PhaseFileEnd) files.push_back(Folder().Read(Target(files.size())));
    return param.volumeResult != VolumeFirstAsk || param.volume > 2 || param.filesDone > kMostFiles;
  }
  // Names are the application's affair: here they are numbers.
  CString OnMakeFileName(const char* destination, const char* name) override {
    ZorMultiVolume::OnMakeFileName(destination, name);
    return Folder().LibraryPath(Target(files.size())).c_str();
  }
  CString OnMakeVolumeName(int number) override {
    return Folder().LibraryPath(std::to_string(number)).c_str();
  }

 private:
  static Text Target(std::size_t number) { return "target/" + std::to_string(number); }
};

// The payload of the volume with this number; false if it has none.
bool SlowPayload(std::span<const std::uint8_t> volume, std::int32_t number, std::int32_t& count,
                 Text& payload) {
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
  const auto rest = volume.subspan(static_cast<std::size_t>(begin));
  payload.assign(rest.begin(), rest.end());
  count = header.numberOfFiles;
  return true;
}

// The files of a set according to docs/volume-format.md.
std::vector<Text> SlowRestore(std::span<const std::uint8_t> one,
                              std::span<const std::uint8_t> two) {
  std::vector<Text> files;
  std::int32_t count = 0;
  std::int32_t ignored = 0;
  Text left;
  Text next;
  if (!SlowPayload(one, 1, count, left)) return files;
  bool hasNext = SlowPayload(two, 2, ignored, next);
  const auto turn = [&] {
    if (!left.empty()) return true;
    left = std::exchange(next, {});
    return std::exchange(hasNext, false) && !left.empty();
  };
  while (static_cast<std::int32_t>(files.size()) < std::min(count, kMostFiles)) {
    if (!turn() || left.size() < kRecordFixedBytes) break;
    const auto byte = [&](std::size_t at) { return static_cast<unsigned char>(left[at]); };
    std::uint32_t bytes = 0;
    for (std::size_t i = 0; i < 4; ++i) bytes |= std::uint32_t{byte(6 + i)} << (8 * i);
    const std::uint32_t nameBytes =
        ZorNameBytes(static_cast<std::uint16_t>(byte(10) | byte(11) << 8));
    if (nameBytes > kNameAreaBytes || left.size() < kRecordFixedBytes + nameBytes) break;
    left.erase(0, kRecordFixedBytes + nameBytes);
    Text file;
    while (file.size() < bytes && turn()) {
      const Text part = left.substr(0, bytes - file.size());
      left.erase(0, part.size());
      file += part;
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
  Folder().Write("1", bytes.first(first));
  Folder().Write("2", bytes.subspan(first));

  Volumes volumes;
  for (const char* name : {"1", "2"}) volumes.Check(Folder().LibraryPath(name).c_str());
  const int result = volumes.Restore(nullptr, Folder().LibraryPath("target\\").c_str());
  Require(result == (volumes.GetError() == ZorErrorNone ? 1 : 0));
  const auto expected = SlowRestore(bytes.first(first), bytes.subspan(first));
  volumes.files.resize(std::min<std::size_t>(volumes.files.size(), kMostFiles));
  Require(volumes.files == expected);
  Folder().RequireOnly({"1", "2", "target"});
  Folder().Remove("target");
}

}  // namespace kozor::fuzz
