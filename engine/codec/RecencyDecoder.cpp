// RecencyDecoder.cpp - unpacks pm1 and pm2, which code literals by move-to-front.
//
// A list holds all 256 byte values, and each byte of the data, literal or copied, moves to its
// front.  A literal is sent as an index into that list, so recent bytes have small numbers.
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include "engine/codec/BitReader.h"
#include "engine/codec/Decoders.h"
#include "engine/codec/HuffmanTable.h"
#include "engine/codec/MatchCopy.h"

namespace kozor::codec {
namespace {

// A ring of byte values by recency.  Moving one takes constant time.
class RecencyList {
 public:
  RecencyList() {
    struct Range {
      unsigned first, last;
    };
    unsigned previous = 0xFF;
    for (const Range range : {Range{0x20, 0x7F}, Range{0x00, 0x1F}, Range{0xA0, 0xDF},
                              Range{0x80, 0x9F}, Range{0xE0, 0xFF}}) {
      for (unsigned byte = range.first; byte <= range.last; ++byte) {
        Join(previous, byte);
        previous = byte;
      }
    }
  }

  std::uint8_t At(unsigned index) const {
    std::uint8_t byte = front;
    if (index < 128) {
      for (; index != 0; --index) byte = older[byte];
    } else {
      for (; index != 256; ++index) byte = newer[byte];
    }
    return byte;
  }

  void MoveToFront(std::uint8_t byte) {
    if (byte == front) return;
    Join(newer[byte], older[byte]);
    Join(newer[front], byte);
    Join(byte, front);
    front = byte;
  }

 private:
  void Join(unsigned newerByte, unsigned olderByte) {
    older[newerByte] = static_cast<std::uint8_t>(olderByte);
    newer[olderByte] = static_cast<std::uint8_t>(newerByte);
  }

  std::array<std::uint8_t, 256> older;
  std::array<std::uint8_t, 256> newer;
  std::uint8_t front = 0x20;
};

// The output of both methods.
class RecencyOutput {
 public:
  explicit RecencyOutput(DecodeJob& decodeJob) : job(decodeJob) {}

  void PutLiteral(unsigned index) {
    const std::uint8_t byte = recent.At(index);
    recent.MoveToFront(byte);
    job.target[job.done++] = byte;
  }

  void Copy(std::size_t offset, std::size_t length) {
    const std::size_t begin = job.done;
    job.done = CopyMatch(job.target, begin, offset + 1, length);
    for (const std::uint8_t byte : job.target.subspan(begin, job.done - begin)) {
      recent.MoveToFront(byte);
    }
  }

 private:
  DecodeJob& job;
  RecencyList recent;
};

// A range of numbers: `base` plus a field of `bits` bits.
struct Span {
  unsigned base;
  unsigned bits;

