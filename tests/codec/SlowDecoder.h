// SlowDecoder.h - a second decoder of each method, slow and obvious, bit by bit.
//
// It shares no code with the fast one, so that a fault would have to be made twice.  For the
// methods with an encoder it also checks the rules for writers that readers need not check.
#pragma once

#include <cstddef>
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
  std::vector<std::string> brokenRules;  // rules for writers; valid only after success
};

// Unpacks `size` bytes.  Methods: all but the stored ones.
SlowResult SlowDecode(Method method, std::span<const std::uint8_t> packed, std::size_t size);

// A valid packed member of `size` bytes that no sensible writer would produce: random codes, from a
// single symbol to all of them, with items that use every symbol, and matches at any distance, even
// before the beginning if the method allows it.
Bytes RandomMember(Method method, unsigned seed, std::size_t size);

}  // namespace kozor::codec
