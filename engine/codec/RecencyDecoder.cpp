// RecencyDecoder.cpp - unpacks pm1 and pm2, which code literals by move-to-front.
//
// A list holds all 256 byte values, and each byte of the data, literal or copied, moves to its
// front.  A literal is sent as an index into that list, so recent bytes have small numbers.
#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <numeric>
#include <span>
#include <string_view>

#include "engine/codec/BitReader.h"
#include "engine/codec/Decoders.h"
#include "engine/codec/HuffmanTable.h"
#include "engine/codec/MatchCopy.h"

namespace kozor::codec {
namespace {

// The byte values by recency.  Each has a rank: 0 if it is the most recent, else the number of more
// recent ones.  Moving a byte to the front adds 1 to all ranks below its own.  That is the same
// work for any rank, without a branch, and compilers make vectors of it.
class RecencyList {
 public:
  RecencyList() {
    struct Range {
      unsigned first, last;
    };
    unsigned rank = 0;
    for (const Range range : {Range{0x20, 0x7F}, Range{0x00, 0x1F}, Range{0xA0, 0xDF},
                              Range{0x80, 0x9F}, Range{0xE0, 0xFF}}) {
      for (unsigned byte = range.first; byte <= range.last; ++byte) ranks[byte] = AsRank(rank++);
    }
  }

  // Moves the byte with this index, below 256, to the front and returns it.
  std::uint8_t Take(unsigned index) {
    const Rank taken = AsRank(index);
    const auto toFront = static_cast<Rank>(taken ^ kFront);
    std::uint8_t found = 0;
    for (std::size_t i = 0; i < ranks.size(); ++i) {
      const Rank isTaken = Mask(ranks[i] == taken);
      const auto passed = static_cast<Rank>(ranks[i] - Mask(ranks[i] < taken));
      found = static_cast<std::uint8_t>(found | (isTaken & kBytes[i]));
      ranks[i] = static_cast<Rank>(passed ^ (isTaken & toFront));
    }
    return found;
  }

  // The same for each of these bytes in turn.  Only the last place of each byte counts.
  void MoveToFront(std::span<const std::uint8_t> bytes) {
    std::array<std::uint8_t, 257> moved;  // the last first; one more for the byte after them
    std::size_t count = 0;
    for (std::size_t i = bytes.size(); i != 0; --i) {
      const std::uint8_t byte = bytes[i - 1];
      moved[count] = byte;
      count += isMoved[byte] ? 0U : 1U;
      isMoved[byte] = true;
    }
    for (std::size_t i = 0; i < count; ++i) isMoved[moved[i]] = false;
    while (count != 0) {
      const std::size_t few = (count - 1) % kFew + 1;
      count -= few;
      MoveFew(std::span(moved).subspan(count, few));
    }
  }

 private:
  // Less 128, because processors compare vectors of signed numbers.
  using Rank = std::int8_t;
  static constexpr Rank kFront = -128;
  static constexpr Rank AsRank(std::size_t rank) {
    return static_cast<Rank>(kFront + static_cast<int>(rank));
  }

  // All bits set or none: what a comparison of vectors yields.
  static constexpr Rank Mask(bool is) { return static_cast<Rank>(is ? -1 : 0); }

  // Moves up to kFew different bytes, the first of them to the very front.
  static constexpr std::size_t kFew = 8;
  void MoveFew(std::span<const std::uint8_t> moved) {
    std::array<Rank, kFew> old;
    old.fill(kFront);  // no rank is below that
    for (std::size_t i = 0; i < moved.size(); ++i) old[i] = ranks[moved[i]];
    for (Rank& rank : ranks) {
      Rank passed = rank;
      for (const Rank limit : old) passed = static_cast<Rank>(passed - Mask(rank < limit));
      rank = passed;
    }
    for (std::size_t i = 0; i < moved.size(); ++i) ranks[moved[i]] = AsRank(i);
  }

  // The index of a vector's lane, as a table.
  static constexpr std::array<std::uint8_t, 256> kBytes = [] {
    std::array<std::uint8_t, 256> bytes{};
    std::iota(bytes.begin(), bytes.end(), std::uint8_t{0});
    return bytes;
  }();

