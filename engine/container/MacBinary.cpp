// MacBinary.cpp - see MacBinary.h.
//
// Numbers are big-endian.  Offsets: 1 length of the name, 2 the name, 83 and 87 lengths of the data
// fork and the resource fork; the bytes at 0, 74, 82 and from 99 on are zero.
#include "engine/container/MacBinary.h"

#include <algorithm>

#include "engine/container/Text.h"

namespace kozor::container {
namespace {

constexpr std::size_t kBlock = 128;
constexpr std::size_t kNameField = 63;

bool IsZero(ByteSpan bytes) {
  return std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t byte) { return byte == 0; });
}

std::uint32_t ReadBigEndian(ByteSpan bytes, std::size_t at) {
  return std::uint32_t{bytes[at]} << 24 | std::uint32_t{bytes[at + 1]} << 16 |
         std::uint32_t{bytes[at + 2]} << 8 | bytes[at + 3];
}

std::uint64_t Padded(std::uint64_t bytes) {
  return (bytes + kBlock - 1) / kBlock * kBlock;
}

}  // namespace

std::optional<DataPart> FindDataFork(ByteSpan data, std::string_view name) {
  if (data.size() < kBlock) return std::nullopt;
  const std::size_t length = data[1];
  const bool areZerosThere =
      data[0] == 0 && data[74] == 0 && data[82] == 0 && IsZero(data.subspan(99, kBlock - 99));
  if (!areZerosThere || length == 0 || length > kNameField) return std::nullopt;
  const ByteSpan itsName = data.subspan(2, length);
  if (!IsZero(data.subspan(2 + length, kNameField - length))) return std::nullopt;
  if (IsAscii(name) && !std::ranges::equal(itsName, name, {}, {}, [](char letter) {
        return static_cast<std::uint8_t>(letter);
      })) {
    return std::nullopt;
  }
  const DataPart fork = {kBlock, ReadBigEndian(data, 83)};
  const std::uint64_t whole = kBlock + Padded(fork.bytes) + Padded(ReadBigEndian(data, 87));
  return whole == data.size() ? std::optional(fork) : std::nullopt;
}

}  // namespace kozor::container
