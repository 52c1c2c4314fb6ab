// Crc16.cpp - the checksum of archive members.
//
// A CRC is linear: the contribution of a byte depends only on its value and on the number of bytes
// after it.  So bytes need not be processed one after the other.  Two methods use that:
//
// On every machine: sixteen bytes per step, with one table for each position in the step.  The
// tables are computed on first use, because they would be a large part of a small program.
//
// With carry-less multiplication: 64 bytes per step.  Multiplying a block by a power of x moves it
// to the position of a later block, so the data is folded into fewer and fewer blocks with the same
// remainder.  The tables sum the last one.
#include <array>
#include <cstddef>
#include <cstring>

#include "engine/codec/Codec.h"

#if defined(__x86_64__) && defined(__GNUC__) && !defined(KOZOR_SMALL_CODEC)
#define KOZOR_FOLDED_CRC
#include <immintrin.h>
#endif

namespace kozor::codec {
namespace {

constexpr std::uint16_t kPolynomial = 0xA001;  // bit 15 is x^0, here and in remainders
constexpr std::size_t kStep = 16;
using Table = std::array<std::uint16_t, 256>;

constexpr unsigned TimesX(unsigned remainder) {
  return (remainder >> 1) ^ ((remainder & 1) != 0 ? kPolynomial : 0U);
}

// tables[n][b]: the remainder of the byte b with n zero bytes after it.
std::array<Table, kStep> MakeTables() {
  std::array<Table, kStep> tables;
  for (unsigned byte = 0; byte < 256; ++byte) {
    unsigned crc = byte;
    for (int bit = 0; bit < 8; ++bit) crc = TimesX(crc);
    tables[0][byte] = static_cast<std::uint16_t>(crc);
  }
  for (std::size_t n = 1; n < kStep; ++n) {
    for (unsigned byte = 0; byte < 256; ++byte) {
      const unsigned crc = tables[n - 1][byte];
      tables[n][byte] = static_cast<std::uint16_t>((crc >> 8) ^ tables[0][crc & 0xFF]);
    }
  }
  return tables;
}

std::uint16_t SumByTables(std::span<const std::uint8_t> data, std::uint16_t crc) {
  static const std::array<Table, kStep> tables = MakeTables();
  const std::uint8_t* next = data.data();
  std::size_t left = data.size();
  for (; left >= kStep; left -= kStep, next += kStep) {
    unsigned sum =
        tables[kStep - 1][next[0] ^ (crc & 0xFFU)] ^ tables[kStep - 2][next[1] ^ (crc >> 8)];
    for (std::size_t i = 2; i < kStep; ++i) sum ^= tables[kStep - 1 - i][next[i]];
    crc = static_cast<std::uint16_t>(sum);
  }
  for (; left != 0; --left) {
    crc = static_cast<std::uint16_t>((crc >> 8) ^ tables[0][(crc ^ *next++) & 0xFF]);
  }
  return crc;
}

#ifdef KOZOR_FOLDED_CRC

#define KOZOR_CARRYLESS __attribute__((target("pclmul,sse4.1")))

// x^exponent modulo the polynomial, as a factor for Fold: bit 63 is x^0.
constexpr long long PowerOfX(unsigned exponent) {
  unsigned remainder = 0x8000;
  while (exponent-- != 0) remainder = TimesX(remainder);
  const std::uint64_t factor = std::uint64_t{remainder} << 48;
  return static_cast<long long>(factor);
}

// In a block of sixteen bytes, bit 0 of the first byte has the highest power.  Both halves are
// moved by `bits`; the first half is 64 higher.  A product of two 64-bit numbers has 127 bits and
// so is off by one, for which the factors compensate.
template <unsigned bits>
KOZOR_CARRYLESS __m128i Fold(__m128i block, __m128i onto) {
  const __m128i factors = _mm_set_epi64x(PowerOfX(bits - 1), PowerOfX(bits + 64 - 1));
  return _mm_xor_si128(onto, _mm_xor_si128(_mm_clmulepi64_si128(block, factors, 0x00),
                                           _mm_clmulepi64_si128(block, factors, 0x11)));
}

constexpr std::size_t kFoldBytes = 64;

// Needs at least kFoldBytes.
KOZOR_CARRYLESS std::uint16_t SumByFolding(std::span<const std::uint8_t> data, std::uint16_t crc) {
  const std::uint8_t* next = data.data();
  std::size_t left = data.size();
  const auto load = [&](std::size_t block) KOZOR_CARRYLESS {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(next) + block);
  };
  __m128i lanes[] = {_mm_xor_si128(load(0), _mm_cvtsi32_si128(crc)), load(1), load(2), load(3)};
  for (left -= kFoldBytes, next += kFoldBytes; left >= kFoldBytes;
       left -= kFoldBytes, next += kFoldBytes) {
    for (std::size_t i = 0; i < 4; ++i) lanes[i] = Fold<512>(lanes[i], load(i));
  }
  __m128i all = Fold<128>(lanes[0], lanes[1]);
  all = Fold<128>(all, lanes[2]);
  all = Fold<128>(all, lanes[3]);
  std::array<std::uint8_t, sizeof all> rest;
  std::memcpy(rest.data(), &all, sizeof all);
  return SumByTables(data.last(left), SumByTables(rest, 0));
}

#endif

}  // namespace

std::uint16_t Crc16(std::span<const std::uint8_t> data, std::uint16_t crc) {
#ifdef KOZOR_FOLDED_CRC
  static const bool canFold =
      __builtin_cpu_supports("pclmul") != 0 && __builtin_cpu_supports("sse4.1") != 0;
  if (canFold && data.size() >= kFoldBytes) return SumByFolding(data, crc);
#endif
  return SumByTables(data, crc);
}

}  // namespace kozor::codec
