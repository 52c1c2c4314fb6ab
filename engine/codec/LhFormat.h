// LhFormat.h - the numbers of the block-Huffman methods (lh4 to lh7 and lhx), shared by the two
// directions.
//
// Packed data is a sequence of blocks.  A block holds items, each a literal byte or a match: "copy
// `length` bytes from `distance` bytes back".  Three Huffman codes serve a block, and their lengths
// stand at its head:
//
//   tree code       19 symbols   writes the lengths of the item code
//   item code      510 symbols   0 to 255 are literals, 256 to 509 matches of length 3 to 256
//   distance code  13 to 21      the size class of a distance; that many bits less one follow
//
// docs/lzh-methods.md tells the whole story, with a worked example.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

namespace kozor::codec {

// What tells one of these methods from another.
struct LhMethod {
  std::size_t windowBytes;      // highest distance that a writer uses
  unsigned distanceCountBits;   // width of the field that counts the distance code's lengths
  unsigned distanceSymbolsMax;  // more of them are damage to a reader
};

// Readers take one symbol more than the window needs for lh4 and lhx, in case a writer took twice
// the window.  It costs nothing: all that was unpacked is still in the target.
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

// Behind the third length of the tree code, 2 bits tell how many zero lengths follow.
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

// What a match's item symbol exceeds its length by.
constexpr unsigned kLengthToItemSymbol = kLiteralSymbols - kMinMatchLength;

// A distance is sent as the offset one below it: 0 and 1 by the distance symbols 0 and 1, others by
// the number of their significant bits, with the bits behind the leading 1 following.
constexpr unsigned DistanceSymbol(std::size_t offset) {
  return static_cast<unsigned>(std::bit_width(offset));
}
constexpr unsigned DistanceExtraBits(unsigned symbol) {
  return symbol < 2 ? 0 : symbol - 1;
}

}  // namespace kozor::codec
