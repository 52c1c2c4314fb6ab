// HuffmanLengthsTest.cpp - codes are complete, within their limit, and none is shorter.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <queue>
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

// What the symbols take in sum, after a look at the code: complete, and within its limit.
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

// Bits of the best code without a limit: each joining of the two rarest costs their sum.
std::uint64_t UnlimitedBits(const Counts& counts) {
  std::priority_queue<std::uint64_t, std::vector<std::uint64_t>, std::greater<>> queue;
  for (const std::uint32_t count : counts) {
    if (count != 0) queue.push(count);
  }
  std::uint64_t bits = 0;
  while (queue.size() > 1) {
    const std::uint64_t rarest = queue.top();
    queue.pop();
    const std::uint64_t sum = rarest + queue.top();
    queue.pop();
    queue.push(sum);
    bits += sum;
  }
  return bits;
}

// The least over all complete codes of these symbols, tried one by one.
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

std::uint32_t Below(std::mt19937& random, std::uint32_t limit) {
  return static_cast<std::uint32_t>(random() % limit);
}

TEST(CodecHuffmanLengths, AreTheBestWithoutALimit) {
  std::mt19937 random(3);
  for (int round = 0; round < 200; ++round) {
    Counts counts(2 + Below(random, 508));
    for (std::uint32_t& count : counts) {
      count = Below(random, 3) == 0 ? 0 : Below(random, 100);
    }
    counts[0] = counts[1] = 1;
    ASSERT_EQ(TotalBits(counts, Build(counts, 16), 16), UnlimitedBits(counts));
  }
}

TEST(CodecHuffmanLengths, AreTheBestWithinALimit) {
  std::mt19937 random(5);
  for (int round = 0; round < 200; ++round) {
    Counts counts(2 + Below(random, 6));
    for (std::uint32_t& count : counts) {
      count = 1 + Below(random, 1U << Below(random, 12));
    }
    ASSERT_EQ(TotalBits(counts, Build(counts, 3), 3), LeastBits(counts, 3));
  }
}

// Fibonacci numbers make the deepest code for their sum.
TEST(CodecHuffmanLengths, StayWithinSixteenBits) {
  Counts counts{1, 1};
  while (counts.size() < 22) counts.push_back(counts.end()[-1] + counts.end()[-2]);
  const Lengths lengths = Build(counts, 16);
  EXPECT_GT(TotalBits(counts, lengths, 16), UnlimitedBits(counts));
  EXPECT_EQ(std::ranges::max(lengths), 16);
}

}  // namespace
}  // namespace kozor::codec
