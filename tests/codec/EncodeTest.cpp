// EncodeTest.cpp - what the encoder writes: the data comes back, and every rule for writers is
// kept.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "engine/codec/Codec.h"
#include "tests/codec/SampleData.h"
#include "tests/codec/SlowDecoder.h"

namespace kozor::codec {
namespace {

constexpr std::size_t kChunk = std::size_t{256} * 1024;  // what the encoder works on at once

void ExpectRoundTrip(Method method, const Bytes& data, Effort effort) {
  const Bytes packed = Encode(method, data, effort);
  Bytes target(data.size());
  ASSERT_EQ(Decode(method, packed, target), Status::Ok);
  ASSERT_TRUE(target == data);
}

// The slow decoder also looks for broken rules.
void ExpectGoodStream(Method method, const Bytes& data, Effort effort) {
  const SlowResult slow = SlowDecode(method, Encode(method, data, effort), data.size());
  ASSERT_EQ(slow.status, Status::Ok);
  ASSERT_TRUE(slow.bytes == data);
  ASSERT_THAT(slow.brokenRules, testing::IsEmpty());
}

using MethodAndEffort = std::tuple<Method, Effort>;

class Encoding : public testing::TestWithParam<MethodAndEffort> {
 protected:
  const Method method = std::get<0>(GetParam());
  const Effort effort = std::get<1>(GetParam());
};

TEST_P(Encoding, KeepsTheRulesForDataOfAllKindsAndSizes) {
  for (const Bytes& data : {TextData(100000), RandomData(20000), MixedData(150000),
                            Bytes(100000, std::uint8_t{0}), Bytes(5, 'x')}) {
    ASSERT_NO_FATAL_FAILURE(ExpectGoodStream(method, data, effort)) << data.size();
  }
  for (std::size_t size = 0; size <= 20; ++size) {
    ASSERT_NO_FATAL_FAILURE(ExpectGoodStream(method, TextData(size), effort)) << size;
    ASSERT_NO_FATAL_FAILURE(ExpectGoodStream(method, Bytes(size, 'x'), effort)) << size;
  }
}

TEST_P(Encoding, ComesBackAcrossChunks) {
  ExpectRoundTrip(method, MixedData(1 << 20), effort);
  for (const std::size_t size : {kChunk - 1, kChunk, kChunk + 1, 2 * kChunk + 3}) {
    ASSERT_NO_FATAL_FAILURE(ExpectRoundTrip(method, RandomData(size), effort)) << size;
  }
}

// After the first chunk such data is nothing but equal matches, and a block of them takes no bits.
TEST_P(Encoding, EndsWithABlockThatTakesBits) {
  for (const std::size_t size : {2 * kChunk, kChunk + 256, kChunk + 1}) {
    ASSERT_NO_FATAL_FAILURE(ExpectGoodStream(method, Bytes(size, 'x'), effort)) << size;
  }
}

TEST_P(Encoding, DependsOnNeitherPiecesNorMembersBefore) {
  const Bytes data = MixedData(kChunk + 50000);
  const Bytes expected = Encode(method, data, effort);
  Encoder encoder(method, effort);
  Bytes packed;
  encoder.Append(RandomData(kChunk + 70000), packed);
  encoder.Finish(packed);  // the encoder then serves the next member
  for (const std::size_t pieceSize : {std::size_t{777}, kChunk, data.size()}) {
    packed.clear();
    for (std::span<const std::uint8_t> left = data; !left.empty();) {
      const auto piece = left.first(std::min(pieceSize, left.size()));
      encoder.Append(piece, packed);
      left = left.subspan(piece.size());
    }
    encoder.Finish(packed);
    EXPECT_TRUE(packed == expected) << pieceSize;
  }
}

std::string NameOf(const testing::TestParamInfo<MethodAndEffort>& info) {
  constexpr const char* kMethods[] = {"lh1", "", "", "lh4", "lh5", "lh6", "lh7"};
  constexpr const char* kEfforts[] = {"Fast", "Normal", "Best"};
  const auto method = static_cast<int>(std::get<0>(info.param)) - static_cast<int>(Method::Lh1);
  return std::string(kMethods[method]) + kEfforts[static_cast<int>(std::get<1>(info.param))];
}

INSTANTIATE_TEST_SUITE_P(All, Encoding,
                         testing::Values(MethodAndEffort{Method::Lh1, Effort::normal},
                                         MethodAndEffort{Method::Lh4, Effort::normal},
                                         MethodAndEffort{Method::Lh5, Effort::fast},
                                         MethodAndEffort{Method::Lh5, Effort::normal},
                                         MethodAndEffort{Method::Lh5, Effort::best},
                                         MethodAndEffort{Method::Lh6, Effort::normal},
                                         MethodAndEffort{Method::Lh7, Effort::best}),
                         NameOf);

// Bounds far from what is reached today, but near enough to notice a search or a code gone wrong.
TEST(Encode, PacksAsWellAsTheMethodsCan) {
  EXPECT_LT(Encode(Method::Lh5, Bytes(1 << 20, std::uint8_t{0})).size(), 400U);
  EXPECT_LT(Encode(Method::Lh5, RandomData(1 << 18)).size(), (1U << 18) + 600);
  const Bytes text = TextData(200000);
  const std::size_t fast = Encode(Method::Lh5, text, Effort::fast).size();
  const std::size_t normal = Encode(Method::Lh5, text, Effort::normal).size();
  const std::size_t best = Encode(Method::Lh5, text, Effort::best).size();
  EXPECT_LT(Encode(Method::Lh1, text).size(), text.size() / 2);
  EXPECT_LT(fast, text.size() / 3);
  EXPECT_LT(normal, fast);
  EXPECT_LT(best, normal);
}

// What repeats after 30000 bytes is in reach of a window of 32 KiB and out of reach of 8 KiB.
TEST(Encode, UsesTheWholeWindow) {
  const Bytes noise = RandomData(30000);
  Bytes data = noise;
  data.insert(data.end(), noise.begin(), noise.end());
  EXPECT_GT(Encode(Method::Lh5, data).size(), 59000U);
  EXPECT_LT(Encode(Method::Lh6, data).size(), 31000U);
  EXPECT_LT(Encode(Method::Lh7, data).size(), 31000U);
}

TEST(Encode, RefusesMethodsWithoutAnEncoder) {
  for (const Method method : {Method::Lh0, Method::Lh2, Method::Lhx, Method::Lhd}) {
    EXPECT_THROW(Encoder{method}, std::invalid_argument);
  }
}

}  // namespace
}  // namespace kozor::codec