  unsigned Take(BitReader& in) const { return bits == 0 ? base : base + in.Take(bits); }
};

// ----------------------------------------------------------------------------------------------
// pm1

// The six classes of literals, as ranges of list indices.
constexpr Span kPm1Classes[] = {{0, 4}, {16, 4}, {32, 5}, {64, 6}, {128, 6}, {192, 6}};

// The codes of the classes; each member uses one row.  Row 17 was a mistake in the first program
// that wrote them, and became part of the format: two classes have two codes each.
struct Pm1Code {
  std::string_view text;  // codes separated by blanks; '/' between two of one class
  unsigned firstClass = 0;
};
constexpr Pm1Code kPm1Codes[32] = {
    {"0000 0001 001 01 10 11"},
    {"000 001 010 10 11 011"},
    {"000 001 01 10 110 111"},
    {"00 010 011 10 110 111"},
    {"00 010 10 011 110 111"},
    {"00 010 10 11 0110 0111"},
    {"00 01 100 101 110 111"},
    {"00 01 100 11 1010 1011"},
    {"00 01 10 110 1110 1111"},
    {"0 1000 101 110 111 1001"},
    {"0 1000 101 11 10010 10011"},
    {"0 1000 1001 101 110 111"},
    {"0 100 1010 110 111 1011"},
    {"0 100 101 110 1110 1111"},
    {"0 100 11 1010 10110 10111"},
    {"0 10 1100 1101 1110 1111"},
    {"0 10 110 1110 11110 11111"},
    {"01 000/10 001/11", 2},
    {"00 010 10 11 011"},
    {"00 01 10 110 111"},
    {"0 1000 101 11 1001"},
    {"0 100 101 110 111"},
    {"0 100 11 1010 1011"},
    {"0 10 110 1110 1111"},
    {"000 001 01 1"},
    {"00 010 1 011"},
    {"00 01 10 11"},
    {"0 100 11 101"},
    {"0 10 110 111"},
    {"0 10 11"},
    {"0 1"},
    {""},  // always the first class
};

// Decodes a class.
class Pm1ClassTable {
 public:
  explicit Pm1ClassTable(const Pm1Code& code) {
    unsigned nextClass = code.firstClass;
    for (std::string_view left = code.text;;) {
      const std::size_t length = std::min(left.find_first_of(" /"), left.size());
      Enter(left.substr(0, length), nextClass);
      if (length == left.size()) return;
      if (left[length] == ' ') ++nextClass;
      left.remove_prefix(length + 1);
    }
  }

  // Consumes a code and returns its class.
  const Span& Take(BitReader& in) const {
    const Entry entry = entries[in.Peek(kBits)];
    in.Consume(entry.bits);
    return kPm1Classes[entry.literalClass];
  }

 private:
  static constexpr unsigned kBits = 5;  // of the longest code
  struct Entry {
    std::uint8_t literalClass;
    std::uint8_t bits;
  };

  void Enter(std::string_view code, unsigned literalClass) {
    std::size_t first = 0;
    for (const char bit : code) first = first << 1 | (bit == '1' ? 1U : 0U);
    const std::size_t count = std::size_t{1} << (kBits - code.size());
    const Entry entry{static_cast<std::uint8_t>(literalClass),
                      static_cast<std::uint8_t>(code.size())};
    std::fill_n(entries.begin() + static_cast<std::ptrdiff_t>(first * count), count, entry);
  }

  std::array<Entry, 1U << kBits> entries{};
};

class Pm1Decoder {
 public:
  explicit Pm1Decoder(DecodeJob& decodeJob)
      : job(decodeJob), in(decodeJob.packed), classes(kPm1Codes[in.ReadBits(5)]), out(decodeJob) {}

  // Commands are copies (0 bit) and runs of literals (1 bit).  A run is followed by a copy without
  // a command bit, except for the longest run, after which another one may follow.
  Status DecodeUpTo(std::size_t limit) {
    while (job.done < limit) {
      if (in.ReadBits(1) != 0) {
        const std::size_t run = TakeRun();
        if (!PutLiterals(run)) return Status::Truncated;
        if (run != kLongestRun && !job.IsFull() && !Copy()) return Fault(Status::Damaged);
      } else if (!Copy()) {
        return Fault(Status::Damaged);
      }
      if (in.IsFarPastEnd()) return Status::Truncated;
    }
    return Status::Ok;
  }

 private:
  static constexpr std::size_t kLongestRun = 216;

  Status Fault(Status status) const { return in.IsPastEnd() ? Status::Truncated : status; }

  std::size_t TakeRun() {
    in.Refill();
    if (const unsigned x = in.Take(2); x < 3) return x + 1;
    if (const unsigned x = in.Take(3); x < 7) return x + 4;
    const unsigned x = in.Take(4);
    if (x < 14) return x + 11;
    return x == 14 ? in.Take(6) + 25 : in.Take(7) + 89;
  }

  bool PutLiterals(std::size_t run) {
    for (run = std::min(run, job.target.size() - job.done); run != 0; --run) {
      in.Refill();
      out.PutLiteral(classes.Take(in).Take(in));
      if (in.IsFarPastEnd()) return false;
    }
    return true;
  }

