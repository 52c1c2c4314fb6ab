// Lh1Format.h - the constants of lh1, shared by encoder and decoder.
//
// An adaptive code of 314 symbols: 0 to 255 are literals, 256 to 313 matches of length 3 to 60.  A
// match's distance is sent as a 12-bit offset, the distance minus 1: the upper 6 bits by a fixed
// code, the lower 6 uncoded.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace kozor::codec {

constexpr std::size_t kLh1WindowBytes = 4096;
constexpr std::size_t kLh1LongestMatch = 60;
constexpr unsigned kLh1Symbols = 314;
constexpr unsigned kLh1DistanceSymbols = 64;
constexpr unsigned kLh1LowBits = 6;
constexpr unsigned kLh1SymbolOfLength = 253;  // a match's symbol is its length plus this

// The code lengths of the upper 6 bits of an offset; the code is canonical.
inline void FillLh1DistanceLengths(std::span<std::uint8_t, kLh1DistanceSymbols> lengths) {
  constexpr unsigned kEnds[] = {1, 4, 12, 24, 48, 64};  // of the symbols of 3, 4, ... 8 bits
  unsigned symbol = 0;
  std::uint8_t length = 3;
  for (const unsigned end : kEnds) {
    for (; symbol < end; ++symbol) lengths[symbol] = length;
    ++length;
  }
}

}  // namespace kozor::codec
