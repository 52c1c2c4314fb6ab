// EncodeFuzz.cpp - any bytes as data to pack: they must come back, and the packed data must keep
// all rules for writers.
//
// Input: method and level in one byte, the size of the pieces in the next, data.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <utility>
#include <vector>

#include "engine/codec/Codec.h"
#include "tests/codec/SlowDecoder.h"

namespace {

using namespace kozor::codec;

// One encoder serves many members, here as in an archive.
Encoder& EncoderFor(Method method, int level) {
  static std::map<std::pair<Method, int>, Encoder> encoders;
  return encoders.try_emplace({method, level}, method, level).first->second;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  if (size < 2) return 0;
  constexpr Method kMethods[] = {Method::Lh1, Method::Lh4, Method::Lh5, Method::Lh6, Method::Lh7};
  const Method method = kMethods[bytes[0] % 5];
  const int level = kFastestLevel + bytes[0] / 5 % kSmallestLevel;
  const std::size_t pieceSize = bytes[1] + std::size_t{1};
  const std::span data(bytes + 2, size - 2);

  Encoder& encoder = EncoderFor(method, level);
  std::vector<std::uint8_t> packed;
  for (auto left = data; !left.empty(); left = left.subspan(std::min(pieceSize, left.size()))) {
    encoder.Append(left.first(std::min(pieceSize, left.size())), packed);
  }
  encoder.Finish(packed);

  const SlowResult slow = SlowDecode(method, packed, data.size());
  if (slow.status != Status::Ok || !slow.brokenRules.empty()) std::abort();
  if (!std::ranges::equal(slow.bytes, data)) std::abort();
  return 0;
}
