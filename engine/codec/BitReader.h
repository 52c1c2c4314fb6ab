// BitReader.h - reads bits from packed bytes, the most significant bit of each byte first.
//
// The next bits are left-aligned in a 64-bit buffer.  Well inside the input, one unaligned load
// refills it to at least 56 bits, enough for the longest item of any method.  So a caller refills
// once per item and then peeks and consumes without further tests.  Near the end of a piece the
// buffer is refilled byte by byte, continuing in the next piece, and with zero bits after the last
// one, so that a decoder can look ahead past the end.  The input is too short only if bits past the
// end have been consumed.  A few of them are tolerated: data without its trailing zero bytes still
// counts as complete.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "engine/codec/Codec.h"

namespace kozor::codec {

// The buffer alone, which doesn't check for the end.  An inner loop uses a copy, which stays in
// registers, while enough input is certain to be left.
class BitBuffer {
 public:
  // The bits that a refill guarantees.
  static constexpr unsigned kRefilledBits = 56;
  // The most bytes that a refill reads or advances by.
  static constexpr std::ptrdiff_t kRefillBytes = 8;

  // The load repeats bits that are already in the buffer and adds some that aren't counted yet.
  // Both are harmless: they are the right bits in the right place, and the next load reads them
  // again.
  void RefillFast() {
    buffer |= LoadBigEndian(next) >> bits;
    next += (63 - bits) >> 3;
    bits |= kRefilledBits;
  }

  // The next `count` bits as a number, 1 <= count <= 56.
  std::uint32_t Peek(unsigned count) const {
    return static_cast<std::uint32_t>(buffer >> (64 - count));
  }
  // All buffered bits, left-aligned; those beyond kRefilledBits are unspecified.
  std::uint64_t Buffer() const { return buffer; }

  void Consume(unsigned count) {
    buffer <<= count;
    bits -= count;
  }

  std::uint32_t Take(unsigned count) {
    const std::uint32_t value = Peek(count);
    Consume(count);
    return value;
  }

  // Whether RefillFast may be called `times` times before `end`.
  bool CanRefill(int times, const std::uint8_t* end) const {
    return end - next >= times * kRefillBytes;
  }

 protected:
  std::uint64_t buffer = 0;
  unsigned bits = 0;  // valid bits in the buffer, including virtual ones
  const std::uint8_t* next = nullptr;

 private:
  // Compilers turn this into one load and one byte swap.
  static std::uint64_t LoadBigEndian(const std::uint8_t* from) {
    return std::uint64_t{from[0]} << 56 | std::uint64_t{from[1]} << 48 |
           std::uint64_t{from[2]} << 40 | std::uint64_t{from[3]} << 32 |
           std::uint64_t{from[4]} << 24 | std::uint64_t{from[5]} << 16 |
           std::uint64_t{from[6]} << 8 | std::uint64_t{from[7]};
  }
};

class BitReader : public BitBuffer {
 public:
  // Each piece from `packedPieces` must stay valid until its next call.
  explicit BitReader(const PackedPieces& packedPieces) : pieces(&packedPieces) {}

  void Refill() {
    if (CanRefill(1, end)) {
      RefillFast();
    } else {
      RefillAtEnd();
    }
  }

  // Refills and takes: for a single field.
  std::uint32_t ReadBits(unsigned count) {
    Refill();
    return Take(count);
  }

  // For a loop on a copy of the buffer: the end of the current piece, and taking the copy back.
  const std::uint8_t* PieceEnd() const { return end; }
  void GoOnFrom(const BitBuffer& copy) { static_cast<BitBuffer&>(*this) = copy; }

  // Whether bits past the end have been consumed, and whether too many.
  bool IsPastEnd() const { return virtualBits > bits; }
  bool IsFarPastEnd() const { return virtualBits > bits + kForgivenBits; }

 private:
  static constexpr unsigned kForgivenBits = 32;

  void RefillAtEnd() {
    for (; bits < kRefilledBits; bits += 8) {
      if (next != end || FetchPiece()) {
        buffer |= std::uint64_t{*next++} << (56 - bits);
      } else {
        virtualBits += 8;
      }
    }
  }

  // Returns false at the end of the packed data, and doesn't ask for pieces after that.
  bool FetchPiece() {
    if (!pieces) return false;
    const std::span<const std::uint8_t> piece = (*pieces)();
    next = piece.data();
    end = piece.data() + piece.size();
    if (piece.empty()) pieces = nullptr;
    return !piece.empty();
  }

  const std::uint8_t* end = nullptr;
  const PackedPieces* pieces;   // null after the last one
  std::size_t virtualBits = 0;  // zero bits supplied past the end in total
};

}  // namespace kozor::codec