  bool Copy() {
    in.Refill();
    const unsigned range = TakeRange();
    const std::size_t length = range < 2 ? 2 : TakeLength();
    in.Refill();
    const std::size_t offset = OffsetSpan(range).Take(in);
    if (offset >= job.done) return false;
    out.Copy(offset, length);
    return true;
  }

  // Offset ranges that lie entirely before the data have no code yet.
  unsigned TakeRange() {
    const std::size_t done = job.done;
    if (in.Take(1) == 0) {
      if (done >= 576 && in.Take(1) != 0) return 4;
      return done >= 64 ? in.Take(1) : 0;
    }
    if (done >= 64 && in.Take(1) == 0) return 3;
    if (done < 2624) return 2;
    return in.Take(1) != 0 ? 2 : 5;
  }

  std::size_t TakeLength() {
    if (const unsigned x = in.Take(2); x < 3) return x + 3;
    const unsigned x = in.Take(3);
    if (x < 5) return x + 6;
    if (x == 5) return in.Take(2) + 11;
    if (x == 6) return in.Take(3) + 15;
    const unsigned y = in.Take(6);
    if (y < 62) return y + 23;
    return y == 62 ? in.Take(5) + 85 : in.Take(7) + 117;
  }

  // The two farthest ranges take as many bits as the data unpacked so far requires.
  Span OffsetSpan(unsigned range) const {
    const std::size_t done = job.done;
    const auto bitsBeyond = [&](unsigned base, unsigned most) {
      unsigned bits = 8;
      for (std::size_t reach = base + 256; bits < most && done >= reach;
           reach = base + (1U << bits)) {
        ++bits;
      }
      return Span{base, bits};
    };
    switch (range) {
      case 1:
        return {64, 8};
      case 3:
        return {64, done < 320 ? 8U : 9U};
      case 4:
        return bitsBeyond(576, 11);
      case 5:
        return bitsBeyond(2624, 13);
      default:
        return {0, 6};
    }
  }

  DecodeJob& job;
  BitReader in;
  const Pm1ClassTable classes;
  RecencyOutput out;
};

// ----------------------------------------------------------------------------------------------
// pm2

constexpr Span kPm2Literals[] = {{0, 3},  {8, 3},  {16, 4},  {32, 5},
                                 {64, 5}, {96, 5}, {128, 6}, {192, 6}};
constexpr unsigned kPm2PairSymbol = 8;   // a copy of two bytes from a short distance
constexpr unsigned kPm2ShortSymbol = 9;  // to 22: copies of 3 to 16 bytes
constexpr unsigned kPm2LongSymbol = 23;  // to 27: lengths with extra bits
constexpr Span kPm2Longs[] = {{17, 3}, {25, 3}, {33, 5}, {65, 6}, {129, 7}};
constexpr unsigned kPm2RepeatSymbol = 28;  // repeats the previous byte 256 times

class Pm2Decoder {
 public:
  explicit Pm2Decoder(DecodeJob& decodeJob) : job(decodeJob), in(decodeJob.packed), out(decodeJob) {
    in.ReadBits(1);  // unused
  }

  Status DecodeUpTo(std::size_t limit) {
    while (job.done < limit) {
      const bool isGood = (job.done < nextCodesAt || ReadCodes()) && DecodeItem();
      if (in.IsFarPastEnd()) return Status::Truncated;
      if (!isGood) return in.IsPastEnd() ? Status::Truncated : Status::Damaged;
    }
    return Status::Ok;
  }

 private:
  static constexpr std::size_t kStretch = 4096;  // bytes between new codes, after the first ones

