// Crc16.cpp - the checksum of archive members, sixteen bytes at a step.
//
// A CRC is linear: what a byte adds to the remainder depends on its value and on how many bytes
// follow it, on nothing else.  So for a step of sixteen bytes there is one table per place, and the
// sixteen look-ups do not wait for each other, as they would byte by byte.  The tables are worked
// out on first use: they would be a large part of a small program.
#include <array>
#include <cstddef>

#include "engine/codec/Codec.h"

namespace kozor::codec {
namespace {

constexpr std::uint16_t kPolynomial = 0xA001;
constexpr std::size_t kStep = 16;
using Table = std::array<std::uint16_t, 256>;

// tables[n][b]: the remainder of the byte b with n zero bytes behind it.
std::array<Table, kStep> MakeTables() {
  std::array<Table, kStep> tables;
  for (unsigned byte = 0; byte < 256; ++byte) {
    unsigned crc = byte;
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? kPolynomial : 0U);
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

}  // namespace

std::uint16_t Crc16(std::span<const std::uint8_t> data, std::uint16_t crc) {
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

}  // namespace kozor::codec
