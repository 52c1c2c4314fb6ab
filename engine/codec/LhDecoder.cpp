// LhDecoder.cpp - unpacks the block-Huffman methods: one body, and a record of numbers per method.
//
// Everything in the packed data is hostile.  What keeps it harmless:
//  - only complete codes are taken, so whatever bits come, a look-up ends at a symbol of the code;
//  - every item yields at least one byte, so even blocks whose codes take no bits come to an end;
//  - bits behind the end of the data are zeros, and soon an error;
//  - an item is unpacked without tests only while the longest match fits with room to spare.
#include "engine/codec/LhDecoder.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "engine/codec/BitReader.h"
#include "engine/codec/HuffmanTable.h"
#include "engine/codec/MatchCopy.h"

namespace kozor::codec {
namespace {

class LhDecoder {
 public:
  LhDecoder(const LhMethod& lhMethod, DecodeJob& decodeJob)
      : method(lhMethod), job(decodeJob), in(decodeJob.packed) {}

  Status Decode();

 private:
  Status DecodeUpTo(std::size_t limit);
  void DecodeInside(std::size_t limit);
  bool DecodeAtEdge(std::size_t limit);

  bool ReadBlockHead();
  bool ReadTreeCode();
  bool ReadItemCode();
  bool ReadDistanceCode();
  bool ReadItemLengths(std::span<std::uint8_t> lengths);

