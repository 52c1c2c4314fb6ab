// HeaderWriter.cpp - see HeaderWriter.h.
//
// Some readers require a header CRC, some the constant 0x20 at offset 19, some a trailing separator
// in the directory.  One treats a padding byte as data, and one rejects extension headers above 4
// KiB.  All readers accept this order of extensions.
#include "engine/container/HeaderWriter.h"

#include <algorithm>

#include "engine/codec/Codec.h"
#include "engine/container/Failure.h"
#include "engine/container/MemberTime.h"

namespace kozor::container {
namespace {

constexpr std::size_t kMaxExtensionBytes = 4096;
constexpr std::size_t kExtensionOverhead = 3;  // id and size of the next header
constexpr std::uint16_t kPlainAttribute = 0x20;
// Readers don't change the case of names under these ids.
constexpr std::uint8_t kOsWindows = 'W';
constexpr std::uint8_t kOsUnix = 'U';

// Appends extension headers and links each one from its predecessor.
class ChainWriter {
 public:
  explicit ChainWriter(std::vector<std::uint8_t>& header) : bytes(header) {}

  // Returns the position of the payload.
  std::size_t Add(std::uint8_t id, ByteSpan payload) {
    const std::size_t size = payload.size() + kExtensionOverhead;
    if (size > kMaxExtensionBytes) throw Failure(ResultCode::NameTooLong);
    WriteNumber(bytes.data() + bytes.size() - 2, size, 2);
    bytes.push_back(id);
    const std::size_t position = bytes.size();
    bytes.insert(bytes.end(), payload.begin(), payload.end());
    AppendNumber(bytes, 0, 2);
    return position;
  }

  void AddText(std::uint8_t id, const std::string& text) {
    Add(id, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
  }

  void AddNumber(std::uint8_t id, std::uint64_t value, std::size_t width) {
    std::uint8_t payload[8];
    WriteNumber(payload, value, width);
    Add(id, {payload, width});
  }

  // Creation and access time are unknown: 0.
  void AddFileTime(std::uint64_t lastWrite) {
    std::uint8_t payload[24] = {};
    WriteNumber(payload + 8, lastWrite, 8);
    Add(0x41, payload);
  }

  void AddUnixFacts(const UnixFacts& facts) {
    constexpr std::uint32_t kMostId = 0xFFFF;
    AddNumber(0x50, facts.mode, 2);
    if (facts.user <= kMostId && facts.group <= kMostId) {
      AddNumber(0x51, facts.user << 16 | facts.group, 4);
    }
  }

 private:
  std::vector<std::uint8_t>& bytes;
};

// The seconds of the base field, and whether the time fits.
std::uint32_t BaseSeconds(std::uint64_t utcTime) {
  return static_cast<std::uint32_t>(
      std::clamp<std::int64_t>(UnixOfFileTime(utcTime), 0, 0xFFFFFFFF));
}

bool FitsBaseSeconds(std::uint64_t utcTime) {
  const std::int64_t seconds = UnixOfFileTime(utcTime);
  return seconds >= 0 && seconds <= 0xFFFFFFFF;
}

std::vector<std::uint8_t> BuildBase(const NewMember& member) {
  std::vector<std::uint8_t> bytes(2);  // the total size, known at the end
  bytes.reserve(96 + member.name.directory.size() + member.name.file.size());
  bytes.insert(bytes.end(), member.method.begin(), member.method.end());
  AppendNumber(bytes, member.packedBytes, 4);
  AppendNumber(bytes, member.originalBytes, 4);
  AppendNumber(bytes, BaseSeconds(member.utcTime), 4);
  bytes.push_back(0x20);
  bytes.push_back(2);
  AppendNumber(bytes, member.crc, 2);
  bytes.push_back(member.unixFacts ? kOsUnix : kOsWindows);
  AppendNumber(bytes, 0, 2);
  return bytes;
}

}  // namespace

std::vector<std::uint8_t> BuildHeader(const NewMember& member) {
  std::vector<std::uint8_t> bytes = BuildBase(member);
  ChainWriter chain(bytes);
  constexpr std::uint8_t kNoCrcYet[2] = {};
  const std::size_t crcPosition = chain.Add(0x00, kNoCrcYet);
  chain.AddText(0x01, member.name.file);
  if (!member.name.directory.empty()) chain.AddText(0x02, member.name.directory);
  const bool hasAttribute = member.attribute != kPlainAttribute;
  if (hasAttribute) chain.AddNumber(0x40, member.attribute, 2);
  const bool hasFileTime = !FitsBaseSeconds(member.utcTime);
  if (hasFileTime) chain.AddFileTime(member.utcTime);
  if (member.unixFacts) chain.AddUnixFacts(*member.unixFacts);
  if (member.name.codePage != 0) chain.AddNumber(0x46, member.name.codePage, 4);

  // A low byte of zero would be an end mark.  A redundant extension changes the size.
  if (bytes.size() % 256 == 0) {
    if (hasAttribute) {
      chain.AddFileTime(member.utcTime);
    } else {
      chain.AddNumber(0x40, member.attribute, 2);
    }
  }
  WriteNumber(bytes.data(), bytes.size(), 2);
  WriteNumber(bytes.data() + crcPosition, codec::Crc16(bytes), 2);
  return bytes;
}

}  // namespace kozor::container
