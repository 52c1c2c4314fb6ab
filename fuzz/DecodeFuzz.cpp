// DecodeFuzz.cpp - any bytes as packed data: every decoder must agree with its slow twin, for one
// piece and for small pieces, and stay below the bound on the original size.
//
// Input: method (1 byte), size of the original (3), size of the pieces (1), packed data.

#include "engine/codec/Codec.h"
#include "fuzz/Fuzz.h"
#include "tests/codec/SampleData.h"
#include "tests/codec/SlowDecoder.h"

namespace kozor::fuzz {

using namespace codec;

void TestInput(Input input) {
  constexpr std::size_t kMaxSize = 20000;  // limits the time of the slow decoder
  const Method method = kPackingMethods[input.Byte() % std::size(kPackingMethods)];
  const std::size_t size = input.ThreeBytes() % kMaxSize;
  const std::size_t pieceSize = input.Byte() + std::size_t{1};
  const auto packed = input.Rest();

  const SlowResult slow = SlowDecode(method, packed, size);
  if (slow.status == Status::Ok) Require(size <= MostUnpackedBytes(method, packed.size()));
  const auto expectSlow = [&](Status status, std::size_t done, std::vector<std::uint8_t>& target) {
    target.resize(done);
    Require(status == slow.status && target == slow.bytes);
  };

  std::vector<std::uint8_t> target(size);
  std::size_t done = 0;
  Status status = Decode(method, packed, target, {}, &done);
  expectSlow(status, done, target);

  auto left = packed;
  const PackedPieces pieces = [&] {
    const auto piece = left.first(std::min(pieceSize, left.size()));
    left = left.subspan(piece.size());
    return piece;
  };
  target.assign(size, 0);
  status = DecodePieces(method, pieces, target, {}, &done);
  expectSlow(status, done, target);
}

}  // namespace kozor::fuzz
