// BlockDecoder.cpp - unpacks the block-Huffman methods: lh3, lh4 to lh7, lhx, and the other scheme
// under the id of lh7.
//
// One template serves them all.  A scheme describes the differences: the alphabets, the extra bits
// of symbols, and how a block's head transmits the codes.
//
// The packed data is untrusted.  These rules keep it harmless:
//  - only complete codes are accepted, so any bits decode to a symbol of the code;
//  - every item yields at least one byte, so even blocks whose codes take no bits end;
//  - bits past the end of the data are zeros, and after a few of them an error;
//  - items are unpacked without bounds checks only while the longest match fits with room to spare.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "engine/codec/BitReader.h"
#include "engine/codec/Decoders.h"
#include "engine/codec/HuffmanTable.h"
#include "engine/codec/LhFormat.h"
#include "engine/codec/MatchCopy.h"

namespace kozor::codec {
namespace {

template <typename Scheme>
using ItemCode = HuffmanTable<Scheme::kItems, 11, Scheme::ItemExtraBits>;
template <typename Scheme>
using DistanceCode = HuffmanTable<Scheme::kDistances, 8, Scheme::DistanceExtraBits>;

// The block heads of lh4 to lh7 and lhx: a tree code encodes the lengths of the item code.
class LhHead {
 public:
  explicit LhHead(const LhMethod& lhMethod) : method(lhMethod) {}

  // The method must not have more distance symbols than the scheme.
  template <typename Scheme>
  bool ReadCodes(BitReader& in, ItemCode<Scheme>& itemCode, DistanceCode<Scheme>& distanceCode) {
    std::array<std::uint8_t, Scheme::kItems> itemLengths{};
    std::array<std::uint8_t, Scheme::kDistances> distanceLengths{};
    return ReadTreeCode(in) && ReadItemCode(in, itemLengths, itemCode) &&
           ReadDistanceCode(in, distanceLengths, distanceCode);
  }

 private:
  // Reads a code length of the tree code or the distance code.
  static unsigned ReadLength(BitReader& in) {
    in.Refill();
    unsigned length = in.Take(kLengthBits);
    if (length == kLongLength) {
      while (length <= kMaxCodeBits && in.Take(1) != 0) ++length;
    }
    return length;
  }

  bool ReadTreeCode(BitReader& in) {
    const unsigned count = in.ReadBits(kTreeCountBits);
    if (count > kTreeSymbols) return false;
    if (count == 0) {
      const unsigned symbol = in.Take(kTreeCountBits);
      treeCode.BuildSingle(symbol);
      return symbol < kTreeSymbols;
    }
    std::array<std::uint8_t, kTreeSymbols + kTreeGapMax> lengths{};
    for (unsigned i = 0; i < count;) {
      const unsigned length = ReadLength(in);
      if (length > kMaxCodeBits) return false;
      lengths[i++] = static_cast<std::uint8_t>(length);
      if (i == kTreeGapIndex) i += in.Take(kTreeGapBits);
    }
    return treeCode.Build(std::span(lengths).first(kTreeSymbols));
  }

  template <typename Table>
  bool ReadItemCode(BitReader& in, std::span<std::uint8_t> lengths, Table& itemCode) {
    const unsigned count = in.ReadBits(kItemCountBits);
    if (count > lengths.size()) return false;
    if (count == 0) {
      const unsigned symbol = in.Take(kItemCountBits);
      itemCode.BuildSingle(symbol);
      return symbol < lengths.size();
    }
    return ReadItemLengths(in, lengths.first(count)) && itemCode.Build(lengths) &&
           !itemCode.IsEmpty();
  }

  bool ReadItemLengths(BitReader& in, std::span<std::uint8_t> lengths) {
    if (treeCode.IsEmpty()) return false;
    for (std::size_t i = 0; i < lengths.size();) {
      in.Refill();
      const unsigned symbol = treeCode.Decode(in);
      if (symbol > kLongZeroRun) {
        lengths[i++] = static_cast<std::uint8_t>(symbol - kLengthToTreeSymbol);
      } else if (symbol == kOneZero) {
        ++i;
      } else if (symbol == kShortZeroRun) {
        i += in.Take(kShortZeroRunBits) + kShortZeroRunMin;
      } else {
        i += in.Take(kLongZeroRunBits) + kLongZeroRunMin;
      }
      if (i > lengths.size()) return false;
    }
    return true;
  }

