// BlockWriter.cpp - writes one block: its head with the three codes, then its items.
//
// Not all readers accept everything that the format allows.  So codes are either complete or a
// single symbol in the form reserved for that, trailing zero lengths are never sent, and a block
// without matches sends the single distance symbol 0.
#include "engine/codec/Blocks.h"

#include <algorithm>
#include <array>
#include <vector>

#include "engine/codec/HuffmanLengths.h"

namespace kozor::codec {
namespace {

// One of a block's codes.
template <std::size_t kSymbols>
struct Code {
  std::array<std::uint8_t, kSymbols> lengths{};
  std::array<std::uint16_t, kSymbols> codes{};
  unsigned single = 0;    // the only symbol, or 0 if there is none
  std::size_t count = 0;  // lengths to send; 0 for a single symbol, which takes no bits

  explicit Code(const std::array<std::uint32_t, kSymbols>& counts) {
    const auto isUsed = [](std::uint32_t n) { return n != 0; };
    const auto used = std::ranges::count_if(counts, isUsed);
    if (used < 2) {
      if (used != 0) {
        single = static_cast<unsigned>(std::ranges::find_if(counts, isUsed) - counts.begin());
      }
      return;
    }
    BuildHuffmanLengths(counts, kMaxCodeBits, lengths);
    AssignCodes(lengths, codes);
    count = kSymbols;
    while (lengths[count - 1] == 0) --count;
  }

  void PutSymbol(BitWriter& out, std::size_t symbol) const {
    out.Put(codes[symbol], lengths[symbol]);
  }
};

// A symbol of the tree code with the bits that follow it.
struct TreeItem {
  unsigned symbol;
  unsigned extraBits = 0;
  unsigned extra = 0;
};

void AddZeroRun(std::size_t run, std::vector<TreeItem>& treeItems) {
  const auto length = static_cast<unsigned>(run);
  if (run < kShortZeroRunMin) {
    treeItems.insert(treeItems.end(), run, TreeItem{kOneZero});
  } else if (run < kLongZeroRunMin - 1) {
    treeItems.push_back({kShortZeroRun, kShortZeroRunBits, length - kShortZeroRunMin});
  } else if (run == kLongZeroRunMin - 1) {
    treeItems.push_back({kOneZero});
    AddZeroRun(run - 1, treeItems);
  } else {
    treeItems.push_back({kLongZeroRun, kLongZeroRunBits, length - kLongZeroRunMin});
  }
}

std::vector<TreeItem> ToTreeItems(std::span<const std::uint8_t> lengths) {
  std::vector<TreeItem> treeItems;
  std::size_t run = 0;
  for (const std::uint8_t length : lengths) {
    if (length == 0) {
      ++run;
      continue;
    }
    if (run != 0) AddZeroRun(run, treeItems);
    run = 0;
    treeItems.push_back({length + kLengthToTreeSymbol});
  }
  return treeItems;
}

// The number of lengths that follow; after a 0 the single symbol, in a field of the same width.
template <std::size_t kSymbols>
void PutCount(BitWriter& out, const Code<kSymbols>& code, unsigned countBits) {
  out.Put(code.count, countBits);
  if (code.count == 0) out.Put(code.single, countBits);
}

// One length of the tree or the distance code: 3 bits, or 1 bits up to a 0 bit.
void PutLength(BitWriter& out, unsigned length) {
  if (length < kLongLength) {
    out.Put(length, kLengthBits);
  } else {
    const unsigned ones = length - kLongLength + kLengthBits;
    out.Put(((1U << ones) - 1) << 1, ones + 1);
  }
}

void PutTreeCode(BitWriter& out, const Code<kTreeSymbols>& code) {
  PutCount(out, code, kTreeCountBits);
  for (std::size_t i = 0; i < code.count;) {
    PutLength(out, code.lengths[i++]);
    if (i != kTreeGapIndex) continue;
    unsigned gap = 0;
    for (; gap < kTreeGapMax && i < code.count && code.lengths[i] == 0; ++i) ++gap;
    out.Put(gap, kTreeGapBits);
  }
}

void PutItemCode(BitWriter& out, const Code<kItemSymbols>& code) {
  const std::vector<TreeItem> treeItems = ToTreeItems(std::span(code.lengths).first(code.count));
  std::array<std::uint32_t, kTreeSymbols> treeCounts{};
  for (const TreeItem& item : treeItems) ++treeCounts[item.symbol];
  const Code<kTreeSymbols> treeCode(treeCounts);

  PutTreeCode(out, treeCode);
  PutCount(out, code, kItemCountBits);
  for (const TreeItem& item : treeItems) {
    treeCode.PutSymbol(out, item.symbol);
    out.Put(item.extra, item.extraBits);
  }
}

void PutDistanceCode(BitWriter& out, const Code<kWrittenDistanceSymbols>& code,
                     unsigned countBits) {
  PutCount(out, code, countBits);
  for (std::size_t i = 0; i < code.count; ++i) PutLength(out, code.lengths[i]);
}

void PutItems(BitWriter& out, std::span<const Item> items, const Code<kItemSymbols>& itemCode,
              const Code<kWrittenDistanceSymbols>& distanceCode) {
  for (const Item item : items) {
    std::uint64_t value = itemCode.codes[item.symbol];
    unsigned bits = itemCode.lengths[item.symbol];
    if (item.IsMatch()) {
      const unsigned symbol = DistanceSymbol(item.offset);
      const unsigned extraBits = DistanceExtraBits(symbol);
      const unsigned extra = item.offset & ((1U << extraBits) - 1);
      value =
          (value << distanceCode.lengths[symbol] | distanceCode.codes[symbol]) << extraBits | extra;
      bits += distanceCode.lengths[symbol] + extraBits;
    }
    out.Put(value, bits);
  }
}

// Upper bounds for an item and a block head, in bits.
constexpr std::size_t kItemBits = 2 * kMaxCodeBits + 15;
constexpr std::size_t kHeadBits = 64 +
                                  (kTreeSymbols + kWrittenDistanceSymbols) * kLongestLengthBits +
                                  kItemSymbols * (kMaxCodeBits + kLongZeroRunBits);

bool TakesNoBits(const Code<kItemSymbols>& itemCode,
                 const Code<kWrittenDistanceSymbols>& distanceCode) {
  return itemCode.count == 0 &&
         (itemCode.single < kLiteralSymbols ||
          (distanceCode.count == 0 && DistanceExtraBits(distanceCode.single) == 0));
}

}  // namespace

void WriteBlock(const LhMethod& method, std::span<const Item> items, const SymbolCounts& counts,
                BlockPlace place, BitWriter& out) {
  Code<kItemSymbols> itemCode(counts.items);
  const Code<kWrittenDistanceSymbols> distanceCode(counts.distances);
  if (place == BlockPlace::Last && TakesNoBits(itemCode, distanceCode)) {
    // With a second, unused symbol the first one takes one bit.
    auto padded = counts.items;
    ++padded[itemCode.single == 0 ? 1 : 0];
    itemCode = Code<kItemSymbols>(padded);
  }
  out.Reserve(kHeadBits + items.size() * kItemBits);
  out.Put(items.size(), kBlockItemsBits);
  PutItemCode(out, itemCode);
  PutDistanceCode(out, distanceCode, method.distanceCountBits);
  PutItems(out, items, itemCode, distanceCode);
}

}  // namespace kozor::codec
