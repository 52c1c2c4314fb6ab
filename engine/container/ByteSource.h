// ByteSource.h - bytes of an archive by offset, wherever they come from.
#pragma once

#include <cstdint>

#include "engine/container/Bytes.h"

namespace kozor::container {

class ByteSource {
 public:
  virtual ~ByteSource() = default;

  virtual std::uint64_t Size() const = 0;

  // The bytes from `offset` on: as many as asked for, fewer where the source ends before, none from
  // its end on.  They hold good until the next call.
  virtual ByteSpan At(std::uint64_t offset, std::size_t bytes) = 0;
};

// Bytes in memory, which belong to someone else.
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