  template <typename Table>
  bool ReadDistanceCode(BitReader& in, std::span<std::uint8_t> lengths, Table& distanceCode) {
    const unsigned count = in.ReadBits(method.distanceCountBits);
    if (count > method.distanceSymbolsMax) return false;
    if (count == 0) {
      const unsigned symbol = in.Take(method.distanceCountBits);
      distanceCode.BuildSingle(symbol);
      return symbol < method.distanceSymbolsMax;
    }
    for (unsigned i = 0; i < count; ++i) {
      const unsigned length = ReadLength(in);
      if (length > kMaxCodeBits) return false;
      lengths[i] = static_cast<std::uint8_t>(length);
    }
    return distanceCode.Build(lengths);
  }

  const LhMethod& method;
  HuffmanTable<kTreeSymbols, 7> treeCode;
};

// lh4 to lh7 and lhx.  The symbol of a match gives its length without extra bits.
struct LhScheme : LhHead {
  using LhHead::LhHead;

  static constexpr unsigned kItems = kItemSymbols;
  static constexpr unsigned kDistances = kDistanceSymbols;
  static constexpr std::size_t kLongestMatch = kMaxMatchLength;
  static constexpr unsigned kMostExtraBits = codec::DistanceExtraBits(kDistanceSymbols - 1);

  static constexpr unsigned ItemExtraBits(unsigned) { return 0; }
  static std::size_t Length(unsigned symbol, std::uint64_t) { return symbol - kLengthToItemSymbol; }

  // The offset is the leading 1 that the symbol implies, followed by the extra bits.  Shifting
  // twice avoids an undefined shift by 64 for symbol 0 (offset 0).
  static constexpr unsigned DistanceExtraBits(unsigned symbol) {
    return codec::DistanceExtraBits(symbol);
  }
  static std::size_t Distance(unsigned symbol, std::uint64_t extra) {
    constexpr std::uint64_t kLeadingOne = std::uint64_t{1} << 63;
    return static_cast<std::size_t>((((extra >> 1) | kLeadingOne) >> (63 - symbol)) >> 1) + 1;
  }
};

#ifndef KOZOR_SMALL_CODEC

// The first `count` left-aligned bits as a number.
constexpr std::size_t Leading(std::uint64_t bits, unsigned count) {
  return static_cast<std::size_t>((bits >> 1) >> (63 - count));
}

// The other scheme under the id of lh7: the same heads, but lengths and distances in size classes,
// with four length classes and two distance classes for each number of extra bits.
constexpr LhMethod kLk7{65536, 6, 32};

struct Lk7Scheme : LhHead {
  Lk7Scheme() : LhHead(kLk7) {}

  static constexpr unsigned kItems = 289;
  static constexpr unsigned kDistances = 32;
  static constexpr std::size_t kLongestMatch = 514;
  static constexpr unsigned kMostExtraBits = 6 + 14;

  static constexpr unsigned ItemExtraBits(unsigned symbol) {
    return symbol < kFirstClass || symbol >= kLongestSymbol ? 0 : (symbol - 260) / 4;
  }
  static std::size_t Length(unsigned symbol, std::uint64_t extra) {
    if (symbol < kFirstClass) return symbol - kLengthToItemSymbol;
    if (symbol == kLongestSymbol) return kLongestMatch;
    const unsigned bits = ItemExtraBits(symbol);
    return ((std::size_t{4} + symbol % 4) << bits) + Leading(extra, bits) + kMinMatchLength;
  }

  static constexpr unsigned DistanceExtraBits(unsigned symbol) {
    return symbol < 4 ? 0 : (symbol - 2) / 2;
  }
  static std::size_t Distance(unsigned symbol, std::uint64_t extra) {
    if (symbol < 4) return symbol + 1;
    const unsigned bits = DistanceExtraBits(symbol);
    return ((std::size_t{2} + symbol % 2) << bits) + Leading(extra, bits) + 1;
  }

 private:
  static constexpr unsigned kFirstClass = 264;
  static constexpr unsigned kLongestSymbol = 288;
};

// lh3, the oldest of the family: code lengths in plain fields, and 13-bit distances whose upper 7
// bits are a symbol.
struct Lh3Scheme {
  static constexpr unsigned kItems = 286;
  static constexpr unsigned kDistances = 128;
  static constexpr std::size_t kLongestMatch = 32 + 255;
  static constexpr unsigned kMostExtraBits = 8 + 6;

  static constexpr unsigned ItemExtraBits(unsigned symbol) { return symbol == kLongSymbol ? 8 : 0; }
  static std::size_t Length(unsigned symbol, std::uint64_t extra) {
    return symbol == kLongSymbol ? 32 + Leading(extra, 8) : symbol - kLengthToItemSymbol;
  }

