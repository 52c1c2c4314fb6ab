// BitReader.h - bits out of packed bytes, the most significant bit of each byte first.
//
// The next bits stand left-aligned in a 64-bit buffer.  Well inside the input one unaligned load
// tops it up to at least 56 bits, enough for the longest item of any method, so a caller refills
// once per item and then looks and consumes without further tests.  Over the last bytes of a piece
// the buffer grows byte by byte, across to the next piece, and after the last one with zero bits: a
// decoder must be able to look ahead past the end.  Only when bits past the end have really been
// consumed is the input too short, and a few of them are forgiven: data whose last zero bytes are
// missing is still whole.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "engine/codec/Codec.h"

namespace kozor::codec {

// The buffer, without knowledge of the end.  An inner loop works on a copy of it, which stays in
// registers, while there is no doubt that enough input is left.
class BitBuffer {
 public:
  // How many bits a refill guarantees.
  static constexpr unsigned kRefilledBits = 56;
  // What a refill may read, and by how much it may advance.
  static constexpr std::ptrdiff_t kRefillBytes = 8;

  // The load brings bits that are in the buffer already and some that do not count yet.  Both are
  // harmless: they are the right bits in the right place, and the next load brings them again.
  void RefillFast() {
    buffer |= LoadBigEndian(next) >> bits;
    next += (63 - bits) >> 3;
    bits |= kRefilledBits;
  }

  // The next `count` bits as a number, 1 <= count <= 56.
  std::uint32_t Peek(unsigned count) const {
    return static_cast<std::uint32_t>(buffer >> (64 - count));
  }
  // All buffered bits, left-aligned; those beyond the refilled ones are not reliable.
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
  unsigned bits = 0;  // valid bits in the buffer, virtual ones included
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
  // What `packedPieces` hands out must hold good until the next call of it.
  explicit BitReader(const PackedPieces& packedPieces) : pieces(&packedPieces) {}

  void Refill() {
    if (CanRefill(1, end)) {
      RefillFast();
    } else {
      RefillAtEnd();
    }
  }

  // Take for a field that stands alone.
  std::uint32_t ReadBits(unsigned count) {
    Refill();
    return Take(count);
  }

  // The end of the present piece, for a loop on a copy of the buffer, and what that has left.
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

  // False at the end of the packed data; the pieces are not asked again then.
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
  std::size_t virtualBits = 0;  // zero bits supplied past the end, ever
};

}  // namespace kozor::codec
