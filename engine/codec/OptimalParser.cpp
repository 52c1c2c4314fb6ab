// OptimalParser.cpp - near-optimal parsing: finds the cheapest items for a stretch of data, given
// the costs of symbols.
//
// If the cost of every symbol is known, the cheapest items are a shortest path: the cost from a
// position to the end is the minimum, over all items possible there, of the item's cost plus the
// cost from the position after it.  Going from the end to the beginning, each position is settled
// by one pass over its matches.
//
// The costs depend on the codes, these on the symbol counts, and these on the items.  So each
// stretch starts with costs from the stretches before it; the first starts with a guess from the
// byte counts.  Each further pass splits the items into blocks and uses, in each block, costs from
// the counts of the previous pass.  Matches are searched only once.
#include <algorithm>
#include <array>
#include <bit>

#include "engine/codec/BitCost.h"
#include "engine/codec/Blocks.h"
#include "engine/codec/Parser.h"

namespace kozor::codec {
namespace {

// Matches kept per position.  If there are more, the longest replaces the last.
constexpr std::size_t kMaxMatches = 16;
// Granularity of block boundaries between passes, in items.
constexpr std::size_t kStretchItems = 512;

// Costs of symbols in the units of BitCost.h.  A stretch costs less than 2^31.
struct CostModel {
  std::array<std::uint32_t, kItemSymbols> items;
  std::array<std::uint32_t, kWrittenDistanceSymbols> distances;  // including extra bits
};

// A guess that suits most data: literals by the counts of every fourth byte, but with a limit,
// because frequent bytes are often part of a match.
CostModel GuessCosts(std::span<const std::uint8_t> bytes) {
  std::array<std::uint32_t, kLiteralSymbols> counts;
  counts.fill(1);
  for (std::size_t i = 0; i < bytes.size(); i += 4) ++counts[bytes[i]];
  const auto total = static_cast<std::uint32_t>(bytes.size() / 4 + kLiteralSymbols);
  constexpr std::uint32_t kMostLiteralBits = 12;
  constexpr std::uint32_t kDistanceBits = 3;
  CostModel model;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    model.items[i] =
        std::min(Log2(total) - Log2(counts[i]) + kCostOfBit, kMostLiteralBits * kCostOfBit);
  }
  for (unsigned length = kMinMatchLength; length <= kMaxMatchLength; ++length) {
    const auto bits = static_cast<unsigned>(std::bit_width(length)) + 2;
    model.items[length + kLengthToItemSymbol] = bits * kCostOfBit;
  }
  for (unsigned i = 0; i < kWrittenDistanceSymbols; ++i) {
    model.distances[i] = (kDistanceBits + DistanceExtraBits(i)) * kCostOfBit;
  }
  return model;
}

// An unused symbol counts as a little rarer than one that occurred once.
template <std::size_t kSymbols>
void SetCosts(const std::array<std::uint32_t, kSymbols>& counts,
              std::array<std::uint32_t, kSymbols>& costs) {
  std::uint32_t total = 1;
  for (const std::uint32_t count : counts) total += count;
  const std::uint32_t once = Log2(total);
  for (std::size_t i = 0; i < kSymbols; ++i) {
    costs[i] = counts[i] != 0 ? once - Log2(counts[i]) : once + kCostOfBit;
  }
}

CostModel CostsFrom(const SymbolCounts& counts) {
  CostModel model;
  SetCosts(counts.items, model.items);
  SetCosts(counts.distances, model.distances);
  for (unsigned i = 0; i < kWrittenDistanceSymbols; ++i) {
    model.distances[i] += DistanceExtraBits(i) * kCostOfBit;
  }
  return model;
}

// Moves `costs` halfway to the actual costs of a stretch: one stretch is too small a sample for
// rare symbols.
template <std::size_t kSymbols>
void Approach(std::array<std::uint32_t, kSymbols>& costs,
              const std::array<std::uint32_t, kSymbols>& real) {
  for (std::size_t i = 0; i < kSymbols; ++i) costs[i] = (costs[i] + real[i]) / 2;
}

class OptimalParser final : public Parser {
 public:
  OptimalParser(const OptimalEffort& optimalEffort, std::size_t windowBytes)
      : effort(optimalEffort), finder(windowBytes), splitter(kStretchItems) {}
  void Parse(const Segment& segment, std::vector<Item>& items) override;

 private:
  void CollectMatches(std::size_t begin, std::size_t end);
  void ParseStretch(std::span<const std::uint8_t> bytes);
  void ChooseItems(std::span<const std::uint8_t> bytes, std::size_t begin, std::size_t end,
                   const CostModel& model);
  void ListItems();

