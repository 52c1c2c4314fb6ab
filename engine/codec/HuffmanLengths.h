// HuffmanLengths.h - the best prefix code for given counts whose codes stay within a limit.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace kozor::codec {

// Sets `lengths[s]` for every symbol s: 0 where counts[s] is 0, else 1 to maxBits, so that the code
// is complete and no other within the limit takes fewer bits in total.  At least two counts are not
// 0; there are at most 510 of them, at most 2^maxBits, and their sum is below 2^27.
void BuildHuffmanLengths(std::span<const std::uint32_t> counts, unsigned maxBits,
                         std::span<std::uint8_t> lengths);

// Canonical codes for such lengths: shorter ones first, then in the order of the symbols.
void AssignCodes(std::span<const std::uint8_t> lengths, std::span<std::uint16_t> codes);

}  // namespace kozor::codec
