// BlockFile.h - an unnamed temporary file for the blocks of a table that is too large for memory.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

#include "engine/container/File.h"

namespace kozor::container {

// The file is created in the directory for temporaries with the first block, is private, and ends
// with the object, or the process.  Thread-safe.
class BlockFile {
 public:
  static constexpr std::size_t kBlockBytes = 4 << 10;

  // Stores a block of at most kBlockBytes and returns its number.  Empty if there is no file, or no
  // room in it; then nothing is tried again.
  std::optional<std::uint32_t> Store(std::span<const std::uint8_t> block) noexcept;

  // The bytes of a block, which stay while this object exists.  A thread holds one at a time.
  class Pinned {
   public:
    std::span<const std::uint8_t> Bytes() const { return bytes; }

   private:
    friend class BlockFile;
    std::unique_lock<std::mutex> lock;
    std::span<const std::uint8_t> bytes;
  };
  // Throws ResultCode::CannotRead.
  Pinned Pin(std::uint32_t number, std::size_t bytes);

 private:
  bool Create();

  std::mutex mutex;
  File file;
  bool isUsable = true;
  std::uint32_t count = 0;
  struct Cached {
    std::optional<std::uint32_t> number;
    std::vector<std::uint8_t> bytes;
  };
  std::array<Cached, 16> cache;  // by the last bits of the number
};

}  // namespace kozor::container
