// HuffmanLengths.cpp - length-limited Huffman codes by package-merge.
//
// A symbol with a code of n bits is seen as n coins, one of each face value 1/2, 1/4 ... 2^-n, each
// with the symbol's count as its price.  A complete code of u symbols is a set of coins with a
// total face value of u - 1, and the best code is the cheapest such set (Larmore and Hirschberg,
// 1990).  From the smallest face value upward, coins are paired in the order of their prices, and
// the pairs are merged as packages with the coins of the next face value.  At the largest face
// value, the cheapest 2 (u - 1) things are bought; the number of packages among them decides how
// many are bought one level below.  As each level has the same coins in the same order, only their
// number matters: if a level buys c coins, the c rarest symbols get one more bit.
#include "engine/codec/HuffmanLengths.h"

#include <algorithm>
#include <array>

#include "engine/codec/LhFormat.h"

namespace kozor::codec {
namespace {

struct Leaf {
  std::uint32_t count;
  std::uint32_t symbol;
};

// The most things at one level: all coins, and a package for every two things of the level below.
constexpr std::size_t kMaxThings = std::size_t{2} * kItemSymbols;

// The coins and packages of one level, cheapest first.
struct Level {
  std::array<std::uint32_t, kMaxThings> prices;
  std::size_t size = 0;
};

// Marks which things of a level are coins.
using CoinMarks = std::array<bool, kMaxThings>;

// Merges the coins with packages of two things of the level below.
void MergePackages(std::span<const Leaf> leaves, const Level& below, Level& level,
                   CoinMarks& isCoin) {
  std::size_t coin = 0;
  std::size_t package = 0;
  const std::size_t packages = below.size / 2;
  level.size = leaves.size() + packages;
  for (std::size_t i = 0; i < level.size; ++i) {
    const bool more = package < packages;
    const std::uint32_t price =
        more ? below.prices[2 * package] + below.prices[2 * package + 1] : 0;
    isCoin[i] = coin < leaves.size() && (!more || leaves[coin].count <= price);
    level.prices[i] = isCoin[i] ? leaves[coin++].count : (++package, price);
  }
}

}  // namespace

void BuildHuffmanLengths(std::span<const std::uint32_t> counts, unsigned maxBits,
                         std::span<std::uint8_t> lengths) {
  std::array<Leaf, kItemSymbols> room;
  std::size_t used = 0;
  for (std::size_t symbol = 0; symbol < counts.size(); ++symbol) {
    lengths[symbol] = 0;
    if (counts[symbol] != 0) room[used++] = {counts[symbol], static_cast<std::uint32_t>(symbol)};
  }
  const std::span<Leaf> leaves = std::span(room).first(used);
  std::ranges::sort(leaves, [](const Leaf& a, const Leaf& b) {
    return a.count != b.count ? a.count < b.count : a.symbol < b.symbol;
  });

  std::array<CoinMarks, kMaxCodeBits> isCoin;
  std::array<Level, 2> levels;  // alternately the current level and the one below
  for (unsigned bits = maxBits; bits-- > 0;) {
    MergePackages(leaves, levels[(bits + 1) % 2], levels[bits % 2], isCoin[bits]);
  }

  std::size_t bought = 2 * (used - 1);
  for (unsigned bits = 0; bought != 0; ++bits) {
    const auto first = isCoin[bits].begin();
    const auto coins = static_cast<std::size_t>(
        std::count(first, first + static_cast<std::ptrdiff_t>(bought), true));
    for (std::size_t i = 0; i < coins; ++i) ++lengths[leaves[i].symbol];
    bought = 2 * (bought - coins);
  }
}

void AssignCodes(std::span<const std::uint8_t> lengths, std::span<std::uint16_t> codes) {
  std::array<std::uint32_t, kMaxCodeBits + 1> next{};
  for (const std::uint8_t length : lengths) {
    if (length != 0) ++next[length];
  }
  std::uint32_t code = 0;
  for (std::uint32_t& atLength : next) {
    const std::uint32_t count = atLength;
    atLength = code;
    code = (code + count) * 2;
  }
  for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
    if (lengths[symbol] != 0) codes[symbol] = static_cast<std::uint16_t>(next[lengths[symbol]]++);
  }
}

}  // namespace kozor::codec