  alignas(64) std::array<Rank, 256> ranks;
  std::array<bool, 256> isMoved{};  // used by MoveToFront
};

// The output of both methods.
class RecencyOutput {
 public:
  explicit RecencyOutput(DecodeJob& decodeJob) : job(decodeJob) {}

  void PutLiteral(unsigned index) {
    if (listed != job.done) recent.MoveToFront(job.target.subspan(listed, job.done - listed));
    job.target[job.done++] = recent.Take(index);
    listed = job.done;
  }

  void Copy(std::size_t offset, std::size_t length) {
    job.done = CopyMatch(job.target, job.done, offset + 1, length);
  }

 private:
  DecodeJob& job;
  RecencyList recent;  // after `listed` bytes: copies are left to the next literal
  std::size_t listed = 0;
};

// A range of numbers: `base` plus a field of `bits` bits, at least 1.
struct Span {
  unsigned base;
  unsigned bits;

  template <typename Bits>
  unsigned Take(Bits& in) const {
    return base + in.Take(bits);
  }
};

// Calls `decode` with a copy of the buffer, which stays in registers, as long as `wanted` and two
// refills are possible.
template <typename Wanted, typename Decode>
void DecodeInside(BitReader& in, Wanted wanted, Decode decode) {
  struct Bits : BitBuffer {
    void Refill() { RefillFast(); }
  };
  Bits bits{in};  // NOLINT(cppcoreguidelines-slicing): the buffer alone is wanted
  const std::uint8_t* const pieceEnd = in.PieceEnd();
  while (bits.CanRefill(2, pieceEnd) && wanted()) decode(bits);
  in.GoOnFrom(bits);
}

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

// Decodes literals.
class Pm1LiteralTable {
 public:
  explicit Pm1LiteralTable(const Pm1Code& code) {
    unsigned nextClass = code.firstClass;
    for (std::string_view left = code.text;;) {
      const std::size_t length = std::min(left.find_first_of(" /"), left.size());
      Enter(left.substr(0, length), nextClass);
      if (length == left.size()) return;
      if (left[length] == ' ') ++nextClass;
      left.remove_prefix(length + 1);
    }
  }

  // Consumes a literal and returns its list index.
  template <typename Bits>
  unsigned Take(Bits& in) const {
    const Entry entry = entries[in.Peek(kBits)];
    in.Consume(entry.codeBits);
    return entry.base + in.Take(entry.bits);
  }

 private:
  static constexpr unsigned kBits = 5;  // of the longest code
  struct Entry {
    std::uint8_t codeBits = 0;
    std::uint8_t base = 0;  // of the class
    std::uint8_t bits = 1;
  };

  void Enter(std::string_view code, unsigned literalClass) {
    std::size_t first = 0;
    for (const char bit : code) first = first << 1 | (bit == '1' ? 1U : 0U);
    const std::size_t count = std::size_t{1} << (kBits - code.size());
    const Span& indices = kPm1Classes[literalClass];
    const Entry entry{static_cast<std::uint8_t>(code.size()),
                      static_cast<std::uint8_t>(indices.base),
                      static_cast<std::uint8_t>(indices.bits)};
    std::fill_n(entries.begin() + static_cast<std::ptrdiff_t>(first * count), count, entry);
  }

  std::array<Entry, 1U << kBits> entries{};
};

// Decodes the beginnings of copies by a table: the code of a range of offsets, then a length or the
// prefix of one.
//
// A range that lies entirely before the data has no code yet, and the two farthest ones take as
// many bits as the data so far requires.  So the table changes during the first 6,720 bytes.
class Pm1CopyTable {
 public:
  struct Beginning {
    std::uint8_t codeBits;
    std::uint8_t range;
    std::uint8_t length;  // the least
    std::uint8_t lengthBits;
  };

