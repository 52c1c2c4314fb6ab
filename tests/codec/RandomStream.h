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

// Blocks of random codes, from a single symbol to all of them and up to 16 bits long, with items
// that use every symbol equally often.  Matches reach anywhere, before the beginning too.
RandomStream MakeRandomStream(Method method, unsigned seed);

}  // namespace kozor::codec
