// VolumeReader.cpp - see VolumeReader.h.
#include "VolumeReader.h"

#include "Console.h"
#include "Failure.h"
#include "Host.h"
#include "ZorFind.h"

namespace kozor::program {

namespace {

// The two headers: an identification text of 64 bytes with the version at its end, 32 bytes that
// say nothing, and from byte 96 on the numbers, 4 bytes wide in 1.01 and mostly 2 in 1.00.
constexpr std::string_view kIdentification = "Morlig Filer Library Version 1.0";
constexpr std::size_t kNumbersOffset = 96;
constexpr std::size_t kHeaderBytes100 = 108;
constexpr std::size_t kHeaderBytes101 = 116;

// In front of a record's name: attribute, a zero, time, size, and the name's length times two plus
// 1 for a name of 16-bit characters.
constexpr std::size_t kRecordBytes = 12;
constexpr std::size_t kMaxNameBytes = 524;  // with the terminator

std::uint32_t Number(const std::string& bytes, std::size_t offset, std::size_t width) {
  std::uint32_t number = 0;
  for (std::size_t i = width; i-- > 0;) {
    number = number << 8U | static_cast<unsigned char>(bytes[offset + i]);
  }
  return number;
}

std::string FromWide(const std::string& bytes) {
  std::u16string text;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    text += static_cast<char16_t>(Number(bytes, i, 2));
  }
  static_assert(sizeof(WCHAR) == sizeof(char16_t));
  return static_cast<const char*>(CString(reinterpret_cast<const WCHAR*>(text.c_str())));
}

}  // namespace

VolumeReader::VolumeReader(const std::filesystem::path& volumePath) : path(volumePath) {
  const FileState state = Inspect(path);
  if (state.isDirectory) throw Failure(Visible(path.string()) + ": a directory, not a volume");
  // A pipe would be waited for.
  if (state.problem.empty()) file.open(path, std::ios::binary);
  std::error_code error;
  end = std::filesystem::file_size(path, error);
  if (!file || error) throw Failure(Visible(path.string()) + ": the volume can't be opened");
  const std::string start = end < kHeaderBytes100 ? "" : Read(0, kHeaderBytes100);
  const char version = start.starts_with(kIdentification) ? start[kIdentification.size()] : '?';
  if ((version != '0' && version != '1') || start[kIdentification.size() + 1] != '\0') {
    throw Failure(Visible(path.string()) + ": not a volume of a backup set");
  }
  const bool wide = version == '1';
  const std::size_t headerBytes = wide ? kHeaderBytes101 : kHeaderBytes100;
  const std::string bytes = Read(0, headerBytes);
  const std::size_t width = wide ? 4 : 2;
  const auto field = [&](std::size_t index) {
    return Number(bytes, kNumbersOffset + index * width, width);
  };
  header.formatVersion = wide ? 101 : 100;
  header.number = field(3);
  header.files = Number(bytes, headerBytes - 4, 4);
  header.id = Read(headerBytes, field(0));
  header.label = Read(headerBytes + field(0), field(1));
  header.memo = Read(headerBytes + std::uint64_t{field(0)} + field(1), field(2));
  at = headerBytes + std::uint64_t{field(0)} + field(1) + field(2);
}

std::optional<VolumeRecord> VolumeReader::Next() {
  if (at >= end) return std::nullopt;
  const std::string head = Read(at, kRecordBytes);
  const std::uint32_t nameWord = Number(head, 10, 2);
  const std::size_t width = 1 + (nameWord & 1U);
  const std::size_t nameBytes = (nameWord / 2 + 1) * width;
  if (nameBytes > kMaxNameBytes) throw Failure(Visible(path.string()) + ": damaged");
  std::string name = Read(at + kRecordBytes, nameBytes);
  name.resize(nameBytes - width);
  VolumeRecord record;
  record.name = width == 2 ? FromWide(name) : name;
  record.size = Number(head, 6, 4);
  record.time = static_cast<std::int32_t>(Number(head, 2, 4));
  record.attribute = static_cast<std::uint8_t>(head[0]);
  at += kRecordBytes + nameBytes + record.size;
  return record;
}

std::string VolumeReader::Read(std::uint64_t offset, std::size_t size) {
  if (offset > end || size > end - offset) {
    throw Failure(Visible(path.string()) + ": the volume is damaged or cut short");
  }
  std::string bytes(size, '\0');
  file.seekg(static_cast<std::streamoff>(offset));
  if (!file.read(bytes.data(), static_cast<std::streamsize>(size))) {
    throw Failure(Visible(path.string()) + ": can't read");
  }
  return bytes;
}

}  // namespace kozor::program
