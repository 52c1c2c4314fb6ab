// DamageTest.cpp - decoding packed data that is truncated, changed, too long for the target, or
// random.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "engine/codec/Codec.h"
#include "tests/codec/BitComposer.h"
#include "tests/codec/SampleData.h"
#include "tests/codec/SlowDecoder.h"

namespace kozor::codec {
namespace {

struct Outcome {
  Status status;
  Bytes bytes;  // as far as they were unpacked
};

// Decodes from and into memory of exactly the right size, so that the address sanitizer detects
// every access outside.  Without it, guard bytes around the target detect writes.
Outcome DecodeGuarded(Method method, const Bytes& packed, std::size_t size) {
  constexpr std::size_t kGuard = 64;
  constexpr std::uint8_t kMark = 0xA5;
  const auto input = std::make_unique<std::uint8_t[]>(packed.size());
  std::ranges::copy(packed, input.get());
  const auto exact = std::make_unique<std::uint8_t[]>(size);
  Bytes guarded(size + 2 * kGuard, kMark);

  std::size_t done = 0;
  const std::span in(input.get(), packed.size());
  Outcome outcome{Decode(method, in, {exact.get(), size}, {}, &done), {}};
  EXPECT_EQ(Decode(method, in, std::span(guarded).subspan(kGuard, size)), outcome.status);
  EXPECT_EQ(std::ranges::count(std::span(guarded).first(kGuard), kMark), kGuard);
  EXPECT_EQ(std::ranges::count(std::span(guarded).last(kGuard), kMark), kGuard);
  outcome.bytes.assign(exact.get(), exact.get() + done);
  return outcome;
}

void ExpectLikeSlowDecoder(Method method, const Bytes& packed, std::size_t size) {
  const Outcome outcome = DecodeGuarded(method, packed, size);
  const SlowResult slow = SlowDecode(method, packed, size);
  ASSERT_EQ(outcome.status, slow.status);
  ASSERT_TRUE(outcome.bytes == slow.bytes);
}

// A valid beginning for later faults: one item, and a tree code with 2 as 0 and 3 as 1.
#define ONE_ITEM "0000000000000001 "
#define TREE_CODE "00100 000 000 001 00 001 "
#define ONLY_A "00000 00000 000000000 001000001 "
#define ONLY_MATCH "00000 00000 000000000 100000000 "

// What is wrong, and the bits of lh5 up to that.
constexpr std::pair<const char*, const char*> kBrokenBlocks[] = {
    {"no items", "0000000000000000 " ONLY_A "0000 0000"},
    {"tree code: too many lengths", ONE_ITEM "10100"},
    {"tree code: single symbol out of range", ONE_ITEM "00000 10011"},
    {"tree code: length of 17", ONE_ITEM "00001 111 1111111111 0"},
    {"tree code: lone symbol with a length", ONE_ITEM "00001 001 000000001"},
    {"tree code: incomplete", ONE_ITEM "00010 001 010"},
    {"tree code: over-subscribed", ONE_ITEM "00011 001 001 001 00"},
    {"tree code: no symbols, but used", ONE_ITEM "00001 000 000000010"},
    {"item code: too many lengths", ONE_ITEM TREE_CODE "111111111"},
    {"item code: single symbol out of range", ONE_ITEM "00000 00000 000000000 111111110"},
    {"item code: run of zeros beyond the count", ONE_ITEM TREE_CODE "000010101 1 1 0 000000000"},
    {"item code: only zeros", ONE_ITEM TREE_CODE "000010100 0 000000000"},
    {"item code: incomplete", ONE_ITEM TREE_CODE "000010101 0 000000000 1"},
    {"item code: over-subscribed", ONE_ITEM TREE_CODE "000000011 1 1 1"},
    {"distance code: too many lengths", ONE_ITEM ONLY_A "1111"},
    {"distance code: single symbol out of range", ONE_ITEM ONLY_A "0000 1110"},
    {"distance code: incomplete", ONE_ITEM ONLY_A "0010 001 010"},
    {"distance code: over-subscribed", ONE_ITEM ONLY_A "0011 001 001 001"},
    {"distance code: no symbols, but used", ONE_ITEM ONLY_MATCH "0010 000 000"},
};

TEST(CodecDamagedData, IsRefusedForEachBrokenRule) {
  for (const auto& [name, bits] : kBrokenBlocks) {
    SCOPED_TRACE(name);
    BitComposer stream;
    stream.Picture(bits).Number(0, 64);
    EXPECT_EQ(DecodeGuarded(Method::Lh5, stream.Bytes(), 1).status, Status::Damaged);
    EXPECT_EQ(SlowDecode(Method::Lh5, stream.Bytes(), 1).status, Status::Damaged);
  }
}

// Then packed data is left at the end of the target, and a match may extend past it.
TEST(CodecShortTarget, TakesTheBeginningAndNothingBehindIt) {
  const Bytes data = MixedData(4000);
  const Bytes packed = Encode(Method::Lh5, data);
  for (std::size_t size = 0; size < data.size() - 500; ++size) {
    const Outcome outcome = DecodeGuarded(Method::Lh5, packed, size);
    ASSERT_EQ(outcome.status, Status::Ok) << size;
    ASSERT_TRUE(std::ranges::equal(outcome.bytes, std::span(data).first(size))) << size;
  }
}

TEST(CodecDamagedData, IsReadAsTheSlowDecoderDoes) {
  const Bytes noise = RandomData(20000);
  for (const Method method : kPackingMethods) {
    SCOPED_TRACE(static_cast<int>(method));
    Bytes packed = RandomMember(method, 1, 3000);
    for (; !packed.empty(); packed.resize(packed.size() * 63 / 64)) {  // cut anywhere
      ASSERT_NO_FATAL_FAILURE(ExpectLikeSlowDecoder(method, packed, 3000));
    }
    EXPECT_EQ(DecodeGuarded(method, packed, 3000).status, Status::Truncated);
    packed = RandomMember(method, 2, 1500);
    for (std::size_t bit = 0; bit < packed.size() * 8; bit += 1 + bit / 20) {  // one bit changed
      Bytes damaged = packed;
      damaged[bit / 8] ^= static_cast<std::uint8_t>(1U << bit % 8);
      ASSERT_NO_FATAL_FAILURE(ExpectLikeSlowDecoder(method, damaged, 1500)) << bit;
    }
    for (auto at = noise.begin(); noise.end() - at > 100; at += 100) {  // random
      packed.assign(at, at + 100);
      if ((at - noise.begin()) % 200 == 0) packed[2] &= 0x07;  // often a single tree symbol
      ASSERT_NO_FATAL_FAILURE(ExpectLikeSlowDecoder(method, packed, 5000));
    }
  }
}

}  // namespace
}  // namespace kozor::codec
