// VolumeReader.cpp - see VolumeReader.h.
#include "VolumeReader.h"

#include <algorithm>
#include <cstring>

#include "Console.h"
#include "Failure.h"
#include "Host.h"
#include "volume/VolumeFormat.h"

namespace kozor::program {

// The class library throws pointers; callers expect Failure.
template <typename Work>
void VolumeReader::Guarded(const Work& work) const {
  try {
    work();
  } catch (CException* exception) {
    exception->Delete();
    throw Failure(Visible(path.string()) + ": can't read");
  }
}

VolumeReader::VolumeReader(const std::filesystem::path& volumePath) : path(volumePath) {
  const FileState state = Inspect(path);
  if (state.isDirectory) throw Failure(Visible(path.string()) + ": a directory, not a volume");
  // Opening a pipe would block.
  if (!state.problem.empty() ||
      file.Open(LibraryPath(path).c_str(), CFile::modeRead | CFile::shareDenyNone) == 0) {
    throw Failure(Visible(path.string()) + ": the volume can't be opened");
  }
  std::uint64_t offset = 0;
  ZorVolumeHeader raw{};
  Guarded([&] {
    end = static_cast<std::uint64_t>(file.GetLength());
    if (ZorReadVolumeHeader(file, &raw) == 0) {
      throw Failure(Visible(path.string()) + ": not a volume of a backup set");
    }
    offset = file.Seek(0, CFile::current);
  });
  header.formatVersion = offset == sizeof(ZorVolumeHeader) ? 101 : kBackupVersion100;
  header.number = raw.volumeNumber;
  header.files = raw.numberOfFiles;
  const auto area = [&](std::int32_t bytes) {
    std::string text = ReadText(offset, static_cast<std::uint32_t>(bytes));
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
  if (at >= end) return std::nullopt;
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

void VolumeReader::Read(std::uint64_t offset, std::span<unsigned char> bytes) {
  if (offset > end || bytes.size() > end - offset) {
    throw Failure(Visible(path.string()) + ": the volume is damaged or cut short");
  }
  constexpr std::size_t kBufferBytes = 1 << 18;
  if (bytes.size() >= kBufferBytes) return ReadFile(offset, bytes);
  const bool isInside =
      offset >= bufferBegin && offset + bytes.size() <= bufferBegin + buffer.size();
  if (!isInside) {
    buffer.resize(static_cast<std::size_t>(std::min<std::uint64_t>(kBufferBytes, end - offset)));
    bufferBegin = offset;
    ReadFile(offset, buffer);
  }
  std::copy_n(buffer.begin() + static_cast<std::ptrdiff_t>(offset - bufferBegin), bytes.size(),
              bytes.begin());
}

void VolumeReader::ReadFile(std::uint64_t offset, std::span<unsigned char> bytes) {
  Guarded([&] {
    file.Seek(static_cast<std::int64_t>(offset), CFile::begin);
    while (!bytes.empty()) {
      constexpr std::size_t kMostBytes = 1 << 24;
      const auto wanted = static_cast<unsigned int>(std::min(bytes.size(), kMostBytes));
      if (file.Read(bytes.data(), wanted) != wanted) {
        throw Failure(Visible(path.string()) + ": can't read");
      }
      bytes = bytes.subspan(wanted);
    }
  });
}

std::string VolumeReader::ReadText(std::uint64_t offset, std::size_t size) {
  if (offset > end || size > end - offset) {
    throw Failure(Visible(path.string()) + ": the volume is damaged or cut short");
  }
  std::string text(size, '\0');
  Read(offset, {reinterpret_cast<unsigned char*>(text.data()), size});
  return text;
}

}  // namespace kozor::program
