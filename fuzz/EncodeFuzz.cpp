// EncodeFuzz.cpp - any bytes as data to pack: they must survive a round trip, and the packed data
// must obey all rules for writers.
//
// Input: method and level (1 byte), size of the pieces (1), data.
#include <map>
#include <utility>

#include "engine/codec/Codec.h"
#include "fuzz/Fuzz.h"
#include "tests/codec/SlowDecoder.h"

namespace kozor::fuzz {

using namespace codec;

namespace {

// One encoder serves many members, here as in an archive.
Encoder& EncoderFor(Method method, int level) {
  static std::map<std::pair<Method, int>, Encoder> encoders;
  return encoders.try_emplace({method, level}, method, level).first->second;
}

}  // namespace

void TestInput(Input input) {
  constexpr Method kMethods[] = {Method::Lh1, Method::Lh4, Method::Lh5, Method::Lh6, Method::Lh7};
  const int choice = input.Byte();
  const Method method = kMethods[choice % 5];
  const int level = kFastestLevel + choice / 5 % kSmallestLevel;
  const std::size_t pieceSize = input.Byte() + std::size_t{1};
  const auto data = input.Rest();

  Encoder& encoder = EncoderFor(method, level);
  std::vector<std::uint8_t> packed;
  for (auto left = data; !left.empty(); left = left.subspan(std::min(pieceSize, left.size()))) {
    encoder.Append(left.first(std::min(pieceSize, left.size())), packed);
  }
  encoder.Finish(packed);

  const SlowResult slow = SlowDecode(method, packed, data.size());
  Require(slow.status == Status::Ok && slow.brokenRules.empty());
  Require(std::ranges::equal(slow.bytes, data));
}

}  // namespace kozor::fuzz