  // New codes come at fixed positions of the data: first with more distance symbols as it grows,
  // then wherever the writer chooses.
  bool ReadCodes() {
    switch (nextCodesAt) {
      case 0:
        nextCodesAt = 1024;
        return ReadItemCode() && ReadDistanceCode(5);
      case 1024:
        nextCodesAt = 2048;
        return ReadDistanceCode(6);
      case 2048:
        nextCodesAt = kStretch;
        return ReadDistanceCode(7);
      case kStretch:
        nextCodesAt = 2 * kStretch;
        return (in.ReadBits(1) == 0 || ReadItemCode()) && ReadDistanceCode(8);
      default:
        nextCodesAt += kStretch;
        return in.ReadBits(1) == 0 || (ReadItemCode() && ReadDistanceCode(8));
    }
  }

  bool ReadItemCode() {
    in.Refill();
    const unsigned count = in.Take(5);
    const unsigned least = in.Take(3);
    if (least == 0) {
      needsDistances = count >= 10 && count != kPm2RepeatSymbol + 1;
      itemCode.BuildSingle(count - 1);
      return count != 0;
    }
    needsDistances = count >= 10;
    const unsigned width = in.Take(3);
    std::array<std::uint8_t, kItemSymbols> lengths{};
    for (unsigned i = 0; i < count; ++i) {
      const unsigned value = width == 0 ? 0 : in.ReadBits(width);
      if (value == 0) continue;
      if (value + least - 1 > kMaxCodeBits) return false;
      lengths[i] = static_cast<std::uint8_t>(value + least - 1);
    }
    return itemCode.Build(lengths) && !itemCode.IsEmpty();
  }

  // A code without lengths means that the previous one stays in use.
  bool ReadDistanceCode(unsigned count) {
    if (!needsDistances) return true;
    std::array<std::uint8_t, kDistanceSymbols> lengths{};
    unsigned used = 0;
    unsigned lastUsed = 0;
    for (unsigned i = 0; i < count; ++i) {
      lengths[i] = static_cast<std::uint8_t>(in.ReadBits(3));
      if (lengths[i] == 0) continue;
      ++used;
      lastUsed = i;
    }
    if (used == 1) distanceCode.BuildSingle(lastUsed);
    return used < 2 || distanceCode.Build(lengths);
  }

  bool DecodeItem() {
    in.Refill();
    const unsigned symbol = itemCode.Decode(in);
    if (symbol < kPm2PairSymbol) {
      out.PutLiteral(kPm2Literals[symbol].Take(in));
    } else if (symbol == kPm2PairSymbol) {
      out.Copy(in.Take(6), 2);
    } else if (symbol < kPm2RepeatSymbol) {
      if (distanceCode.IsEmpty()) return false;
      const std::size_t length = symbol < kPm2LongSymbol
                                     ? symbol - kPm2ShortSymbol + 3
                                     : kPm2Longs[symbol - kPm2LongSymbol].Take(in);
      const unsigned distance = distanceCode.Decode(in);
      in.Refill();
      out.Copy(distance == 0 ? in.Take(6) : (64U << (distance - 1)) + in.Take(distance + 5),
               length);
    } else if (symbol == kPm2RepeatSymbol) {
      out.Copy(0, 256);
    } else {
      return false;
    }
    return true;
  }

  static constexpr unsigned kItemSymbols = 31;
  static constexpr unsigned kDistanceSymbols = 8;

  DecodeJob& job;
  BitReader in;
  RecencyOutput out;
  std::size_t nextCodesAt = 0;
  bool needsDistances = false;
  HuffmanTable<kItemSymbols, 8> itemCode;
  HuffmanTable<kDistanceSymbols, 7> distanceCode;
};

template <typename MethodDecoder>
Status DecodeWith(DecodeJob& job) {
  MethodDecoder decoder(job);
  return job.Run([&](std::size_t limit) { return decoder.DecodeUpTo(limit); });
}

}  // namespace

Status DecodePm1(DecodeJob& job) {
  return DecodeWith<Pm1Decoder>(job);
}

Status DecodePm2(DecodeJob& job) {
  return DecodeWith<Pm2Decoder>(job);
}

}  // namespace kozor::codec
