// RandomStream.h - packed members that are valid but unlike what any sensible writer makes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "engine/codec/Codec.h"

namespace kozor::codec {

struct RandomStream {
  std::vector<std::uint8_t> packed;
  std::size_t size;  // of the original
};

// For the block methods: random codes, from a single symbol to all of them and up to 16 bits long,
// with items that use every symbol equally often.  Matches reach anywhere, before the beginning
// too. For the others: about `size` bytes of random items.
RandomStream MakeRandomStream(Method method, unsigned seed, std::size_t size = 3000);

// The part of it that knows the methods other than Lh4 to Lh7, Lhx and Lk7 (SlowClassics.cpp).
RandomStream ComposeClassic(Method method, unsigned seed, std::size_t size);

}  // namespace kozor::codec