  static constexpr unsigned DistanceExtraBits(unsigned) { return 6; }
  static std::size_t Distance(unsigned symbol, std::uint64_t extra) {
    return (std::size_t{symbol} << 6) + Leading(extra, 6) + 1;
  }

  template <typename Scheme>
  static bool ReadCodes(BitReader& in, ItemCode<Scheme>& itemCode,
                        DistanceCode<Scheme>& distanceCode) {
    const auto readItemLength = [&] { return in.ReadBits(1) == 0 ? 0U : in.Take(4) + 1; };
    const auto readDistanceLength = [&] { return in.ReadBits(4); };
    std::array<std::uint8_t, kItems> itemLengths{};
    if (!ReadCode(in, itemLengths, readItemLength, 9, itemCode) || itemCode.IsEmpty()) return false;
    std::array<std::uint8_t, kDistances> distanceLengths{};
    if (in.ReadBits(1) == 0) return distanceCode.Build(PresetDistanceLengths(distanceLengths));
    return ReadCode(in, distanceLengths, readDistanceLength, 7, distanceCode);
  }

 private:
  static constexpr unsigned kLongSymbol = 285;

  // Three lengths of 1, impossible in a prefix code, introduce a code of one symbol.
  template <typename ReadLength, typename Table>
  static bool ReadCode(BitReader& in, std::span<std::uint8_t> lengths, ReadLength readLength,
                       unsigned symbolBits, Table& code) {
    for (std::size_t i = 0; i < lengths.size(); ++i) {
      lengths[i] = static_cast<std::uint8_t>(readLength());
      if (i != 2 || lengths[0] != 1 || lengths[1] != 1 || lengths[2] != 1) continue;
      const unsigned symbol = in.ReadBits(symbolBits);
      code.BuildSingle(symbol);
      return symbol < lengths.size();
    }
    return code.Build(lengths);
  }

  static std::span<std::uint8_t> PresetDistanceLengths(std::span<std::uint8_t> lengths) {
    struct Run {
      std::size_t end;
      std::uint8_t length;
    };
    std::size_t symbol = 0;
    for (const Run run :
         {Run{1, 2}, Run{3, 4}, Run{6, 5}, Run{13, 6}, Run{31, 7}, Run{78, 8}, Run{128, 9}}) {
      for (; symbol < run.end; ++symbol) lengths[symbol] = run.length;
    }
    return lengths;
  }
};

#endif  // KOZOR_SMALL_CODEC

template <typename Scheme>
class BlockDecoder {
 public:
  BlockDecoder(const Scheme& blockScheme, DecodeJob& decodeJob)
      : scheme(blockScheme), job(decodeJob), in(decodeJob.packed) {}

  Status DecodeUpTo(std::size_t limit);

 private:
  void DecodeInside(std::size_t limit);
  bool DecodeAtEdge(std::size_t limit);
  bool ReadBlockHead();