  const LhMethod& method;
  DecodeJob& job;
  BitReader in;
  std::size_t blockItemsLeft = 0;
  // A code without symbols is legal where it is not used.
  HuffmanTable<kTreeSymbols, 7> treeCode;
  HuffmanTable<kItemSymbols, 11> itemCode;
  HuffmanTable<kDistanceSymbols, 8> distanceCode;
};

Status LhDecoder::Decode() {
  do {
    if (!job.Report()) return Status::Cancelled;
    const Status status = DecodeUpTo(job.NextReport());
    if (status != Status::Ok) return status;
  } while (!job.IsFull());
  return Status::Ok;
}

Status LhDecoder::DecodeUpTo(std::size_t limit) {
  while (job.done < limit) {
    bool good = blockItemsLeft != 0 || ReadBlockHead();
    if (good) {
      DecodeInside(limit);
      good = DecodeAtEdge(limit);
    }
    if (!good) return in.IsPastEnd() ? Status::Truncated : Status::Damaged;
  }
  return Status::Ok;
}

// The extra bits stand behind the distance symbol; together with the leading 1 that the symbol
// stands for they are the offset.  Shifting twice keeps symbol 0 (offset 0) within the rules.
std::size_t TakeDistance(BitReader& in, unsigned symbol) {
  constexpr std::uint64_t kLeadingOne = std::uint64_t{1} << 63;
  const std::uint64_t offset = (((in.Buffer() >> 1) | kLeadingOne) >> (63 - symbol)) >> 1;
  in.Consume(DistanceExtraBits(symbol));
  return static_cast<std::size_t>(offset) + 1;
}

// Decodes items while they are far from both ends.  Literals come in runs, and one refill is enough
// for three of them, or for a match.
void LhDecoder::DecodeInside(std::size_t limit) {
  constexpr unsigned kMaxLiterals = 3;
  static_assert(kMaxLiterals * kMaxCodeBits <= BitReader::kRefilledBits);
  constexpr std::size_t kRoom = kMaxLiterals + kMaxMatchLength + kCopySlack;
  if (job.target.size() < kRoom || distanceCode.IsEmpty()) return;
  std::uint8_t* const begin = job.target.data();
  std::uint8_t* const end = begin + std::min(limit, job.target.size() - kRoom);
  std::uint8_t* out = begin + job.done;
  BitReader bits = in;
  std::size_t itemsLeft = blockItemsLeft;

  while (itemsLeft >= kMaxLiterals && out < end && bits.IsFarFromEnd()) {
    bits.RefillFast();
    unsigned symbol = itemCode.Decode(bits);
    unsigned literals = 0;
    while (symbol < kLiteralSymbols) {
      *out++ = static_cast<std::uint8_t>(symbol);
      if (++literals == kMaxLiterals) break;
      symbol = itemCode.Decode(bits);
    }
    itemsLeft -= literals;
    if (literals == kMaxLiterals) continue;

    --itemsLeft;
    bits.Refill();
    const std::size_t length = symbol - kLengthToItemSymbol;
    const std::size_t distance = TakeDistance(bits, distanceCode.Decode(bits));
    if (distance <= static_cast<std::size_t>(out - begin)) {
      CopyMatchWide(out, distance, length);
    } else {
      CopyMatchExact(job.target, static_cast<std::size_t>(out - begin), distance, length);
    }
    out += length;
  }
  in = bits;
  blockItemsLeft = itemsLeft;
  job.done = static_cast<std::size_t>(out - begin);
}

// Decodes what is left of the block up to the limit, looking at every step.
bool LhDecoder::DecodeAtEdge(std::size_t limit) {
  for (; blockItemsLeft != 0 && job.done < limit; --blockItemsLeft) {
    in.Refill();
    const unsigned symbol = itemCode.Decode(in);
    if (symbol < kLiteralSymbols) {
      job.target[job.done++] = static_cast<std::uint8_t>(symbol);
    } else {
      if (distanceCode.IsEmpty()) return false;
      const std::size_t distance = TakeDistance(in, distanceCode.Decode(in));
      job.done = CopyMatchExact(job.target, job.done, distance, symbol - kLengthToItemSymbol);
    }
    if (in.IsFarPastEnd()) return false;
  }
  return true;
}

bool LhDecoder::ReadBlockHead() {
  blockItemsLeft = in.ReadBits(kBlockItemsBits);
  return blockItemsLeft != 0 && ReadTreeCode() && ReadItemCode() && ReadDistanceCode() &&
         !in.IsFarPastEnd();
}

// Lengths of the tree code or the distance code.
unsigned ReadLength(BitReader& in) {
  in.Refill();
  unsigned length = in.Take(kLengthBits);
  if (length == kLongLength) {
    while (length <= kMaxCodeBits && in.Take(1) != 0) ++length;
  }
  return length;
}

bool LhDecoder::ReadTreeCode() {
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

bool LhDecoder::ReadItemCode() {
  const unsigned count = in.ReadBits(kItemCountBits);
  if (count > kItemSymbols) return false;
  if (count == 0) {
    const unsigned symbol = in.Take(kItemCountBits);
    itemCode.BuildSingle(symbol);
    return symbol < kItemSymbols;
  }
  std::array<std::uint8_t, kItemSymbols> lengths{};
  return ReadItemLengths(std::span(lengths).first(count)) && itemCode.Build(lengths) &&
         !itemCode.IsEmpty();
}

bool LhDecoder::ReadItemLengths(std::span<std::uint8_t> lengths) {
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

bool LhDecoder::ReadDistanceCode() {
  const unsigned count = in.ReadBits(method.distanceCountBits);
  if (count > method.distanceSymbolsMax) return false;
  if (count == 0) {
    const unsigned symbol = in.Take(method.distanceCountBits);
    distanceCode.BuildSingle(symbol);
    return symbol < method.distanceSymbolsMax;
  }
  std::array<std::uint8_t, kDistanceSymbols> lengths{};
  for (unsigned i = 0; i < count; ++i) {
    const unsigned length = ReadLength(in);
    if (length > kMaxCodeBits) return false;
    lengths[i] = static_cast<std::uint8_t>(length);
  }
  return distanceCode.Build(lengths);
}

}  // namespace

Status DecodeLh(const LhMethod& method, DecodeJob& job) {
  return LhDecoder(method, job).Decode();
}

}  // namespace kozor::codec
