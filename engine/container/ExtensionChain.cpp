// ExtensionChain.cpp - see ExtensionChain.h.
#include "engine/container/ExtensionChain.h"

#include "engine/container/MemberTime.h"

namespace kozor::container {
namespace {

std::string Text(ByteSpan payload) {
  return {payload.begin(), payload.end()};
}

// Decodes UTF-16LE; an odd last byte is ignored.
std::u16string Utf16Text(ByteSpan payload) {
  std::u16string text(payload.size() / 2, u'\0');
  for (std::size_t i = 0; i < text.size(); ++i) text[i] = ReadU16(payload, 2 * i);
  return text;
}

// OS-9, OS-9/68K, and OS-9 on the X68000.
bool IsOs9(std::uint8_t osId) {
  return osId == '9' || osId == 'K' || osId == 'X';
}

// The times in a chain.  A FILETIME has precedence over UNIX seconds, in whatever order they occur.
struct ChainTimes {
  std::uint64_t fileTime = 0;
  std::uint64_t unixTime = 0;

  std::uint64_t Best() const { return fileTime != 0 ? fileTime : unixTime; }
};

// Applies one extension header.  A payload too short for its id is ignored.
void ApplyExtension(std::uint8_t id, ByteSpan payload, MemberHeader& header, ChainTimes& times) {
  const auto holds = [&](std::size_t bytes) { return payload.size() >= bytes; };
  switch (id) {
    case 0x01:
      header.name.file = Text(payload);
      break;
    case 0x02:
      header.name.directory = Text(payload);
      break;
    case 0x40:
      if (holds(2)) header.attribute = ReadU16(payload, 0);
      break;
    case 0x41:  // creation, last write, last access; 0 means unknown
      if (holds(16)) times.fileTime = ReadU64(payload, 8);
      break;
    case 0x42:  // in level 1 its relation to the skip size is undefined
      if (holds(16) && header.level >= 2) {
        header.packedBytes = ReadU64(payload, 0);
        header.originalBytes = ReadU64(payload, 8);
      }
      break;
    case 0x44:
      header.name.unicodeFile = Utf16Text(payload);
      break;
    case 0x45:
      header.name.unicodeDirectory = Utf16Text(payload);
      break;
    case 0x46:
      if (holds(4)) header.name.codePage = ReadU32(payload, 0);
      break;
    case 0x50:
      if (holds(2)) {
        const std::uint16_t mode = ReadU16(payload, 0);
        header.unixMode = IsOs9(header.osId) ? UnixModeOfOs9(mode) : mode;
      }
      break;
    case 0x54:
      if (holds(4)) times.unixTime = FileTimeOfUnix(ReadU32(payload, 0));
      break;
    case 0x7D:  // where the file itself is in the unpacked data
    case 0xFC:  // the same in a draft
      if (holds(8)) header.capsule = {ReadU32(payload, 0), ReadU32(payload, 4)};
      break;
    case 0x7F:  // OS/2, level 3
      if (holds(4)) {
        header.attribute = ReadU16(payload, 0);
        header.unixMode = ReadU16(payload, 2);
      }
      break;
    case 0xCC:  // OS-9 on the 6809
      if (holds(9)) header.unixMode = UnixModeOfOs9(ReadU16(payload, 7));
      break;
    case 0xFF:  // level 3
      if (holds(4)) header.unixMode = ReadU32(payload, 0);
      break;
    default:
      break;
  }
}

}  // namespace

std::uint32_t UnixModeOfOs9(std::uint16_t attributes) {
  constexpr unsigned kDirectory = 0x80;
  // Three bits for the owner and three for everyone, each from the lowest: read, write, execute.
  const auto reversed = [](unsigned bits) {
    return (bits & 1U) << 2 | (bits & 2U) | (bits & 4U) >> 2;
  };
  const unsigned owner = reversed(attributes);
  const unsigned everyone = reversed(attributes >> 3U);
  if (owner == 0 && everyone == 0) return 0;
  const unsigned type = (attributes & kDirectory) != 0 ? 0040000 : 0100000;
  return type | owner << 6 | everyone << 3 | everyone;
}

HeaderStatus ReadExtensionChain(ByteSpan bytes, const ChainBounds& bounds, MemberHeader& header,
                                ChainResult& result) {
  const std::size_t width = bounds.width;
  const auto sizeBefore = [&](std::size_t position) -> std::size_t {
    return width == 2 ? ReadU16(bytes, position - 2) : ReadU32(bytes, position - 4);
  };

  ChainTimes times;
  std::size_t position = bounds.begin;
  while (const std::size_t size = sizeBefore(position)) {
    if (size < 1 + width || size > bounds.limit - position) return HeaderStatus::Broken;
    if (position + size > kMaxHeaderBytes) return HeaderStatus::Broken;
    if (position + size > bytes.size()) return HeaderStatus::Incomplete;
    const std::uint8_t id = bytes[position];
    const ByteSpan payload = bytes.subspan(position + 1, size - 1 - width);
    if (id == 0x00 && payload.size() >= 2) {
      result.crcPosition = position + 1;
      result.headerCrc = ReadU16(payload, 0);
    } else if (id == 0x3F || id == 0x71) {  // the latter by Amiga programs
      header.comment = {static_cast<std::uint32_t>(position + 1),
                        static_cast<std::uint32_t>(payload.size())};
    } else {
      ApplyExtension(id, payload, header, times);
    }
    position += size;
  }
  result.end = position;
  if (times.Best() != 0) header.utcTime = times.Best();
  return HeaderStatus::Complete;
}

}  // namespace kozor::container