  const OptimalEffort effort;
  BinaryTrees finder;
  CostModel expected;  // of the next stretch
  // Positions count from the beginning of the stretch.
  std::vector<Item> matches;              // of all positions; ascending length at each
  std::vector<std::uint32_t> firstMatch;  // by position, plus an end entry
  std::vector<std::uint32_t> costToEnd;   // by position; 0 at the end
  std::vector<Item> chosen;               // by position
  std::vector<Item> stretch;
  BlockSplitter splitter;
};

void OptimalParser::Parse(const Segment& segment, std::vector<Item>& items) {
  finder.Begin(segment.data, segment.end);
  finder.Skip(0, segment.begin, effort.search.niceLength);
  items.clear();
  expected = GuessCosts({segment.data + segment.begin, segment.end - segment.begin});
  for (std::size_t begin = segment.begin; begin < segment.end;) {
    const std::size_t end = std::min(segment.end, begin + effort.stretchBytes);
    CollectMatches(begin, end);
    ParseStretch({segment.data + begin, end - begin});
    items.insert(items.end(), stretch.begin(), stretch.end());
    begin = end;
  }
}

void OptimalParser::ParseStretch(std::span<const std::uint8_t> bytes) {
  costToEnd.assign(bytes.size() + 1, 0);
  chosen.resize(bytes.size());
  ChooseItems(bytes, 0, bytes.size(), expected);
  ListItems();
  for (unsigned pass = 1; pass < effort.passes; ++pass) {
    const std::span<const Block> blocks = splitter.Split(stretch);
    auto item = stretch.end();
    std::size_t end = bytes.size();
    for (auto block = blocks.rbegin(); block != blocks.rend(); ++block) {
      std::size_t begin = end;
      for (std::size_t n = 0; n < block->items; ++n) begin -= (--item)->Length();
      ChooseItems(bytes, begin, end, CostsFrom(block->counts));
      end = begin;
    }
    ListItems();
  }
  SymbolCounts counts;
  counts.Add(stretch);
  const CostModel real = CostsFrom(counts);
  Approach(expected.items, real.items);
  Approach(expected.distances, real.distances);
}

void OptimalParser::CollectMatches(std::size_t begin, std::size_t end) {
  matches.clear();
  firstMatch.clear();
  const auto beginNext = [&] { firstMatch.push_back(static_cast<std::uint32_t>(matches.size())); };
  for (std::size_t position = begin; position < end; ++position) {
    beginNext();
    const std::size_t room = end - position;
    std::size_t longest = 0;
    finder.Search(position, 0, effort.search, [&](const Match& match) {
      if (longest == room) return;
      longest = std::min<std::size_t>(match.length, room);
      if (longest < kMinMatchLength) return;
      if (matches.size() == firstMatch.back() + kMaxMatches) matches.pop_back();
      matches.push_back(Item::Match(longest, match.distance));
    });
    // Inside a very long match there is little to choose: no matches are collected there.
    if (longest < effort.search.niceLength) continue;
    finder.Skip(position + 1, longest - 1, effort.search.niceLength);
    for (; longest > 1; --longest, ++position) beginNext();
  }
  beginNext();
}

// Settles the positions from `begin` to `end`; those after them must be settled already.
//
// A way is a single number: its cost, then the match, so the least number is the cheapest way.  A
// branch for each length would be mispredicted so often that it would take longer than all the
// rest.
void OptimalParser::ChooseItems(std::span<const std::uint8_t> bytes, std::size_t begin,
                                std::size_t end, const CostModel& model) {
  using Way = std::uint64_t;  // cost (32 bits), offset (16), length (16); of a literal 0, 0
  const auto costing = [](std::uint32_t cost) { return Way{cost} << 32; };
  const std::uint32_t* const lengthCost = model.items.data() + kLengthToItemSymbol;
  for (std::size_t i = end; i-- > begin;) {
    const std::uint32_t* const costAfter = costToEnd.data() + i;
    Way best = costing(model.items[bytes[i]] + costAfter[1]);
    // Each length uses the nearest match that is long enough.
    std::size_t length = kMinMatchLength;
    for (std::size_t m = firstMatch[i]; m != firstMatch[i + 1]; ++m) {
      const Item match = matches[m];
      const std::uint32_t distanceCost = model.distances[DistanceSymbol(match.offset)];
      const Way offset = Way{match.offset} << 16;
      for (const std::size_t longest = match.Length(); length <= longest; ++length) {
        const std::uint32_t cost = lengthCost[length] + distanceCost + costAfter[length];
        best = std::min(best, costing(cost) | offset | length);
      }
    }
    costToEnd[i] = static_cast<std::uint32_t>(best >> 32);
    const auto offset = static_cast<std::uint16_t>(best >> 16);
    const auto bestLength = static_cast<std::uint16_t>(best);
    chosen[i] = bestLength == 0 ? Item::Literal(bytes[i])
                                : Item::Match(bestLength, std::size_t{offset} + 1);
  }
}

void OptimalParser::ListItems() {
  stretch.clear();
  for (std::size_t i = 0; i < chosen.size(); i += chosen[i].Length()) stretch.push_back(chosen[i]);
}

}  // namespace

std::unique_ptr<Parser> MakeOptimalParser(const OptimalEffort& effort, std::size_t windowBytes) {
  return std::make_unique<OptimalParser>(effort, windowBytes);
}

}  // namespace kozor::codec
