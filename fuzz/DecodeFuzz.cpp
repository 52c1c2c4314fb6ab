// DecodeFuzz.cpp - any bytes as packed data: no decoder may do harm, and the fast one for the
// block-Huffman methods must say the same as the slow one.
//
// Input: the method in one byte, the size of the original in three (little-endian), packed data.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "engine/codec/Codec.h"
#include "tests/codec/SlowDecoder.h"

namespace {

using namespace kozor::codec;

constexpr std::size_t kHeadBytes = 4;
constexpr std::size_t kMaxSize = 20000;  // keeps the slow decoder from being too slow
constexpr int kMethods = static_cast<int>(Method::Lhd) + 1;

bool HasSlowDecoder(Method method) {
  return method >= Method::Lh4 && method <= Method::Lhx;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < kHeadBytes) return 0;
  const auto method = static_cast<Method>(data[0] % kMethods);
  const std::size_t originalSize = (data[1] + data[2] * 0x100U + data[3] * 0x10000U) % kMaxSize;
  const std::span packed(data + kHeadBytes, size - kHeadBytes);

  std::vector<std::uint8_t> target(originalSize);
  std::size_t done = 0;
  const Status status = Decode(method, packed, target, {}, &done);
  if (done > originalSize || (status == Status::Ok && done != originalSize)) std::abort();
  if (!HasSlowDecoder(method)) return 0;

  target.resize(done);
  const SlowResult slow = SlowDecode(method, packed, originalSize);
  if (slow.status != status || slow.bytes != target) std::abort();
  return 0;
}
