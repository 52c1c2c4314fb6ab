// BitWriter.h - bits into packed bytes, the most significant bit of each byte first.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace kozor::codec {

// Collects whole bytes; up to 7 bits of the next one wait in between, across calls of MoveTo.
class BitWriter {
 public:
  // The most that one Put takes.
  static constexpr unsigned kPutBits = 56;

  // Makes room for that many bits and for padding, so that Put need not look.
  void Reserve(std::size_t bitCount) {
    bytes.resize(std::max(bytes.size(), used + bitCount / 8 + 1 + sizeof buffer));
  }

  // The lowest `count` bits of `value`; those above must be 0.
  void Put(std::uint64_t value, unsigned count) {
    if (count == 0) return;
    bits += count;
    buffer |= value << (64 - bits);
    StoreBigEndian(bytes.data() + used, buffer);
    used += bits >> 3;
    buffer <<= bits & 0x38;
    bits &= 7;
  }

  // Appends all that `more` holds, from the bit on at which this one ends.
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

  // Appends the whole bytes to `packed`; reserved room ends.
  void MoveTo(std::vector<std::uint8_t>& packed) {
    packed.insert(packed.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(used));
    used = 0;
  }

 private:
  // There are 8 bytes: what is reserved goes beyond what is used.
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
  std::uint64_t buffer = 0;  // the bits of the byte that is not whole yet, left-aligned
  unsigned bits = 0;         // 0 to 7 between calls
};

}  // namespace kozor::codec
