// Bytes.h - runs of bytes of an archive, and the little-endian numbers in them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/base/ByteOrder.h"

namespace kozor::container {

using ByteSpan = std::span<const std::uint8_t>;

// The callers have checked that the number lies inside `bytes`.
inline std::uint16_t ReadU16(ByteSpan bytes, std::size_t offset) {
  return LoadLittle<std::uint16_t>(bytes.data() + offset);
}
inline std::uint32_t ReadU32(ByteSpan bytes, std::size_t offset) {
  return LoadLittle<std::uint32_t>(bytes.data() + offset);
}
inline std::uint64_t ReadU64(ByteSpan bytes, std::size_t offset) {
  return LoadLittle<std::uint64_t>(bytes.data() + offset);
}

// Puts the low `width` bytes of `value` at `at`.
inline void WriteNumber(std::uint8_t* at, std::uint64_t value, std::size_t width) {
  StoreLittle(at, value, width);
}

inline void AppendNumber(std::vector<std::uint8_t>& bytes, std::uint64_t value, std::size_t width) {
  bytes.resize(bytes.size() + width);
  WriteNumber(bytes.data() + bytes.size() - width, value, width);
}

}  // namespace kozor::container
