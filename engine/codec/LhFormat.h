// LhFormat.h - the constants of the block-Huffman methods (lh4 to lh7 and lhx), shared by encoder
// and decoder.
//
// Packed data is a sequence of blocks.  A block holds items, each a literal byte or a match: "copy
// `length` bytes from `distance` bytes back".  A block uses three Huffman codes, whose lengths are
// in its head:
//
//   tree code       19 symbols   encodes the lengths of the item code
//   item code      510 symbols   0 to 255 are literals, 256 to 509 matches of length 3 to 256
//   distance code  13 to 21      the bit width of a distance; its other bits follow uncoded
//
// docs/lzh-methods.md has a full description with a worked example.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

namespace kozor::codec {

// The parameters in which these methods differ.
struct LhMethod {
  std::size_t windowBytes;      // largest distance that a writer uses
  unsigned distanceCountBits;   // width of the field that counts the distance code's lengths
  unsigned distanceSymbolsMax;  // readers treat more of them as damage
};

// For lh4 and lhx readers accept one more symbol than the window needs, in case a writer used twice
// the window.  That costs nothing: everything unpacked is still in the target.
constexpr LhMethod kLh4{4096, 4, 14};
constexpr LhMethod kLh5{8192, 4, 14};
constexpr LhMethod kLh6{32768, 5, 16};
constexpr LhMethod kLh7{65536, 5, 17};
constexpr LhMethod kLhx{524288, 5, 21};

constexpr unsigned kMinMatchLength = 3;
constexpr unsigned kMaxMatchLength = 256;

constexpr unsigned kLiteralSymbols = 256;
constexpr unsigned kItemSymbols = kLiteralSymbols + kMaxMatchLength - kMinMatchLength + 1;
constexpr unsigned kTreeSymbols = 19;
constexpr unsigned kDistanceSymbols = 21;  // the most that any method has
static_assert(kItemSymbols == 510);

constexpr unsigned kMaxCodeBits = 16;
constexpr std::size_t kMaxBlockItems = 65535;

// Widths of fields in a block's head, in bits.
constexpr unsigned kBlockItemsBits = 16;
constexpr unsigned kTreeCountBits = 5;
constexpr unsigned kItemCountBits = 9;

// Lengths of the tree and the distance code take 3 bits each; 7 is continued by a run of 1 bits.
constexpr unsigned kLengthBits = 3;
constexpr unsigned kLongLength = 7;
constexpr unsigned kLongestLengthBits = kMaxCodeBits - kLongLength + kLengthBits + 1;

// After the third length of the tree code, 2 bits give the number of zero lengths that follow.
constexpr unsigned kTreeGapIndex = 3;
constexpr unsigned kTreeGapBits = 2;
constexpr unsigned kTreeGapMax = 3;

// Symbols of the tree code: three kinds of zero runs, then the lengths 1 to 16.
constexpr unsigned kOneZero = 0;
constexpr unsigned kShortZeroRun = 1;  // 3 to 18 zero lengths
constexpr unsigned kShortZeroRunBits = 4;
constexpr unsigned kShortZeroRunMin = 3;
constexpr unsigned kLongZeroRun = 2;  // 20 to 531; a run of 19 fits neither form
constexpr unsigned kLongZeroRunBits = 9;
constexpr unsigned kLongZeroRunMin = 20;
constexpr unsigned kLengthToTreeSymbol = 2;  // length 1 is symbol 3

// A match's item symbol minus its length.
constexpr unsigned kLengthToItemSymbol = kLiteralSymbols - kMinMatchLength;

// A distance is sent as an offset, the distance minus 1.  The distance symbol is the number of its
// significant bits; the bits after the leading 1 follow as extra bits.
constexpr unsigned DistanceSymbol(std::size_t offset) {
  return static_cast<unsigned>(std::bit_width(offset));
}
constexpr unsigned DistanceExtraBits(unsigned symbol) {
  return symbol < 2 ? 0 : symbol - 1;
}

}  // namespace kozor::codec
