// VolumeReader.cpp - see VolumeReader.h.
#include "VolumeReader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "Console.h"
#include "Failure.h"
#include "Host.h"
#include "platform/classlib/ClassLib.h"
#include "volume/VolumeFormat.h"

namespace kozor::program {

namespace {

// A file that nobody writes.
class VolumeFile final : public VolumeBytes {
 public:
  explicit VolumeFile(const std::filesystem::path& volumePath) : path(volumePath) {
    const FileState state = Inspect(path);
    if (state.isDirectory) throw Failure(Visible(path.string()) + ": a directory, not a volume");
    // Opening a pipe would block.
    if (!state.problem.empty() ||
        file.Open(LibraryPath(path).c_str(), CFile::modeRead | CFile::shareDenyNone) == 0) {
      throw Failure(Visible(path.string()) + ": the volume can't be opened");
    }
    Guarded([&] { end = file.GetLength(); });
  }

  std::uint64_t Await(std::uint64_t /*wanted*/) override { return end; }

  void Read(std::uint64_t offset, std::span<unsigned char> target) override {
    Guarded([&] {
      file.Seek(static_cast<std::int64_t>(offset), CFile::begin);
      while (!target.empty()) {
        constexpr std::size_t kMostBytes = 1 << 24;
        const auto wanted = static_cast<unsigned int>(std::min(target.size(), kMostBytes));
        if (file.Read(target.data(), wanted) != wanted) {
          throw Failure(Visible(path.string()) + ": can't read");
        }
        target = target.subspan(wanted);
      }
    });
  }

 private:
  // The class library throws pointers; callers expect Failure.
  template <typename Work>
  void Guarded(const Work& work) const {
    try {
      work();
    } catch (CException* exception) {
      exception->Delete();
      throw Failure(Visible(path.string()) + ": can't read");
    }
  }

  const std::filesystem::path path;
  CFile file;
  std::uint64_t end = 0;
};

}  // namespace

VolumeReader::VolumeReader(const std::filesystem::path& volumePath)
    : VolumeReader(volumePath, std::make_unique<VolumeFile>(volumePath)) {}

VolumeReader::VolumeReader(std::filesystem::path volumePath,
                           std::unique_ptr<VolumeBytes> volumeBytes)
    : path(std::move(volumePath)), bytes(std::move(volumeBytes)) {
  ReadHeader();
}

void VolumeReader::ReadHeader() {
  std::array<unsigned char, sizeof(ZorVolumeHeader)> start{};
  const auto startBytes = std::min<std::uint64_t>(start.size(), bytes->Await(start.size()));
  const std::span<unsigned char> there =
      std::span(start).first(static_cast<std::size_t>(startBytes));
  Read(0, there);
  ZorVolumeHeader raw{};
  std::uint64_t offset = ZorParseVolumeHeader(there.data(), there.size(), &raw);
  if (offset == 0) throw Failure(Visible(path.string()) + ": not a volume of a backup set");
  header.formatVersion = offset == sizeof(ZorVolumeHeader) ? 101 : kBackupVersion100;
  header.number = raw.volumeNumber;
  header.files = raw.numberOfFiles;
  const auto area = [&](std::int32_t areaBytes) {
    std::string text = ReadText(offset, static_cast<std::uint32_t>(areaBytes));
    offset += text.size();
    return text;
  };
  header.id = area(raw.applicationIdBytes);
  header.label = area(raw.volumeLabelBytes);
  header.memo = area(raw.memoBytes);
  payload = offset;
  at = offset;
}

std::optional<VolumeRecord> VolumeReader::Next() {
  if (!Reaches(at + 1)) return std::nullopt;
  VolumeRecord record = RecordAt(at);
  at = record.offset + record.size;
  return record;
}

VolumeRecord VolumeReader::RecordAt(std::uint64_t offset) {
  ZorFileRecord raw{};
  const std::string head = ReadText(offset, kRecordFixedBytes);
  std::memcpy(&raw, head.data(), head.size());
  const std::uint32_t nameBytes = ZorNameBytes(raw.nameWord);
  if (nameBytes > kNameAreaBytes) throw Failure(Visible(path.string()) + ": damaged");
  const std::string name = ReadText(offset + kRecordFixedBytes, nameBytes);
  std::memcpy(raw.name, name.data(), name.size());
  VolumeRecord record;
  record.name = static_cast<const char*>(ZorRecordName(raw));
  record.size = raw.fileBytes;
  record.time = raw.timeStamp;
  record.attribute = raw.attribute;
  record.offset = offset + kRecordFixedBytes + nameBytes;
  return record;
}

void VolumeReader::Read(std::uint64_t offset, std::span<unsigned char> target) {
  const std::uint64_t end = bytes->Await(offset + target.size());
  if (offset > end || target.size() > end - offset) {
    throw Failure(Visible(path.string()) + ": the volume is damaged or cut short");
  }
  constexpr std::size_t kBufferBytes = 1 << 18;
  if (target.size() >= kBufferBytes) return bytes->Read(offset, target);
  const bool isInside =
      offset >= bufferBegin && offset + target.size() <= bufferBegin + buffer.size();
  if (!isInside) {
    buffer.resize(static_cast<std::size_t>(std::min<std::uint64_t>(kBufferBytes, end - offset)));
    bufferBegin = offset;
    bytes->Read(offset, buffer);
  }
  std::copy_n(buffer.begin() + static_cast<std::ptrdiff_t>(offset - bufferBegin), target.size(),
              target.begin());
}

std::string VolumeReader::ReadText(std::uint64_t offset, std::size_t size) {
  if (offset > std::numeric_limits<std::uint64_t>::max() - size || !Reaches(offset + size)) {
    throw Failure(Visible(path.string()) + ": the volume is damaged or cut short");
  }
  std::string text(size, '\0');
  Read(offset, {reinterpret_cast<unsigned char*>(text.data()), size});
  return text;
}

}  // namespace kozor::program
