// Bytes.h - little-endian numbers in runs of bytes, the way every header field is stored.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kozor::container {

using ByteSpan = std::span<const std::uint8_t>;

// The callers have checked that the number lies inside `bytes`.
inline std::uint16_t ReadU16(ByteSpan bytes, std::size_t offset) {
  return static_cast<std::uint16_t>(bytes[offset] | bytes[offset + 1] << 8);
}

inline std::uint32_t ReadU32(ByteSpan bytes, std::size_t offset) {
  return ReadU16(bytes, offset) | static_cast<std::uint32_t>(ReadU16(bytes, offset + 2)) << 16;
}

inline std::uint64_t ReadU64(ByteSpan bytes, std::size_t offset) {
  return ReadU32(bytes, offset) | static_cast<std::uint64_t>(ReadU32(bytes, offset + 4)) << 32;
}

// Puts the low `width` bytes of `value` at `at`.
inline void WriteNumber(std::uint8_t* at, std::uint64_t value, std::size_t width) {
  for (std::size_t i = 0; i < width; ++i) at[i] = static_cast<std::uint8_t>(value >> (8 * i));
}

inline void AppendNumber(std::vector<std::uint8_t>& bytes, std::uint64_t value, std::size_t width) {
  bytes.resize(bytes.size() + width);
  WriteNumber(bytes.data() + bytes.size() - width, value, width);
}

}  // namespace kozor::container
