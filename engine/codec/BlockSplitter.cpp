// BlockSplitter.cpp - chooses the block boundaries.
//
// A new block costs a head of some dozens of bytes and pays off where the statistics of the data
// change.  The items are first cut into small stretches.  Then the two neighbours whose merging
// saves most are merged, repeatedly, until no merge saves anything.
#include <algorithm>
#include <array>

#include "engine/codec/BitCost.h"
#include "engine/codec/Blocks.h"

namespace kozor::codec {
namespace {

// Estimates of a block head, in bits: its fixed fields with the tree code, and the length of each
// symbol in use.  The splitter isn't sensitive to either.
constexpr std::int64_t kHeadBits = 80;
constexpr std::int64_t kBitsPerLength = 4;

// The ideal cost of a block is total * log2(total) minus, for each symbol, count * log2(count).
// This is a symbol's share of that saving, less its code length in the head.
constexpr std::int64_t SavedBy(std::uint32_t count) {
  return std::int64_t{count} * Log2(count) - kBitsPerLength * kCostOfBit;
}

// Most counts are small, and many are 0: a table saves the logarithm and a branch.
constexpr std::size_t kTableCounts = 1024;
constexpr std::array<std::int32_t, kTableCounts> kSavedBy = [] {
  std::array<std::int32_t, kTableCounts> table{};
  for (std::uint32_t i = 1; i < table.size(); ++i) table[i] = static_cast<std::int32_t>(SavedBy(i));
  return table;
}();

// The cost of an ideal code and of the symbols encoded with it, for the counts `a` + `b`.
template <std::size_t kSymbols>
std::int64_t CodeCost(const std::array<std::uint32_t, kSymbols>& a,
                      const std::array<std::uint32_t, kSymbols>& b) {
  std::uint32_t total = 0;
  std::int64_t saved = 0;
  for (std::size_t i = 0; i < kSymbols; ++i) {
    const std::uint32_t count = a[i] + b[i];
    total += count;
    saved += count < kTableCounts ? kSavedBy[count] : SavedBy(count);
  }
  return total == 0 ? 0 : std::int64_t{total} * Log2(total) - saved;
}

// Leaves out the extra bits of distances: they cost the same in any block.
std::int64_t BlockCost(const SymbolCounts& a, const SymbolCounts& b) {
  return CodeCost(a.items, b.items) + CodeCost(a.distances, b.distances) + kHeadBits * kCostOfBit;
}

}  // namespace

std::span<const Block> BlockSplitter::Split(std::span<const Item> items) {
  CutIntoStretches(items);
  if (blocks.size() < 2) return blocks;
  const SymbolCounts none;
  for (std::size_t i = 0; i < list.size(); ++i) list[i].cost = BlockCost(blocks[i].counts, none);
  for (std::size_t i = 0; i < list.size(); ++i) UpdateSaving(i);

  for (std::size_t best = FindBestSaving(); list[best].saving >= 0; best = FindBestSaving()) {
    JoinWithNext(best);
  }

  std::size_t kept = 0;
  for (std::size_t i = 0; i < list.size(); i = list[i].next) blocks[kept++] = blocks[i];
  blocks.resize(kept);
  return blocks;
}

void BlockSplitter::CutIntoStretches(std::span<const Item> items) {
  blocks.clear();
  list.clear();
  while (!items.empty()) {
    const auto stretch = items.first(std::min(stretchItems, items.size()));
    Block& block = blocks.emplace_back();
    block.items = stretch.size();
    block.counts.Add(stretch);
    list.push_back({list.size() - 1, list.size() + 1, 0, -1});
    items = items.subspan(stretch.size());
  }
}

void BlockSplitter::UpdateSaving(std::size_t index) {
  Neighbours& left = list[index];
  left.saving = -1;
  if (left.next >= list.size()) return;
  if (blocks[index].items + blocks[left.next].items > kMaxBlockItems) return;
  left.saving =
      left.cost + list[left.next].cost - BlockCost(blocks[index].counts, blocks[left.next].counts);
}

std::size_t BlockSplitter::FindBestSaving() const {
  std::size_t best = 0;
  for (std::size_t i = 0; i < list.size(); i = list[i].next) {
    if (list[i].saving > list[best].saving) best = i;
  }
  return best;
}

void BlockSplitter::JoinWithNext(std::size_t index) {
  Neighbours& left = list[index];
  const std::size_t right = left.next;
  blocks[index].items += blocks[right].items;
  blocks[index].counts.Add(blocks[right].counts);
  left.cost += list[right].cost - left.saving;
  left.next = list[right].next;
  if (left.next < list.size()) list[left.next].previous = index;
  UpdateSaving(index);
  if (index != 0) UpdateSaving(left.previous);
}

}  // namespace kozor::codec
