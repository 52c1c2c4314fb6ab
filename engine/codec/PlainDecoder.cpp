// PlainDecoder.cpp - unpacks lzs and lz5: literals and matches without Huffman codes.
//
// A match gives the position of its bytes in a circular buffer that the data fills from position
// kStart on.  The distance is that position relative to the next byte's.
#include <array>
#include <cstddef>
#include <cstdint>

#include "engine/codec/BitReader.h"
#include "engine/codec/Decoders.h"
#include "engine/codec/MatchCopy.h"

namespace kozor::codec {
namespace {

template <std::size_t kBytes, std::size_t kStart>
struct CircularBuffer {
  static_assert((kBytes & (kBytes - 1)) == 0);

  // The distance from a position in the buffer to that of byte `done`: 1 to kBytes.
  static std::size_t Distance(std::size_t place, std::size_t done) {
    return ((kStart + done - place - 1) & (kBytes - 1)) + 1;
  }
  // The position `bytes` bytes before the start.
  static std::size_t Before(std::size_t bytes) { return (kStart - bytes) & (kBytes - 1); }
};

// The initial contents of the buffer of lz5.
std::uint8_t InitialByte(std::size_t place) {
  constexpr std::size_t kEachByte = 13;  // repetitions, then all bytes ascending, then descending
  constexpr std::size_t kUp = 256 * kEachByte;
  constexpr std::size_t kDown = kUp + 256;
  constexpr std::size_t kZeros = kDown + 256;
  constexpr std::size_t kSpaces = kZeros + 128;
  constexpr std::size_t kLastZeros = kSpaces + 110;
  if (place < kUp) return static_cast<std::uint8_t>(place / kEachByte);
  if (place < kDown) return static_cast<std::uint8_t>(place - kUp);
  if (place < kZeros) return static_cast<std::uint8_t>(kZeros - 1 - place);
  return place >= kSpaces && place < kLastZeros ? ' ' : 0;
}

}  // namespace

// An item is a 1 bit and a byte, or a 0 bit, 11 bits of position and 4 bits of length.
Status DecodeLzs(DecodeJob& job) {
  using Buffer = CircularBuffer<2048, 2031>;
  constexpr std::size_t kShortest = 2;
  BitReader in(job.packed);
  return job.Run([&](std::size_t limit) {
    while (job.done < limit) {
      in.Refill();
      if (in.Take(1) != 0) {
        job.target[job.done++] = static_cast<std::uint8_t>(in.Take(8));
      } else {
        const std::size_t distance = Buffer::Distance(in.Take(11), job.done);
        job.done = CopyMatch(job.target, job.done, distance, in.Take(4) + kShortest);
      }
      if (in.IsFarPastEnd()) return Status::Truncated;
    }
    return Status::Ok;
  });
}

// Flag bits, 1 for a literal and 0 for a match, come eight to a byte, the lowest first.  The two
// bytes of a match hold the lower and upper part of the position and the length: 8, 4 and 4 bits.
Status DecodeLz5(DecodeJob& job) {
  using Buffer = CircularBuffer<4096, 4078>;
  constexpr std::size_t kShortest = 3;
  const auto before = [](std::size_t bytes) { return InitialByte(Buffer::Before(bytes)); };
  BitReader in(job.packed);
  unsigned flags = 1;  // the next flags, below a marker bit
  return job.Run([&](std::size_t limit) {
    while (job.done < limit) {
      in.Refill();
      if (flags == 1) flags = in.Take(8) | 0x100;
      if ((flags & 1) != 0) {
        job.target[job.done++] = static_cast<std::uint8_t>(in.Take(8));
      } else {
        const std::size_t lower = in.Take(8);
        const std::size_t place = lower | in.Take(4) << 8;
        const std::size_t distance = Buffer::Distance(place, job.done);
        job.done = CopyMatch(job.target, job.done, distance, in.Take(4) + kShortest, before);
      }
      flags >>= 1;
      if (in.IsFarPastEnd()) return Status::Truncated;
    }
    return Status::Ok;
  });
}

}  // namespace kozor::codec
