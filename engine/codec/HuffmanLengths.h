// HuffmanLengths.h - optimal length-limited prefix codes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kozor::codec {

// Sets `lengths[s]` for every symbol s: 0 where counts[s] is 0, else 1 to maxBits, so that the code
// is complete and optimal within the limit.  Preconditions: at least two counts aren't 0, there are
// at most 510 counts and at most 2^maxBits, and their sum is below 2^27.
void BuildHuffmanLengths(std::span<const std::uint32_t> counts, unsigned maxBits,
                         std::span<std::uint8_t> lengths);

// Assigns canonical codes to such lengths: shorter codes first, then in the order of the symbols.
void AssignCodes(std::span<const std::uint8_t> lengths, std::span<std::uint16_t> codes);

}  // namespace kozor::codec
