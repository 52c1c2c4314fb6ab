// HuffmanLengthsTest.cpp - codes are complete, within the limit, and optimal.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <vector>

#include "engine/codec/HuffmanLengths.h"

namespace kozor::codec {
namespace {

using Counts = std::vector<std::uint32_t>;
using Lengths = std::vector<std::uint8_t>;

Lengths Build(const Counts& counts, unsigned maxBits) {
  Lengths lengths(counts.size(), 99);
  BuildHuffmanLengths(counts, maxBits, lengths);
  return lengths;
}

// The total bits of the symbols; also checks that the code is complete and within its limit.
std::uint64_t TotalBits(const Counts& counts, const Lengths& lengths, unsigned maxBits) {
  std::uint64_t bits = 0;
  std::uint32_t space = 0;
  for (std::size_t i = 0; i < counts.size(); ++i) {
    EXPECT_EQ(lengths[i] != 0, counts[i] != 0) << i;
    EXPECT_LE(lengths[i], maxBits);
    if (lengths[i] != 0) space += 1U << (maxBits - lengths[i]);
    bits += std::uint64_t{counts[i]} * lengths[i];
  }
  EXPECT_EQ(space, 1U << maxBits);
  return bits;
}

// The minimum over all complete codes of these symbols, by exhaustive search.
std::uint64_t LeastBits(const Counts& counts, unsigned maxBits, std::size_t symbol = 0,
                        std::uint32_t space = 0) {
  const std::uint32_t whole = 1U << maxBits;
  if (symbol == counts.size()) return space == whole ? 0 : UINT32_MAX;
  std::uint64_t least = UINT32_MAX;
  for (unsigned length = 1; length <= maxBits; ++length) {
    const std::uint32_t taken = space + (whole >> length);
    if (taken > whole) continue;
    least = std::min(least, std::uint64_t{counts[symbol]} * length +
                                LeastBits(counts, maxBits, symbol + 1, taken));
  }
  return least;
}

TEST(CodecHuffmanLengths, NoCodeIsShorter) {
  std::mt19937 random(5);
  const auto below = [&](std::uint32_t limit) {
    return static_cast<std::uint32_t>(random() % limit);
  };
  for (const unsigned maxBits : {3U, 6U}) {  // the latter is no limit
    for (int round = 0; round < 100; ++round) {
      Counts counts(2 + below(6));
      for (std::uint32_t& count : counts) count = 1 + below(1U << below(12));
      ASSERT_EQ(TotalBits(counts, Build(counts, maxBits), maxBits), LeastBits(counts, maxBits));
    }
  }
}

// Fibonacci numbers give the deepest code for their sum.
TEST(CodecHuffmanLengths, StayWithinSixteenBits) {
  Counts counts{0, 1, 1};
  while (counts.size() < 23) counts.push_back(counts.end()[-1] + counts.end()[-2]);
  const Lengths lengths = Build(counts, 16);
  TotalBits(counts, lengths, 16);
  EXPECT_EQ(std::ranges::max(lengths), 16);
}

}  // namespace
}  // namespace kozor::codec