  // Prepares for a copy after so many bytes.
  void Prepare(std::size_t done) {
    if (done < validUpTo) return;
    constexpr std::size_t kChanges[] = {64,   320,  576,  832,  1088, 1600,    2624,
                                        2880, 3136, 3648, 4672, 6720, kForever};
    validUpTo = *std::ranges::upper_bound(kChanges, done);
    for (unsigned bits = 0; bits < beginnings.size(); ++bits) beginnings[bits] = Read(bits, done);
    offsets = {Span{0, 6},
               {64, 8},
               {0, 6},
               {64, done < 320 ? 8U : 9U},
               GrowingSpan(576, 11, done),
               GrowingSpan(2624, 13, done)};
  }

  template <typename Bits>
  Beginning Take(Bits& in) const {
    const Beginning beginning = beginnings[in.Peek(kBits)];
    in.Consume(beginning.codeBits);
    return beginning;
  }

  const Span& Offsets(unsigned range) const { return offsets[range]; }

 private:
  static constexpr unsigned kBits = 3 + 5;  // of the longest code
  static constexpr std::size_t kForever = std::numeric_limits<std::size_t>::max();

  static Beginning Read(unsigned bits, std::size_t done) {
    unsigned codeBits = 0;
    const auto take = [&](unsigned count) {
      codeBits += count;
      return bits >> (kBits - codeBits) & ((1U << count) - 1);
    };
    const unsigned range = TakeRange(take, done);
    const Span length = range < 2 ? Span{2, 0} : TakeLengths(take);
    return {static_cast<std::uint8_t>(codeBits), static_cast<std::uint8_t>(range),
            static_cast<std::uint8_t>(length.base), static_cast<std::uint8_t>(length.bits)};
  }

  template <typename Take>
  static unsigned TakeRange(Take take, std::size_t done) {
    if (take(1) == 0) {
      if (done >= 576 && take(1) != 0) return 4;
      return done >= 64 ? take(1) : 0;
    }
    if (done >= 64 && take(1) == 0) return 3;
    if (done < 2624) return 2;
    return take(1) != 0 ? 2 : 5;
  }

  template <typename Take>
  static Span TakeLengths(Take take) {
    if (const unsigned x = take(2); x < 3) return {x + 3, 0};
    const unsigned x = take(3);
    if (x < 5) return {x + 6, 0};
    return x == 5 ? Span{11, 2} : x == 6 ? Span{15, 3} : Span{23, 6};
  }

  static Span GrowingSpan(unsigned base, unsigned mostBits, std::size_t done) {
    unsigned bits = 8;
    while (bits < mostBits && done >= base + (std::size_t{1} << bits)) ++bits;
    return {base, bits};
  }

  std::size_t validUpTo = 0;
  std::array<Beginning, 1U << kBits> beginnings;
  std::array<Span, 6> offsets;
};

class Pm1Decoder {
 public:
  explicit Pm1Decoder(DecodeJob& decodeJob)
      : job(decodeJob), in(decodeJob.packed), literals(kPm1Codes[in.ReadBits(5)]), out(decodeJob) {}

  Status DecodeUpTo(std::size_t limit) {
    bool isGood = true;
    while (isGood && job.done < limit) {
      DecodeInside(
          in, [&] { return isGood && job.done < limit; },
          [&](auto& bits) { isGood = DecodeItem(bits); });
      if (isGood && job.done < limit) isGood = DecodeItem(in);
      if (in.IsFarPastEnd()) return Status::Truncated;
    }
    if (isGood) return Status::Ok;
    return in.IsPastEnd() ? Status::Truncated : Status::Damaged;
  }

 private:
  static constexpr std::size_t kLongestRun = 216;

  // Commands are copies (0 bit) and runs of literals (1 bit).  A run is followed by a copy without
  // a command bit, except for the longest run, after which another one may follow.
  template <typename Bits>
  bool DecodeItem(Bits& bits) {
    bits.Refill();
    if (literalsLeft != 0) {
      --literalsLeft;
      out.PutLiteral(literals.Take(bits));
    } else if (isCopyNext || bits.Take(1) == 0) {
      isCopyNext = false;
      return Copy(bits);
    } else {
      literalsLeft = TakeRun(bits);
      isCopyNext = literalsLeft != kLongestRun;
    }
    return true;
  }

