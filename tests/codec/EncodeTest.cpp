// EncodeTest.cpp - the encoder's output: the data survives a round trip, and all rules for writers
// are obeyed.
#include <gmock/gmock.h>

#include <stdexcept>

#include "engine/codec/BitWriter.h"
#include "engine/codec/Codec.h"
#include "tests/codec/SampleData.h"
#include "tests/codec/SlowDecoder.h"

namespace kozor::codec {
namespace {

void ExpectRoundTrip(Method method, const Bytes& data, int level) {
  const Bytes packed = Encode(method, data, level);
  Bytes target(data.size());
  ASSERT_EQ(Decode(method, packed, target), Status::Ok);
  ASSERT_TRUE(target == data);
}

// The slow decoder also checks the rules.
void ExpectGoodStream(Method method, const Bytes& data, int level) {
  const SlowResult slow = SlowDecode(method, Encode(method, data, level), data.size());
  ASSERT_EQ(slow.status, Status::Ok);
  ASSERT_TRUE(slow.bytes == data);
  ASSERT_THAT(slow.brokenRules, testing::IsEmpty());
}

using MethodAndLevel = std::tuple<Method, int>;

class CodecEncoding : public testing::TestWithParam<MethodAndLevel> {
 protected:
  const Method method = std::get<0>(GetParam());
  const int level = std::get<1>(GetParam());
};

TEST_P(CodecEncoding, KeepsTheRulesForDataOfAllKindsAndSizes) {
  for (const Bytes& data : {TextData(100000), RandomData(20000), MixedData(150000),
                            Bytes(100000, std::uint8_t{0}), Bytes(5, 'x')}) {
    ASSERT_NO_FATAL_FAILURE(ExpectGoodStream(method, data, level)) << data.size();
  }
  for (std::size_t size = 0; size <= 20; ++size) {
    ASSERT_NO_FATAL_FAILURE(ExpectGoodStream(method, TextData(size), level)) << size;
    ASSERT_NO_FATAL_FAILURE(ExpectGoodStream(method, Bytes(size, 'x'), level)) << size;
  }
}

TEST_P(CodecEncoding, ComesBackAcrossSegments) {
  ExpectRoundTrip(method, MixedData(2 * kSegmentBytes + 100000), level);
  for (const std::size_t size :
       {kSegmentBytes - 1, kSegmentBytes, kSegmentBytes + 1, 2 * kSegmentBytes + 3}) {
    ASSERT_NO_FATAL_FAILURE(ExpectRoundTrip(method, RandomData(size), level)) << size;
  }
}

// After the first segment such data consists of equal matches, and a block of them would take no
// bits.
TEST_P(CodecEncoding, EndsWithABlockThatTakesBits) {
  for (const std::size_t size : {2 * kSegmentBytes, kSegmentBytes + 256, kSegmentBytes + 1}) {
    ASSERT_NO_FATAL_FAILURE(ExpectGoodStream(method, Bytes(size, 'x'), level)) << size;
  }
}

std::string NameOf(const testing::TestParamInfo<MethodAndLevel>& info) {
  constexpr const char* kMethods[] = {"lh1", "", "", "lh4", "lh5", "lh6", "lh7"};
  const auto method = static_cast<int>(std::get<0>(info.param)) - static_cast<int>(Method::Lh1);
  return std::string(kMethods[method]) + "Level" + std::to_string(std::get<1>(info.param));
}

INSTANTIATE_TEST_SUITE_P(
    , CodecEncoding,
    testing::Values(MethodAndLevel{Method::Lh1, 5}, MethodAndLevel{Method::Lh4, 5},
                    MethodAndLevel{Method::Lh5, 1}, MethodAndLevel{Method::Lh5, 2},
                    MethodAndLevel{Method::Lh5, 5}, MethodAndLevel{Method::Lh5, 7},
                    MethodAndLevel{Method::Lh6, 5}, MethodAndLevel{Method::Lh7, 6},
                    MethodAndLevel{Method::Lh7, 9}),
    NameOf);

// Bounds well above the current sizes, but low enough to detect a broken search or code.
TEST(CodecEncode, PacksAsWellAsTheMethodsCan) {
  EXPECT_LT(Encode(Method::Lh5, Bytes(1 << 20, std::uint8_t{0})).size(), 600U);
  EXPECT_LT(Encode(Method::Lh5, RandomData(1 << 18)).size(), (1U << 18) + 600);
  const Bytes text = TextData(200000);
  EXPECT_LT(Encode(Method::Lh1, text).size(), text.size() / 2);
  std::size_t before = text.size() / 3;
  for (const int level : {kFastestLevel, 3, kDefaultLevel, 7, kSmallestLevel}) {
    const std::size_t packed = Encode(Method::Lh5, text, level).size();
    EXPECT_LT(packed, before) << level;
    before = packed;
  }
}

// Segments packed by separate encoders and joined at bit level equal the output of one encoder.
TEST(CodecEncode, JoinsSegmentsToOneStream) {
  const Bytes data = MixedData(2 * kSegmentBytes + 12345);
  for (const Method method : {Method::Lh5, Method::Lh7}) {
    for (const int level : {kDefaultLevel, 7}) {
      BitWriter joined;
      for (std::size_t begin = 0; begin < data.size(); begin += kSegmentBytes) {
        const std::size_t end = std::min(data.size(), begin + kSegmentBytes);
        const std::size_t history = std::min(begin, HistoryBytes(method));
        const auto place = end == data.size() ? SegmentPlace::Last : SegmentPlace::Inside;
        BitWriter bits;
        SegmentEncoder(method, level)
            .Encode(std::span(data).subspan(begin - history, history + end - begin), history, place,
                    bits);
        joined.Append(bits);
      }
      Bytes packed;
      joined.Pad();
      joined.MoveTo(packed);
      EXPECT_TRUE(packed == Encode(method, data, level)) << level;
    }
  }
}

// A repetition after 30000 bytes is inside a window of 32 KiB and outside one of 8 KiB.
TEST(CodecEncode, UsesTheWholeWindow) {
  const Bytes noise = RandomData(30000);
  Bytes data = noise;
  data.insert(data.end(), noise.begin(), noise.end());
  EXPECT_GT(Encode(Method::Lh5, data).size(), 59000U);
  EXPECT_LT(Encode(Method::Lh6, data).size(), 31000U);
  EXPECT_LT(Encode(Method::Lh7, data).size(), 31000U);
}

TEST(CodecEncode, RefusesMethodsWithoutAnEncoderAndLevelsBeyondNine) {
  for (const Method method : {Method::Lh0, Method::Lh2, Method::Lhx, Method::Lhd}) {
    EXPECT_THROW(Encoder{method}, std::invalid_argument);
  }
  EXPECT_THROW(Encoder(Method::Lh5, 0), std::invalid_argument);
  EXPECT_THROW(Encoder(Method::Lh5, 10), std::invalid_argument);
}

}  // namespace
}  // namespace kozor::codec
