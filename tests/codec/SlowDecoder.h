// SlowDecoder.h - a second decoder of each method, slow and obvious, bit by bit.
//
// It shares nothing with the fast one, so that a fault would have to be made twice.  For the
// methods that are written it also knows the rules that a writer must keep and a reader need not
// check.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "engine/codec/Codec.h"

namespace kozor::codec {

using Bytes = std::vector<std::uint8_t>;

struct SlowResult {
  Status status = Status::Ok;
  Bytes bytes;                           // what was unpacked
  std::vector<std::string> brokenRules;  // of those for writers; only looked for if all went well
};

// Unpacks `size` bytes.  Methods: lh4 to lh7 and lhx.
SlowResult SlowDecode(Method method, std::span<const std::uint8_t> packed, std::size_t size);

// The part of it that knows the methods other than Lh4 to Lh7, Lhx and Lk7 (SlowClassics.cpp).
SlowResult SlowDecodeClassic(Method method, std::span<const std::uint8_t> packed, std::size_t size);

}  // namespace kozor::codec
