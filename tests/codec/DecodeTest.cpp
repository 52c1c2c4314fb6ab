// DecodeTest.cpp - what the decoders make of valid packed data.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <string>

#include "engine/codec/Codec.h"
#include "tests/codec/BitComposer.h"
#include "tests/codec/RandomStream.h"
#include "tests/codec/SampleData.h"
#include "tests/codec/SlowDecoder.h"

namespace kozor::codec {
namespace {

using namespace std::string_literals;

constexpr Method kLhMethods[] = {Method::lh4, Method::lh5, Method::lh6, Method::lh7, Method::lhx};

// Items a, b, c, a, b and a match of length 10; the tree code has a gap.
const Bytes kWorkedExample = {0x00, 0x06, 0x28, 0x05, 0x30, 0x81,
                              0x37, 0x91, 0xF0, 0x21, 0x87, 0x00};
const std::string kWorkedText = "abcabcabcabcabc";

std::string DecodeText(Method method, const Bytes& packed, std::size_t size) {
  Bytes target(size);
  EXPECT_EQ(Decode(method, packed, target), Status::ok);
  return {target.begin(), target.end()};
}

TEST(Decode, UnpacksTheWorkedExample) {
  EXPECT_EQ(DecodeText(Method::lh5, kWorkedExample, 15), kWorkedText);
}

TEST(Decode, ForgivesZeroBytesDroppedAtTheEnd) {
  Bytes packed = kWorkedExample;
  packed.pop_back();
  EXPECT_EQ(DecodeText(Method::lh5, packed, 15), kWorkedText);
}

struct HandMadeBlock {
  const char* name;
  const char* bits;  // of lh5: number of items, tree code, item code, distance code, items
  std::string text;
};

const HandMadeBlock kHandMadeBlocks[] = {
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

TEST(Decode, UnpacksBlocksOfUnusualShape) {
  for (const HandMadeBlock& block : kHandMadeBlocks) {
    SCOPED_TRACE(block.name);
    const Bytes packed = BitComposer().Picture(block.bits).Bytes();
    EXPECT_EQ(DecodeText(Method::lh5, packed, block.text.size()), block.text);
  }
}

// The tree code has a run of zeros as 0 and the symbol behind the gap as 1; the item code then has
// 2, 4, 8 or 16 symbols of one length, of which the first and the last are used.
TEST(Decode, SkipsTheGapInTheTreeCode) {
  for (unsigned gap = 0; gap <= 3; ++gap) {
    const unsigned length = gap + 1;
    const unsigned symbols = 1U << length;
    BitComposer stream;
    stream.Number(2, 16).Number(4 + gap, 5).Picture("000 000 001").Number(gap, 2).Number(1, 3);
    stream.Number('A' + symbols, 9).Picture("0").Number('A' - 20, 9);
    for (unsigned i = 0; i < symbols; ++i) stream.Picture("1");
    stream.Picture("0000 0000").Number(0, length).Number(symbols - 1, length);
    const std::string text = {'A', static_cast<char>('A' + symbols - 1)};
    EXPECT_EQ(DecodeText(Method::lh5, stream.Bytes(), 2), text) << "gap " << gap;
  }
}

// A block of one literal, which takes no bits.
void PutRun(BitComposer& out, char byte, std::size_t count, unsigned distanceCountBits) {
  for (std::size_t items = 0; count != 0; count -= items) {
    items = std::min<std::size_t>(count, 65535);
    out.Number(items, 16).Number(0, 10).Number(0, 9).Number(static_cast<unsigned char>(byte), 9);
    out.Number(0, 2 * distanceCountBits);
  }
}

TEST(Decode, ReachesBackTheWholeWindow) {
  constexpr std::size_t kWindows[] = {4096, 8192, 32768, 65536, 524288};
  for (std::size_t i = 0; i < std::size(kWindows); ++i) {
    const std::size_t window = kWindows[i];
    const unsigned countBits = i < 2 ? 4 : 5;
    const auto symbol = static_cast<unsigned>(std::bit_width(window - 1));
    BitComposer stream;
    PutRun(stream, 'A', 1, countBits);
    PutRun(stream, 'B', window - 1, countBits);
    stream.Number(1, 16).Number(0, 10).Number(0, 9).Number(256, 9);
    stream.Number(0, countBits).Number(symbol, countBits).Number(window - 1, symbol - 1);
    const std::string text = DecodeText(kLhMethods[i], stream.Bytes(), window + 3);
    EXPECT_EQ(text.substr(window - 2), "BBABB") << window;
  }
}

TEST(Decode, AgreesWithTheSlowDecoderOnRandomStreams) {
  for (const Method method : kLhMethods) {
    for (unsigned seed = 0; seed < 100; ++seed) {
      const RandomStream stream = MakeRandomStream(method, seed);
      const SlowResult slow = SlowDecode(method, stream.packed, stream.size);
      ASSERT_EQ(slow.status, Status::ok) << seed;
      Bytes target(stream.size);
      ASSERT_EQ(Decode(method, stream.packed, target), Status::ok) << seed;
      ASSERT_TRUE(target == slow.bytes) << seed;
    }
  }
}

TEST(Decode, CopiesStoredData) {
  const Bytes data = TextData(300000);
  for (const Method method : {Method::lh0, Method::lz4, Method::pm0}) {
    Bytes target(data.size());
    EXPECT_EQ(Decode(method, data, target), Status::ok);
    EXPECT_TRUE(target == data);
    target.resize(data.size() + 1);
    std::size_t done = 0;
    EXPECT_EQ(Decode(method, data, target, {}, &done), Status::truncated);
    EXPECT_EQ(done, data.size());
  }
  EXPECT_EQ(Decode(Method::lhd, {}, {}), Status::ok);
}

TEST(Decode, RefusesMethodsWithoutADecoder) {
  for (auto method = Method::lh0; method <= Method::lhd;
       method = static_cast<Method>(static_cast<int>(method) + 1)) {
    const bool known = Decode(method, {}, {}) != Status::unsupported;
    EXPECT_EQ(known, CanDecode(method)) << static_cast<int>(method);
  }
}

class DecodeProgress : public testing::TestWithParam<Method> {
 protected:
  const Bytes data = MixedData(1000000);
  const Bytes packed = GetParam() == Method::lh0 ? data : Encode(GetParam(), data, Effort::fast);
  Bytes target = Bytes(data.size());
};

TEST_P(DecodeProgress, IsToldFromZeroInSmallSteps) {
  std::vector<std::size_t> told;
  const auto tell = [&](std::size_t done) {
    EXPECT_TRUE(
        std::equal(data.begin(), data.begin() + static_cast<std::ptrdiff_t>(done), target.begin()));
    told.push_back(done);
    return true;
  };
  EXPECT_EQ(Decode(GetParam(), packed, target, tell), Status::ok);
  ASSERT_FALSE(told.empty());
  EXPECT_EQ(told.front(), 0U);
  told.push_back(data.size());
  for (std::size_t i = 1; i < told.size(); ++i) {
    EXPECT_GT(told[i], told[i - 1]);
    EXPECT_LE(told[i] - told[i - 1], 256U * 1024);
  }
}

TEST_P(DecodeProgress, StopsTheDecoder) {
  std::size_t atStop = 0;
  const auto stopLater = [&](std::size_t done) {
    atStop = done;
    return done < 300000;
  };
  std::size_t done = 0;
  EXPECT_EQ(Decode(GetParam(), packed, target, stopLater, &done), Status::cancelled);
  EXPECT_EQ(done, atStop);
  EXPECT_LT(done, 300000U + 256 * 1024);
}

INSTANTIATE_TEST_SUITE_P(Methods, DecodeProgress, testing::Values(Method::lh0, Method::lh5));

}  // namespace
}  // namespace kozor::codec
