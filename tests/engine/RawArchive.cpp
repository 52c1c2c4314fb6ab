// RawArchive.cpp - see RawArchive.h.
#include "tests/engine/RawArchive.h"

#include <numeric>

#include "engine/codec/Codec.h"
#include "engine/container/ByteSource.h"

namespace kozor::test {
namespace {

using container::AppendNumber;
using container::WriteNumber;

void AppendText(Bytes& bytes, std::string_view text) {
  bytes.insert(bytes.end(), text.begin(), text.end());
}

std::size_t WidthOf(const RawMember& member) {
  return member.level == 3 ? 4 : 2;
}

std::vector<RawExtension> AllExtensions(const RawMember& member) {
  std::vector<RawExtension> all;
  if (member.hasHeaderCrc) all.push_back({0x00, std::string(2, '\0')});
  if (member.level >= 2) all.push_back({0x01, member.name});
  all.insert(all.end(), member.extensions.begin(), member.extensions.end());
  return all;
}

// Appends the chain, preceded by its size.  Returns the position of the header CRC, or 0.
std::size_t AppendChain(Bytes& bytes, const RawMember& member) {
  const std::size_t width = WidthOf(member);
  std::size_t crcPosition = 0;
  for (const RawExtension& extension : AllExtensions(member)) {
    AppendNumber(bytes, 1 + extension.payload.size() + width, width);
    if (extension.id == 0) crcPosition = bytes.size() + 1;
    bytes.push_back(extension.id);
    AppendText(bytes, extension.payload);
  }
  AppendNumber(bytes, 0, width);
  return crcPosition;
}

// Size and sum of the base header in levels 0 and 1.
void SetBaseSum(Bytes& bytes, std::size_t baseBytes, std::uint8_t error) {
  bytes[0] = static_cast<std::uint8_t>(baseBytes - 2);
  const auto begin = bytes.begin() + 2;
  const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(baseBytes);
  bytes[1] = static_cast<std::uint8_t>(std::accumulate(begin, end, unsigned{error}));
}

}  // namespace

Bytes RawHeader(const RawMember& member) {
  constexpr std::size_t kMostBytes = 200;  // the size of a base header is one byte
  const std::string_view name = std::string_view(member.name).substr(0, kMostBytes);
  const std::uint64_t packed = member.contents.size() + member.packedError;
  Bytes bytes(2);
  AppendText(bytes, member.method);
  AppendNumber(bytes, packed, 4);
  AppendNumber(bytes, member.originalBytes.value_or(member.contents.size()), 4);
  AppendNumber(bytes, member.time, 4);
  bytes.push_back(member.attribute);
  bytes.push_back(static_cast<std::uint8_t>(member.level));
  if (member.level <= 1) {
    bytes.push_back(static_cast<std::uint8_t>(name.size()));
    AppendText(bytes, name);
  }
  AppendNumber(bytes, member.crc.value_or(codec::Crc16(ToBytes(member.contents))), 2);
  if (member.level >= 1) bytes.push_back(static_cast<std::uint8_t>(member.osId));
  if (member.level <= 1) {
    AppendText(bytes, std::string_view(member.extra).substr(0, kMostBytes + 22 - name.size()));
  }
  if (member.level == 3) AppendNumber(bytes, 0, 4);
  const std::size_t baseBytes = bytes.size() + (member.level == 0 ? 0 : 2);
  const std::size_t crcPosition = member.level == 0 ? 0 : AppendChain(bytes, member);

  if (member.level == 1) {  // the packed size includes the extensions
    WriteNumber(&bytes[7], packed + bytes.size() - baseBytes, 4);
  }
  if (member.level <= 1) SetBaseSum(bytes, baseBytes, member.sumError);
  if (member.level == 2) {
    AppendText(bytes, member.extra);
    if (bytes.size() % 256 == 0) bytes.push_back(0);  // it would look like an end mark
    WriteNumber(bytes.data(), bytes.size(), 2);
  }
  if (member.level == 3) {
    WriteNumber(bytes.data(), 4, 2);
    WriteNumber(&bytes[24], bytes.size(), 4);
  }
  if (crcPosition != 0) {
    WriteNumber(&bytes[crcPosition], codec::Crc16(bytes) + std::uint64_t{member.sumError}, 2);
  }
  return bytes;
}

Bytes RawArchive(const std::vector<RawMember>& members) {
  Bytes bytes;
  for (const RawMember& member : members) {
    const Bytes header = RawHeader(member);
    bytes.insert(bytes.end(), header.begin(), header.end());
    AppendText(bytes, member.contents);
  }
  bytes.push_back(0);
  return bytes;
}

Bytes FromHex(std::string_view hex) {
  Bytes bytes;
  std::string digits;
  for (const char c : hex) {
    if (c == ' ' || c == '\n') continue;
    digits += c;
    if (digits.size() < 2) continue;
    bytes.push_back(static_cast<std::uint8_t>(std::stoul(digits, nullptr, 16)));
    digits.clear();
  }
  return bytes;
}

}  // namespace kozor::test
