// BitWriter.h - writes bits into packed bytes, the most significant bit of each byte first.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kozor::codec {

// Collects whole bytes.  Up to 7 bits of the next one are kept, also across calls of MoveTo.
class BitWriter {
 public:
  // The most bits that Put accepts.
  static constexpr unsigned kPutBits = 56;

  // Makes room for that many bits and for padding, because Put doesn't check.
  void Reserve(std::size_t bitCount) {
    bytes.resize(std::max(bytes.size(), used + bitCount / 8 + 1 + sizeof buffer));
  }

  // Appends the lowest `count` bits of `value`; higher bits must be 0.
  void Put(std::uint64_t value, unsigned count) {
    if (count == 0) return;
    bits += count;
    buffer |= value << (64 - bits);
    StoreBigEndian(bytes.data() + used, buffer);
    used += bits >> 3;
    buffer <<= bits & 0x38;
    bits &= 7;
  }

  // Appends all bits of `more` at the current bit position.
  void Append(const BitWriter& more) {
    constexpr std::size_t kStep = kPutBits / 8;
    Reserve(8 * more.used + more.bits);
    std::size_t next = 0;
    if (bits == 0) {
      next = more.used;
      std::copy_n(more.bytes.data(), next, bytes.data() + used);
      used += next;
    }
    for (; next + kStep <= more.used; next += kStep) {
      Put(LoadBigEndian(more.bytes.data() + next) >> 8, kPutBits);
    }
    for (; next < more.used; ++next) Put(more.bytes[next], 8);
    Put(more.bits == 0 ? 0 : more.buffer >> (64 - more.bits), more.bits);
  }

  void Clear() {
    used = 0;
    buffer = 0;
    bits = 0;
  }

  // Fills the last byte with zero bits.
  void Pad() { Put(0, (8 - bits) & 7); }

  // Appends the whole bytes to `packed`.  Invalidates reserved room.
  void MoveTo(std::vector<std::uint8_t>& packed) {
    packed.insert(packed.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(used));
    used = 0;
  }

 private:
  // 8 bytes are always readable: the reserved room extends past the bytes in use.
  static std::uint64_t LoadBigEndian(const std::uint8_t* from) {
    std::uint64_t value = 0;
    for (unsigned i = 0; i < 8; ++i) value = value << 8 | from[i];
    return value;
  }
  static void StoreBigEndian(std::uint8_t* to, std::uint64_t value) {
    for (unsigned i = 0; i < 8; ++i) to[i] = static_cast<std::uint8_t>(value >> (56 - 8 * i));
  }

  std::vector<std::uint8_t> bytes;
  std::size_t used = 0;      // whole bytes
  std::uint64_t buffer = 0;  // bits of the incomplete byte, left-aligned
  unsigned bits = 0;         // 0 to 7 between calls
};

}  // namespace kozor::codec