  Scheme scheme;
  DecodeJob& job;
  BitReader in;
  std::size_t blockItemsLeft = 0;
  // A code without symbols is valid if it isn't used.
  ItemCode<Scheme> itemCode;
  DistanceCode<Scheme> distanceCode;
};

template <typename Scheme>
Status BlockDecoder<Scheme>::DecodeUpTo(std::size_t limit) {
  while (job.done < limit) {
    bool good = blockItemsLeft != 0 || ReadBlockHead();
    while (good && blockItemsLeft != 0 && job.done < limit) {
      DecodeInside(limit);
      good = DecodeAtEdge(limit);
    }
    if (!good) return in.IsPastEnd() ? Status::Truncated : Status::Damaged;
  }
  return Status::Ok;
}

template <typename Scheme>
bool BlockDecoder<Scheme>::ReadBlockHead() {
  blockItemsLeft = in.ReadBits(kBlockItemsBits);
  return blockItemsLeft != 0 && scheme.template ReadCodes<Scheme>(in, itemCode, distanceCode) &&
         !in.IsFarPastEnd();
}

// Decodes items away from the ends of input and output.  One refill is enough for three literals,
// or for a match.
template <typename Scheme>
void BlockDecoder<Scheme>::DecodeInside(std::size_t limit) {
  constexpr unsigned kMostItems = 3;
  static_assert(kMostItems * kMaxCodeBits <= BitReader::kRefilledBits);
  static_assert(2 * kMaxCodeBits + Scheme::kMostExtraBits <= BitReader::kRefilledBits);
  constexpr std::size_t kRoom = kMostItems + Scheme::kLongestMatch + kCopySlack;
  if (job.target.size() < kRoom || distanceCode.IsEmpty()) return;
  std::uint8_t* const begin = job.target.data();
  std::uint8_t* const end = begin + std::min(limit, job.target.size() - kRoom);
  std::uint8_t* out = begin + job.done;
  const std::uint8_t* const pieceEnd = in.PieceEnd();
  BitBuffer bits = in;  // NOLINT(cppcoreguidelines-slicing): the buffer alone is wanted
  std::size_t itemsLeft = blockItemsLeft;
  const auto isLiteral = [](const auto& item) { return item.symbol < kLiteralSymbols; };
  const auto putLiteral = [&](const auto& item) {
    *out++ = static_cast<std::uint8_t>(item.symbol);
    --itemsLeft;
  };

  if (!bits.CanRefill(1, pieceEnd)) return;
  bits.RefillFast();
  std::uint32_t entry = itemCode.Look(bits);
  while (itemsLeft >= kMostItems && out < end && bits.CanRefill(2, pieceEnd)) {
    auto item = itemCode.Take(bits, entry);
    if (isLiteral(item)) {
      putLiteral(item);
      item = itemCode.DecodeExtended(bits);
      if (isLiteral(item)) {
        putLiteral(item);
        item = itemCode.DecodeExtended(bits);
        if (isLiteral(item)) {
          putLiteral(item);
          bits.RefillFast();
          entry = itemCode.Look(bits);
          continue;
        }
      }
      bits.RefillFast();
    }

    --itemsLeft;
    const std::size_t length = Scheme::Length(item.symbol, item.extra);
    const auto [symbol, extra] = distanceCode.DecodeExtended(bits);
    const std::size_t distance = Scheme::Distance(symbol, extra);
    // The branch on the next item is often mispredicted, so it should resolve early: look the item
    // up before the copy.
    bits.RefillFast();
    entry = itemCode.Look(bits);
    if (distance <= static_cast<std::size_t>(out - begin)) [[likely]] {
      CopyMatchWide(out, distance, length);
    } else {
      CopyMatchExact(job.target, static_cast<std::size_t>(out - begin), distance, length);
    }
    out += length;
  }
  in.GoOnFrom(bits);
  blockItemsLeft = itemsLeft;
  job.done = static_cast<std::size_t>(out - begin);
}

// Decodes a few items, up to the end of the block or the limit, with all checks.
template <typename Scheme>
bool BlockDecoder<Scheme>::DecodeAtEdge(std::size_t limit) {
  constexpr std::size_t kItems = 8;
  const std::size_t stopAt = blockItemsLeft - std::min(blockItemsLeft, kItems);
  for (; blockItemsLeft != stopAt && job.done < limit; --blockItemsLeft) {
    in.Refill();
    const auto item = itemCode.DecodeExtended(in);
    if (item.symbol < kLiteralSymbols) {
      job.target[job.done++] = static_cast<std::uint8_t>(item.symbol);
    } else {
      if (distanceCode.IsEmpty()) return false;
      in.Refill();
      const auto [symbol, extra] = distanceCode.DecodeExtended(in);
      job.done = CopyMatchExact(job.target, job.done, Scheme::Distance(symbol, extra),
                                Scheme::Length(item.symbol, item.extra));
    }
    if (in.IsFarPastEnd()) return false;
  }
  return true;
}

template <typename Scheme>
Status DecodeBlocks(DecodeJob& job, const Scheme& scheme) {
  BlockDecoder<Scheme> decoder(scheme, job);
  return job.Run([&](std::size_t limit) { return decoder.DecodeUpTo(limit); });
}

}  // namespace

Status DecodeLh4(DecodeJob& job) {
  return DecodeBlocks(job, LhScheme(kLh4));
}
Status DecodeLh5(DecodeJob& job) {
  return DecodeBlocks(job, LhScheme(kLh5));
}
Status DecodeLh6(DecodeJob& job) {
  return DecodeBlocks(job, LhScheme(kLh6));
}
Status DecodeLh7(DecodeJob& job) {
  return DecodeBlocks(job, LhScheme(kLh7));
}

#ifndef KOZOR_SMALL_CODEC
Status DecodeLhx(DecodeJob& job) {
  return DecodeBlocks(job, LhScheme(kLhx));
}
Status DecodeLh3(DecodeJob& job) {
  return DecodeBlocks(job, Lh3Scheme());
}
Status DecodeLk7(DecodeJob& job) {
  return DecodeBlocks(job, Lk7Scheme());
}
#endif

}  // namespace kozor::codec
