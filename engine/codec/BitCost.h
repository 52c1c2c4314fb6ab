// BitCost.h - estimates the cost of symbols in bits before their code is known.
//
// A good prefix code gives a symbol of probability 1/n about log2(n) bits.  Costs are integers in
// units of 1/256 bit, and the logarithm comes from a table made at compile time, so that the
// encoder makes the same choices on every machine.
#pragma once

#include <array>
#include <bit>
#include <cstdint>

namespace kozor::codec {

constexpr unsigned kCostFractionBits = 8;
constexpr std::uint32_t kCostOfBit = 1U << kCostFractionBits;

namespace internal {

constexpr unsigned kLog2TableBits = 10;

// log2(1 + i / 1024) in units of 1/256: squaring a number doubles its logarithm, so each squaring
// yields one binary digit: 1 if the result reaches 2.
constexpr std::array<std::uint16_t, 1U << kLog2TableBits> kLog2Table = [] {
  std::array<std::uint16_t, 1U << kLog2TableBits> table{};
  for (std::uint32_t i = 0; i < table.size(); ++i) {
    std::uint64_t x = (std::uint64_t{table.size()} + i) << 20;  // 1.0 is 2^30
    unsigned log = 0;
    for (unsigned digit = 0; digit <= kCostFractionBits; ++digit) {
      x = (x * x) >> 30;
      log = 2 * log + (x >> 31 != 0 ? 1 : 0);
      if (x >> 31 != 0) x >>= 1;
    }
    table[i] = static_cast<std::uint16_t>((log + 1) / 2);
  }
  return table;
}();

}  // namespace internal

// log2(x) in units of 1/256, x >= 1.
constexpr std::uint32_t Log2(std::uint32_t x) {
  const auto zeros = static_cast<unsigned>(std::countl_zero(x));
  const std::uint32_t mantissa = (x << zeros) >> (31 - internal::kLog2TableBits);
  return ((31 - zeros) << kCostFractionBits) +
         internal::kLog2Table[mantissa - (1U << internal::kLog2TableBits)];
}

}  // namespace kozor::codec
