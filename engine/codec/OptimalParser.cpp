// OptimalParser.cpp - finds the cheapest way through a chunk, given what symbols cost.
//
// If the cost of every symbol is known, the cheapest items are a shortest path: the cost from a
// position to the end of the chunk is the least, over all items that can stand there, of the item's
// cost and the cost from the position behind it.  Going from the end to the beginning, every
// position is settled by one look at its matches.
//
// The costs follow from the codes, which follow from how often symbols occur, which follows from
// the items.  So the first pass takes general costs; its items are split into blocks, and each
// further pass takes, in each block, what the statistics of the pass before give.  The matches are
// searched only once.
#include <algorithm>
#include <array>
#include <bit>

#include "engine/codec/BitCost.h"
#include "engine/codec/BlockSplitter.h"
#include "engine/codec/Parser.h"

namespace kozor::codec {
namespace {

constexpr SearchEffort kSearch{128, 192};
constexpr unsigned kPasses = 3;
// Matches kept at one position; bounds the memory.  With more of them the longest one counts.
constexpr std::size_t kMaxMatches = 16;

// What symbols cost, as BitCost.h counts it.  A chunk costs less than 2^31.
struct CostModel {
  std::array<std::uint32_t, kItemSymbols> items;
  std::array<std::uint32_t, kWrittenDistanceSymbols> distances;  // with their extra bits
};

// A guess that suits most data.
CostModel GeneralCosts() {
  constexpr std::uint32_t kLiteralBits = 7;
  constexpr std::uint32_t kDistanceBits = 4;
  CostModel model;
  model.items.fill(kLiteralBits * kCostOfBit);
  for (unsigned length = kMinMatchLength; length <= kMaxMatchLength; ++length) {
    const auto bits = static_cast<unsigned>(std::bit_width(length)) + 3;
    model.items[length + kLengthToItemSymbol] = bits * kCostOfBit;
  }
  for (unsigned i = 0; i < kWrittenDistanceSymbols; ++i) {
    model.distances[i] = (kDistanceBits + DistanceExtraBits(i)) * kCostOfBit;
  }
  return model;
}

// A symbol that has not occurred is taken for a little rarer than one that has occurred once.
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

class OptimalParser final : public Parser {
 public:
  void Parse(const Chunk& chunk, MatchFinder& finder, std::vector<Item>& items) override;

 private:
  void CollectMatches(const Chunk& chunk, MatchFinder& finder);
  void ChooseItems(std::span<const std::uint8_t> bytes, std::size_t begin, std::size_t end,
                   const CostModel& model);
  void ListItems(std::vector<Item>& items) const;

  // Positions count from the beginning of the chunk.
  std::vector<Item> matches;              // of all positions, those of one by growing length
  std::vector<std::uint32_t> firstMatch;  // by position; one more at the end
  std::vector<std::uint32_t> costToEnd;   // by position; 0 at the end
  std::vector<Item> chosen;               // by position
  BlockSplitter splitter;
};

void OptimalParser::Parse(const Chunk& chunk, MatchFinder& finder, std::vector<Item>& items) {
  const std::span bytes(chunk.data + chunk.begin, chunk.end - chunk.begin);
  CollectMatches(chunk, finder);
  costToEnd.assign(bytes.size() + 1, 0);
  chosen.resize(bytes.size());
  ChooseItems(bytes, 0, bytes.size(), GeneralCosts());
  ListItems(items);

  for (unsigned pass = 1; pass < kPasses; ++pass) {
    const std::span<const Block> blocks = splitter.Split(items);
    auto item = items.end();
    std::size_t end = bytes.size();
    for (auto block = blocks.rbegin(); block != blocks.rend(); ++block) {
      std::size_t begin = end;
      for (std::size_t n = 0; n < block->items; ++n) begin -= (--item)->Length();
      ChooseItems(bytes, begin, end, CostsFrom(block->counts));
      end = begin;
    }
    ListItems(items);
  }
}

void OptimalParser::CollectMatches(const Chunk& chunk, MatchFinder& finder) {
  matches.clear();
  firstMatch.clear();
  const auto beginNext = [&] { firstMatch.push_back(static_cast<std::uint32_t>(matches.size())); };
  for (std::size_t position = chunk.begin; position < chunk.end; ++position) {
    beginNext();
    unsigned longest = 0;
    finder.Search(position, chunk.end, 0, kSearch, [&](const Match& match) {
      if (matches.size() == firstMatch.back() + kMaxMatches) matches.pop_back();
      matches.push_back(Item::Match(match.length, match.distance));
      longest = match.length;
    });
    // Within a very long match there is little to choose: what it covers has no matches.
    if (longest < kSearch.niceLength) continue;
    for (; longest > 1; --longest, ++position) beginNext();
  }
  beginNext();
}

// Settles the positions begin to end, with those behind them settled already.
void OptimalParser::ChooseItems(std::span<const std::uint8_t> bytes, std::size_t begin,
                                std::size_t end, const CostModel& model) {
  const std::uint32_t* const lengthCost = model.items.data() + kLengthToItemSymbol;
  for (std::size_t i = end; i-- > begin;) {
    std::uint32_t best = model.items[bytes[i]] + costToEnd[i + 1];
    Item choice = Item::Literal(bytes[i]);
    // Each length comes from the nearest match that reaches it.
    std::size_t length = kMinMatchLength;
    for (std::size_t m = firstMatch[i]; m != firstMatch[i + 1]; ++m) {
      const Item match = matches[m];
      const std::uint32_t distanceCost = model.distances[DistanceSymbol(match.offset)];
      for (const std::size_t longest = match.Length(); length <= longest; ++length) {
        const std::uint32_t cost = lengthCost[length] + distanceCost + costToEnd[i + length];
        if (cost < best) {
          best = cost;
          choice = Item::Match(length, match.offset + 1U);
        }
      }
    }
    costToEnd[i] = best;
    chosen[i] = choice;
  }
}

void OptimalParser::ListItems(std::vector<Item>& items) const {
  items.clear();
  for (std::size_t i = 0; i < chosen.size(); i += chosen[i].Length()) items.push_back(chosen[i]);
}

}  // namespace

std::unique_ptr<Parser> MakeOptimalParser() {
  return std::make_unique<OptimalParser>();
}

}  // namespace kozor::codec
