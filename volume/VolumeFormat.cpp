// VolumeFormat.cpp - writes and recognises the header of a volume, and reads a record's name.
#include "volume/VolumeFormat.h"

#include <cstring>
#include <type_traits>

namespace {

// Bytes of the field after the terminator are ignored.
template <std::size_t kFieldSize, std::size_t kTextSize>
bool HoldsText(const char (&field)[kFieldSize], const char (&text)[kTextSize]) {
  static_assert(kTextSize <= kFieldSize);
  return std::memcmp(field, text, kTextSize) == 0;
}

template <std::size_t kFieldSize, std::size_t kTextSize>
void PutText(char (&field)[kFieldSize], const char (&text)[kTextSize]) {
  static_assert(kTextSize <= kFieldSize);
  std::memcpy(field, text, kTextSize);
}

// Returns false if there is no complete header of this version.
template <typename Header, std::size_t kTextSize>
bool TakeHeader(Header* header, const char (&identification)[kTextSize], const void* bytes,
                std::size_t count) {
  static_assert(std::is_trivially_copyable_v<Header>);
  if (count < sizeof(Header)) return false;
  std::memcpy(static_cast<void*>(header), bytes, sizeof(Header));
  return HoldsText(header->identification, identification);
}

ZorVolumeHeader Widen(const ZorVolumeHeader100& narrow) {
  ZorVolumeHeader header = ZorMakeVolumeHeader();
  header.applicationIdBytes = narrow.applicationIdBytes;
  header.volumeLabelBytes = narrow.volumeLabelBytes;
  header.memoBytes = narrow.memoBytes;
  header.volumeNumber = narrow.volumeNumber;
  header.numberOfFiles = narrow.numberOfFiles;
  return header;
}

CString ByteName(const ZorFileRecord& record, std::size_t length) {
  return {record.name, static_cast<int>(strnlen(record.name, length))};
}

CString WideName(const ZorFileRecord& record, std::size_t length) {
  std::array<WCHAR, kNameAreaBytes / 2> text;
  std::size_t count = 0;
  for (; count < length; ++count) {
    kozor::LittleEndian<std::uint16_t> character;
    std::memcpy(&character, record.name + 2 * count, sizeof(character));
    if (character == 0) break;
    text[count] = static_cast<WCHAR>(std::uint16_t{character});
  }
  return {text.data(), static_cast<int>(count)};
}

}  // namespace

CString ZorRecordName(const ZorFileRecord& record) {
  const std::size_t length = record.nameWord >> 1;
  return ZorIsWideName(record.nameWord) ? WideName(record, length) : ByteName(record, length);
}

ZorVolumeHeader ZorMakeVolumeHeader() {
  ZorVolumeHeader header{};
  PutText(header.identification, kVolumeIdentification101);
  PutText(header.digits, kVolumeDigits);
  return header;
}

ZorVolumeHeader100 ZorNarrowVolumeHeader(const ZorVolumeHeader& header) {
  ZorVolumeHeader100 narrow{};
  PutText(narrow.identification, kVolumeIdentification100);
  PutText(narrow.digits, kVolumeDigits);
  narrow.applicationIdBytes = static_cast<std::uint16_t>(header.applicationIdBytes);
  narrow.volumeLabelBytes = static_cast<std::uint16_t>(header.volumeLabelBytes);
  narrow.memoBytes = static_cast<std::uint16_t>(header.memoBytes);
  narrow.volumeNumber = static_cast<std::uint16_t>(header.volumeNumber);
  narrow.numberOfFiles = header.numberOfFiles;
  return narrow;
}

std::uint32_t ZorVolumeHeaderBytes(int backupVersion) {
  return backupVersion == kBackupVersion100 ? sizeof(ZorVolumeHeader100) : sizeof(ZorVolumeHeader);
}

std::uint32_t ZorParseVolumeHeader(const void* bytes, std::size_t count, ZorVolumeHeader* header) {
  ZorVolumeHeader wide;
  if (TakeHeader(&wide, kVolumeIdentification101, bytes, count)) {
    *header = wide;
    return sizeof(wide);
  }
  ZorVolumeHeader100 narrow;
  if (TakeHeader(&narrow, kVolumeIdentification100, bytes, count)) {
    *header = Widen(narrow);
    return sizeof(narrow);
  }
  return 0;
}

int ZorReadVolumeHeader(CFile& file, ZorVolumeHeader* header) {
  const std::uint64_t start = file.Seek(0, CFile::current);
  char bytes[sizeof(ZorVolumeHeader)];
  const unsigned int count = file.Read(bytes, sizeof(bytes));
  const std::uint32_t headerBytes = ZorParseVolumeHeader(bytes, count, header);
  file.Seek(static_cast<std::int64_t>(start + headerBytes), CFile::begin);
  return headerBytes != 0 ? 1 : 0;
}

bool ZorIsVolumeHeader(const ZorVolumeHeader& header) {
  return HoldsText(header.identification, kVolumeIdentification101) &&
         HoldsText(header.digits, kVolumeDigits);
}
