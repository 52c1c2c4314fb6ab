// ByteSource.h - random access to the bytes of an archive, and its little-endian numbers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/base/ByteOrder.h"

namespace kozor::container {

using ByteSpan = std::span<const std::uint8_t>;

// Precondition: the number lies inside `bytes`.
inline std::uint16_t ReadU16(ByteSpan bytes, std::size_t offset) {
  return LoadLittle<std::uint16_t>(bytes.data() + offset);
}
inline std::uint32_t ReadU32(ByteSpan bytes, std::size_t offset) {
  return LoadLittle<std::uint32_t>(bytes.data() + offset);
}
inline std::uint64_t ReadU64(ByteSpan bytes, std::size_t offset) {
  return LoadLittle<std::uint64_t>(bytes.data() + offset);
}

// Stores the low `width` bytes of `value` at `at`.
inline void WriteNumber(std::uint8_t* at, std::uint64_t value, std::size_t width) {
  StoreLittle(at, value, width);
}

inline void AppendNumber(std::vector<std::uint8_t>& bytes, std::uint64_t value, std::size_t width) {
  bytes.resize(bytes.size() + width);
  WriteNumber(bytes.data() + bytes.size() - width, value, width);
}

class ByteSource {
 public:
  virtual ~ByteSource() = default;

  virtual std::uint64_t Size() const = 0;

  // Returns `bytes` bytes from `offset` on, fewer near the end of the source, none at or after it.
  // The result is valid until the next call.
  virtual ByteSpan At(std::uint64_t offset, std::size_t bytes) = 0;
};

// Bytes in memory, owned by the caller.
class MemorySource : public ByteSource {
 public:
  explicit MemorySource(ByteSpan bytes) : contents(bytes) {}

  std::uint64_t Size() const override { return contents.size(); }
  ByteSpan At(std::uint64_t offset, std::size_t bytes) override {
    if (offset >= contents.size()) return {};
    const ByteSpan rest = contents.subspan(static_cast<std::size_t>(offset));
    return rest.first(rest.size() < bytes ? rest.size() : bytes);
  }

 private:
  ByteSpan contents;
};

}  // namespace kozor::container
