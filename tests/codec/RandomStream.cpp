// RandomStream.cpp - packed members that are valid but unlike what any sensible writer makes.
#include "tests/codec/RandomStream.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <random>
#include <set>

#include "engine/codec/HuffmanLengths.h"
#include "tests/codec/BitComposer.h"

namespace kozor::codec {
namespace {

using Random = std::mt19937;

std::size_t Pick(Random& random, std::size_t from, std::size_t to) {
  return from + random() % (to - from + 1);
}

struct RandomCode {
  std::vector<unsigned> used;         // symbols
  std::vector<std::uint8_t> lengths;  // by symbol; all 0 for a single one
  std::vector<std::uint16_t> codes;   // by symbol
  std::size_t count = 0;              // of the lengths to send: up to the last one that isn't 0

  unsigned PickSymbol(Random& random) const { return used[random() % used.size()]; }
  void Put(BitComposer& out, unsigned symbol) const { out.Number(codes[symbol], lengths[symbol]); }
};

// Splits leaves of a growing tree until there are `leaves`.  A lopsided one grows at its newest
// leaf, and so becomes as deep as it may.
std::vector<std::uint8_t> RandomLengths(Random& random, std::size_t leaves, bool lopsided) {
  std::vector<std::uint8_t> lengths{0};
  while (lengths.size() < leaves) {
    std::size_t i = lopsided ? lengths.size() - 1 : random() % lengths.size();
    while (lengths[i] == 16) i = random() % lengths.size();
    lengths.push_back(++lengths[i]);
  }
  return lengths;
}

RandomCode MakeCode(Random& random, std::vector<unsigned> used, std::size_t symbols) {
  RandomCode code{std::move(used), std::vector<std::uint8_t>(symbols),
                  std::vector<std::uint16_t>(symbols)};
  const auto lengths = RandomLengths(random, code.used.size(), random() % 3 == 0);
  for (std::size_t i = 0; i < lengths.size(); ++i) {
    code.lengths[code.used[i]] = lengths[i];
    if (lengths[i] != 0) code.count = std::max<std::size_t>(code.count, code.used[i] + 1);
  }
  AssignCodes(code.lengths, code.codes);
  return code;
}

RandomCode MakeRandomCode(Random& random, std::size_t symbols) {
  std::vector<unsigned> all(symbols);
  std::iota(all.begin(), all.end(), 0U);
  std::ranges::shuffle(all, random);
  all.resize(random() % 4 == 0 ? Pick(random, 1, 2) : Pick(random, 1, symbols));
  return MakeCode(random, all, symbols);
}

void PutSmallCode(BitComposer& out, const RandomCode& code, unsigned width, bool hasGap) {
  out.Number(code.count, width);
  if (code.count == 0) out.Number(code.used[0], width);
  for (std::size_t i = 0; i < code.count;) {
    const unsigned length = code.lengths[i++];
    if (length < 7) out.Number(length, 3);
    if (length >= 7) out.Number((1U << (length - 3)) - 2, length - 3);
    if (!hasGap || i != 3) continue;
    std::size_t gap = 0;
    while (gap < 3 && i < code.count && code.lengths[i] == 0) ++gap, ++i;
    out.Number(gap, 2);
  }
}

struct TreeItem {
  unsigned symbol;
  unsigned bits;
  std::size_t extra;
};

// Cuts runs of zero lengths into any pieces that the format has.
std::vector<TreeItem> ToTreeItems(Random& random, const RandomCode& code) {
  std::vector<TreeItem> treeItems;
  for (std::size_t i = 0; i < code.count;) {
    std::size_t run = 0;
    while (code.lengths[i + run] == 0) ++run;
    std::size_t piece = run == 0 ? 1 : Pick(random, 1, run);
    if (piece >= 20) {
      treeItems.push_back({2, 9, piece - 20});
    } else if (piece >= 3) {
      piece = std::min<std::size_t>(piece, 18);
      treeItems.push_back({1, 4, piece - 3});
    } else {
      piece = 1;
      treeItems.push_back({run == 0 ? code.lengths[i] + 2U : 0U, 0, 0});
    }
    i += piece;
  }
  return treeItems;
}

void PutItemCode(Random& random, BitComposer& out, const RandomCode& code) {
  const auto treeItems = ToTreeItems(random, code);
  std::set<unsigned> used;
  for (const TreeItem& item : treeItems) used.insert(item.symbol);
  if (used.empty()) used.insert(0);
  const RandomCode treeCode = MakeCode(random, {used.begin(), used.end()}, 19);
  PutSmallCode(out, treeCode, 5, true);
  out.Number(code.count, 9);
  if (code.count == 0) out.Number(code.used[0], 9);
  for (const TreeItem& item : treeItems) {
    treeCode.Put(out, item.symbol);
    out.Number(item.extra, item.bits);
  }
}

// Returns by how much the length is more than the symbol alone says.
std::size_t PutLk7Length(Random& random, BitComposer& out, unsigned symbol) {
  if (symbol == 288) return 514 - (symbol - 253);
  const unsigned bits = (symbol - 260) / 4;
  const std::size_t extra = random() % (1U << bits);
  out.Number(extra, bits);
  return ((std::size_t{4} + symbol % 4) << bits) + extra + 3 - (symbol - 253);
}

}  // namespace

RandomStream MakeRandomStream(Method method, unsigned seed, std::size_t classicSize) {
  struct Numbers {
    std::size_t itemSymbols, distanceSymbols;
    unsigned distanceCountBits;
  };
  static const std::map<Method, Numbers> kNumbers = {
      {Method::Lh4, {510, 14, 4}}, {Method::Lh5, {510, 14, 4}}, {Method::Lh6, {510, 16, 5}},
      {Method::Lh7, {510, 17, 5}}, {Method::Lhx, {510, 21, 5}}, {Method::Lk7, {289, 32, 6}}};
  const auto found = kNumbers.find(method);
  if (found == kNumbers.end()) return ComposeClassic(method, seed, classicSize);
  const Numbers& numbers = found->second;

  Random random(seed);
  BitComposer out;
  std::size_t size = 0;
  for (std::size_t blocks = Pick(random, 1, 4); blocks != 0; --blocks) {
    const RandomCode itemCode = MakeRandomCode(random, numbers.itemSymbols);
    const RandomCode distanceCode = MakeRandomCode(random, numbers.distanceSymbols);
    std::size_t items = Pick(random, 1, 400);
    out.Number(items, 16);
    PutItemCode(random, out, itemCode);
    PutSmallCode(out, distanceCode, numbers.distanceCountBits, false);
    for (; items != 0; --items) {
      const unsigned symbol = itemCode.PickSymbol(random);
      itemCode.Put(out, symbol);
      size += symbol < 256 ? 1 : symbol - 253;
      if (symbol < 256) continue;
      if (method == Method::Lk7 && symbol >= 264) size += PutLk7Length(random, out, symbol);
      const unsigned p = distanceCode.PickSymbol(random);
      distanceCode.Put(out, p);
      const unsigned extra =
          method == Method::Lk7 ? (p < 4 ? 0 : (p - 2) / 2) : (p < 2 ? 0 : p - 1);
      out.Number(random(), extra);
    }
  }
  return {out.Bytes(), size};
}

}  // namespace kozor::codec
