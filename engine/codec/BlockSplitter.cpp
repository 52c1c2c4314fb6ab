// BlockSplitter.cpp - decides where blocks end.
//
// A new block costs a head of some dozens of bytes and pays where the statistics of the data
// change. The items are cut into small segments; then the two neighbours that lose most by being
// apart become one, again and again, until apart is cheaper everywhere.
#include "engine/codec/BlockSplitter.h"

#include <algorithm>
#include <array>

#include "engine/codec/BitCost.h"

namespace kozor::codec {
namespace {

constexpr std::size_t kSegmentItems = 1024;

// About what a block's head takes, in bits: its fixed fields and the tree code, and the length of
// every symbol in use.  The splitter is not sensitive to either.
constexpr std::int64_t kHeadBits = 80;
constexpr std::int64_t kBitsPerLength = 4;

// What symbols of these counts cost with an ideal code, and the code itself.
template <std::size_t kSymbols>
std::int64_t CodeCost(const std::array<std::uint32_t, kSymbols>& counts) {
  std::uint32_t total = 0;
  std::int64_t weighted = 0;
  std::int64_t used = 0;
  for (const std::uint32_t count : counts) {
    if (count == 0) continue;
    total += count;
    weighted += std::int64_t{count} * Log2(count);
    ++used;
  }
  if (total == 0) return 0;
  return std::int64_t{total} * Log2(total) - weighted + used * kBitsPerLength * kCostOfBit;
}

// The extra bits of distances are left out: they cost the same in any block.
std::int64_t BlockCost(const SymbolCounts& counts) {
  return CodeCost(counts.items) + CodeCost(counts.distances) + kHeadBits * kCostOfBit;
}

}  // namespace

std::span<const Block> BlockSplitter::Split(std::span<const Item> items) {
  CutIntoSegments(items);
  if (blocks.size() < 2) return blocks;
  for (std::size_t i = 0; i < list.size(); ++i) list[i].cost = BlockCost(blocks[i].counts);
  for (std::size_t i = 0; i < list.size(); ++i) UpdateSaving(i);

  for (std::size_t best = FindBestSaving(); list[best].saving >= 0; best = FindBestSaving()) {
    JoinWithNext(best);
  }

  std::size_t kept = 0;
  for (std::size_t i = 0; i < list.size(); i = list[i].next) blocks[kept++] = blocks[i];
  blocks.resize(kept);
  return blocks;
}

void BlockSplitter::CutIntoSegments(std::span<const Item> items) {
  blocks.clear();
  list.clear();
  while (!items.empty()) {
    const auto segment = items.first(std::min(kSegmentItems, items.size()));
    Block& block = blocks.emplace_back();
    block.items = segment.size();
    block.counts.Add(segment);
    list.push_back({list.size() - 1, list.size() + 1, 0, -1});
    items = items.subspan(segment.size());
  }
}

void BlockSplitter::UpdateSaving(std::size_t index) {
  Neighbours& left = list[index];
  left.saving = -1;
  if (left.next >= list.size()) return;
  if (blocks[index].items + blocks[left.next].items > kMaxBlockItems) return;
  SymbolCounts joined = blocks[index].counts;
  joined.Add(blocks[left.next].counts);
  left.saving = left.cost + list[left.next].cost - BlockCost(joined);
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