  template <typename Bits>
  static std::size_t TakeRun(Bits& bits) {
    if (const unsigned x = bits.Take(2); x < 3) return x + 1;
    if (const unsigned x = bits.Take(3); x < 7) return x + 4;
    const unsigned x = bits.Take(4);
    if (x < 14) return x + 11;
    return x == 14 ? bits.Take(6) + 25 : bits.Take(7) + 89;
  }

  template <typename Bits>
  bool Copy(Bits& bits) {
    copies.Prepare(job.done);
    const Pm1CopyTable::Beginning beginning = copies.Take(bits);
    std::size_t length = beginning.length;
    if (beginning.lengthBits != 0) length += bits.Take(beginning.lengthBits);
    if (length >= 85) [[unlikely]]
      length = length == 85 ? bits.Take(5) + 85 : bits.Take(7) + 117;
    const std::size_t offset = copies.Offsets(beginning.range).Take(bits);
    if (offset >= job.done) return false;
    out.Copy(offset, length);
    return true;
  }

  DecodeJob& job;
  BitReader in;
  const Pm1LiteralTable literals;
  Pm1CopyTable copies;
  RecencyOutput out;
  std::size_t literalsLeft = 0;  // of the current run
  bool isCopyNext = false;       // after it
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

// Of a symbol, after its code: a list index, the offset of a pair, or a length.
constexpr unsigned Pm2ExtraBits(unsigned symbol) {
  if (symbol < kPm2PairSymbol) return kPm2Literals[symbol].bits;
  if (symbol == kPm2PairSymbol) return 6;
  const bool isLong = symbol >= kPm2LongSymbol && symbol < kPm2RepeatSymbol;
  return isLong ? kPm2Longs[symbol - kPm2LongSymbol].bits : 0;
}

class Pm2Decoder {
 public:
  explicit Pm2Decoder(DecodeJob& decodeJob) : job(decodeJob), in(decodeJob.packed), out(decodeJob) {
    in.ReadBits(1);  // unused
  }

  Status DecodeUpTo(std::size_t limit) {
    while (job.done < limit) {
      const bool isGood =
          (job.done < nextCodesAt || ReadCodes()) && DecodeItems(std::min(limit, nextCodesAt));
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

  // At least one.
  bool DecodeItems(std::size_t limit) {
    bool isGood = true;
    DecodeInside(
        in, [&] { return isGood && job.done < limit; },
        [&](auto& bits) { isGood = DecodeItem(bits); });
    return isGood && (job.done >= limit || DecodeItem(in));
  }

  template <typename Bits>
  bool DecodeItem(Bits& bits) {
    bits.Refill();
    const auto [symbol, extra] = itemCode.DecodeExtended(bits);
    const auto number = [&left = extra](unsigned count) {
      return static_cast<unsigned>(left >> (64 - count));
    };
    if (symbol < kPm2PairSymbol) {
      const Span& indices = kPm2Literals[symbol];
      out.PutLiteral(indices.base + number(indices.bits));
    } else if (symbol == kPm2PairSymbol) {
      out.Copy(number(6), 2);
    } else if (symbol < kPm2LongSymbol) {
      return CopyFar(bits, symbol - kPm2ShortSymbol + 3);
    } else if (symbol < kPm2RepeatSymbol) {
      const Span& lengths = kPm2Longs[symbol - kPm2LongSymbol];
      return CopyFar(bits, lengths.base + number(lengths.bits));
    } else if (symbol == kPm2RepeatSymbol) {
      out.Copy(0, 256);
    } else {
      return false;
    }
    return true;
  }

  template <typename Bits>
  bool CopyFar(Bits& bits, std::size_t length) {
    if (distanceCode.IsEmpty()) return false;
    const unsigned distance = distanceCode.Decode(bits);
    bits.Refill();
    out.Copy(distance == 0 ? bits.Take(6) : (64U << (distance - 1)) + bits.Take(distance + 5),
             length);
    return true;
  }

  static constexpr unsigned kItemSymbols = 31;
  static constexpr unsigned kDistanceSymbols = 8;

  DecodeJob& job;
  BitReader in;
  RecencyOutput out;
  std::size_t nextCodesAt = 0;
  bool needsDistances = false;
  HuffmanTable<kItemSymbols, 8, Pm2ExtraBits> itemCode;
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
