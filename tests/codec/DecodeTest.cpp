// DecodeTest.cpp - decoding valid packed data; and the checksum.
#include <gmock/gmock.h>

#include <algorithm>
#include <string_view>
#include <tuple>

#include "engine/codec/Codec.h"
#include "tests/codec/BitComposer.h"
#include "tests/codec/SampleData.h"
#include "tests/codec/SlowDecoder.h"

namespace kozor::codec {
namespace {

using namespace std::string_literals;

std::string DecodeText(Method method, const Bytes& packed, std::size_t size) {
  Bytes target(size);
  EXPECT_EQ(Decode(method, packed, target), Status::Ok);
  return {target.begin(), target.end()};
}

// Items a, b, c, a, b and a match of length 10; the tree code has a gap.
TEST(CodecDecode, UnpacksTheWorkedExampleAlsoWithoutItsLastZeroByte) {
  Bytes packed = {0x00, 0x06, 0x28, 0x05, 0x30, 0x81, 0x37, 0x91, 0xF0, 0x21, 0x87, 0x00};
  EXPECT_EQ(DecodeText(Method::Lh5, packed, 15), "abcabcabcabcabc");
  packed.pop_back();
  EXPECT_EQ(DecodeText(Method::Lh5, packed, 15), "abcabcabcabcabc");
}

// A name, and of lh5: number of items, tree code, item code, distance code, items; and the text.
const std::tuple<const char*, const char*, std::string> kHandMadeBlocks[] = {
    {"a single literal takes no bits",
     "0000000000000101  00000 00000  000000000 001000001  0000 0000", "AAAAA"},
    {"a match may begin before the data, where spaces are",
     "0000000000000010  00000 00000  000000000 100000000  0000 0000", "      "},
    {"a single distance symbol still has its extra bits",
     "0000000000000010  00000 00000  000000000 100000000  0000 0011  01 11", "      "},
    {"a tree code of a single symbol takes no bits",
     "0000000000000011  00000 00011  000000010  0000 0000  0 1 0", "\0\1\0"s},
    {"distance lengths may all be zero if there are no matches",
     "0000000000000010  00000 00000  000000000 001000001  0010 000 000", "AA"},
    {"tree lengths may all be zero if there is a single item",
     "0000000000000010  00001 000  000000000 001000001  0000 0000", "AA"},
};

TEST(CodecDecode, UnpacksBlocksOfUnusualShape) {
  for (const auto& [name, bits, text] : kHandMadeBlocks) {
    SCOPED_TRACE(name);
    const Bytes packed = BitComposer().Picture(bits).Bytes();
    EXPECT_EQ(DecodeText(Method::Lh5, packed, text.size()), text);
  }
}

TEST(CodecDecode, AgreesWithTheSlowDecoderOnRandomStreams) {
  for (const Method method : kPackingMethods) {
    SCOPED_TRACE(static_cast<int>(method));
    for (unsigned seed = 0; seed < 100; ++seed) {
      // The last size is large enough for the trees of the adaptive methods to be rebuilt.
      const bool isLong = seed == 99 && (method == Method::Lh1 || method == Method::Lh2);
      const std::size_t size = isLong ? 500000 : 1 + seed * seed * 3;
      const Bytes packed = RandomMember(method, seed, size);
      const SlowResult slow = SlowDecode(method, packed, size);
      ASSERT_EQ(slow.status, Status::Ok) << seed;
      EXPECT_GE(MostUnpackedBytes(method, packed.size()), size) << seed;
      Bytes target(size);
      ASSERT_EQ(Decode(method, packed, target), Status::Ok) << seed;
      ASSERT_TRUE(target == slow.bytes) << seed;

      // The same in pieces, which may end anywhere, even inside an item.
      std::span<const std::uint8_t> left = packed;
      const PackedPieces pieces = [&, step = std::size_t{1}]() mutable {
        step = step * 3 % 89;
        const auto piece = left.first(std::min(step, left.size()));
        left = left.subspan(piece.size());
        return piece;
      };
      target.assign(size, 0);
      ASSERT_EQ(DecodePieces(method, pieces, target), Status::Ok) << seed;
      ASSERT_TRUE(target == slow.bytes) << seed;
    }
  }
}

TEST(CodecDecode, YieldsNoMoreThanIsPossible) {
  // Blocks without bits for their items: as many matches of the greatest length as there can be.
  BitComposer blocks;
  for (int i = 0; i < 20; ++i) {
    blocks.Picture("1111111111111111  00000 00000  000000000 111111101  0000 0000");
  }
  constexpr std::size_t kBlockYield = 65535 * 256;
  Bytes target(kBlockYield);
  EXPECT_EQ(Decode(Method::Lh5, blocks.Bytes(), target), Status::Ok);
  EXPECT_GE(MostUnpackedBytes(Method::Lh5, blocks.Bytes().size()), 20 * kBlockYield);
  EXPECT_LE(MostUnpackedBytes(Method::Lh0, 1000), 1005U);
  EXPECT_LT(MostUnpackedBytes(Method::Lh1, 1000), 60000U);
}

TEST(CodecCrc16, IsTheSameAtOnceAndInPieces) {
  const std::string_view digits = "123456789";
  EXPECT_EQ(Crc16(Bytes(digits.begin(), digits.end())), 0xBB3D);
  const Bytes data = RandomData(400);
  std::uint16_t expected = 0;
  for (std::size_t size = 0; size < data.size(); ++size) {
    const auto part = std::span(data).first(size);
    EXPECT_EQ(Crc16(part), expected) << size;
    EXPECT_EQ(Crc16(part.subspan(size / 3), Crc16(part.first(size / 3))), expected) << size;
    expected = Crc16(std::span(data).subspan(size, 1), expected);
  }
}

TEST(CodecDecode, CopiesStoredData) {
  const Bytes data = TextData(300000);
  for (const Method method : {Method::Lh0, Method::Lz4, Method::Pm0}) {
    Bytes target(data.size());
    EXPECT_EQ(Decode(method, data, target), Status::Ok);
    EXPECT_TRUE(target == data);
    target.resize(data.size() + 1);
    std::size_t done = 0;
    EXPECT_EQ(Decode(method, data, target, {}, &done), Status::Truncated);
    EXPECT_EQ(done, data.size());
  }
  EXPECT_EQ(Decode(Method::Lhd, {}, {}), Status::Ok);
}

TEST(CodecDecode, TellsItsProgressInSmallStepsAndStopsWhenToldTo) {
  const Bytes data = MixedData(1000000);
  for (const Method method : {Method::Lh0, Method::Lh5}) {
    const Bytes packed = method == Method::Lh0 ? data : Encode(method, data, kFastestLevel);
    Bytes target(data.size());
    std::vector<std::size_t> told;
    std::size_t stopAt = data.size();
    const auto tell = [&](std::size_t done) {
      EXPECT_TRUE(std::ranges::equal(std::span(data).first(done), std::span(target).first(done)));
      told.push_back(done);
      return done < stopAt;
    };
    EXPECT_EQ(Decode(method, packed, target, tell), Status::Ok);
    told.push_back(data.size());
    EXPECT_EQ(told.front(), 0U);
    for (std::size_t i = 1; i < told.size(); ++i) {
      EXPECT_GT(told[i], told[i - 1]);
      EXPECT_LE(told[i] - told[i - 1], 256U * 1024);
    }

    stopAt = 300000;
    std::size_t done = 0;
    EXPECT_EQ(Decode(method, packed, target, tell, &done), Status::Cancelled);
    EXPECT_EQ(done, told.back());
    EXPECT_LT(done, stopAt + 256 * 1024);
  }
}

}  // namespace
}  // namespace kozor::codec
