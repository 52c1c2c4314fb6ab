// HuffmanLengths.cpp - length-limited Huffman codes by package-merge.
//
// Think of a symbol with a code of n bits as n coins, one of each face value 1/2, 1/4 ... 2^-n,
// each with the symbol's count as its collector's price.  A complete code of u symbols is a set of
// coins worth u - 1 in sum, and the best code is the cheapest such set (Larmore and Hirschberg,
// 1990). From the smallest face value upward: pair the coins in the order of their prices, hand the
// pairs as packages to the next value, merge them with its own coins.  From the largest, the first
// 2 (u - 1) things are bought; whatever packages are among them decide how many are bought one
// level below.  Since each level has the same coins, in the same order, only their number matters:
// if a level buys c coins, the c rarest symbols get one more bit.
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

// The most things on offer at one level: all coins and a package for every two things below.
constexpr std::size_t kMaxThings = std::size_t{2} * kItemSymbols;

// The things on offer at one level, cheapest first.
struct Level {
  std::array<std::uint32_t, kMaxThings> prices;
  std::size_t size = 0;
};

// Which things of a level are coins.
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
  std::array<Level, 2> levels;  // in turn the one being made and the one below it
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
