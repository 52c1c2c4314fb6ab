// Crc16Test.cpp - the checksum against a bit-by-bit calculation.
#include <gtest/gtest.h>

#include "engine/codec/Codec.h"
#include "tests/codec/SampleData.h"

namespace kozor::codec {
namespace {

std::uint16_t CrcBitByBit(std::span<const std::uint8_t> data) {
  unsigned crc = 0;
  for (const std::uint8_t byte : data) {
    crc ^= byte;
    for (int bit = 0; bit < 8; ++bit) crc = (crc & 1) != 0 ? (crc >> 1) ^ 0xA001 : crc >> 1;
  }
  return static_cast<std::uint16_t>(crc);
}

TEST(CodecCrc16, IsTheSameAtOnceAndInPieces) {
  const auto data = RandomData(400);
  for (std::size_t size = 0; size <= data.size(); ++size) {
    const auto part = std::span(data).first(size);
    const std::uint16_t expected = CrcBitByBit(part);
    EXPECT_EQ(Crc16(part), expected) << size;
    const std::size_t cut = size / 3;
    EXPECT_EQ(Crc16(part.subspan(cut), Crc16(part.first(cut))), expected) << size;
  }
}

}  // namespace
}  // namespace kozor::codec
