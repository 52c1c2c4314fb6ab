// HuffmanTable.h - decodes a canonical Huffman code by table look-up.
//
// The next few bits of the input index a primary table, whose entries hold symbol and code length.
// Codes longer than the index lead to a second table, one for each prefix.  So most symbols take
// one look-up and none takes more than two.  The index has one width for every code: a constant
// shift makes decoding 2.5 percent faster, which outweighs the filling of larger tables.
//
// If a symbol has extra bits, its entry holds their number and they are consumed together with the
// code: the next look-up then depends on one shift instead of two.
//
// In a canonical code, shorter codes come first and codes of one length follow the order of the
// symbols.  So the left-aligned codes are in ascending order without gaps, and the tables are
// filled in one pass from the first entry to the last.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "engine/codec/BitReader.h"
#include "engine/codec/LhFormat.h"

namespace kozor::codec {

// For codes whose symbols have no extra bits.
constexpr unsigned NoExtraBits(unsigned) {
  return 0;
}

template <unsigned kSymbols, unsigned kPrimaryBits, unsigned (*kExtraBits)(unsigned) = NoExtraBits>
class HuffmanTable {
 public:
  // Makes the table for code lengths of 0 (unused) to 16 bits.  Returns false for an incomplete or
  // over-subscribed code; with a complete one, any bits decode to a symbol.  A code without symbols
  // is accepted, but must not be used to decode: see IsEmpty.
  bool Build(std::span<const std::uint8_t> lengths);

  // A code of one symbol, which takes no bits.
  void BuildSingle(unsigned symbol) {
    std::fill_n(entries.begin(), kPrimaryEntries, SymbolEntry(symbol, 0));
    isEmpty = false;
  }

  bool IsEmpty() const { return isEmpty; }

  // Needs 16 bits in the buffer.
  unsigned Decode(BitBuffer& in) const {
    static_assert(kExtraBits == NoExtraBits);
    const std::uint32_t entry = Resolve(in, Look(in));
    in.Consume(entry & 0xFF);
    return entry >> 16;
  }

  struct Extended {
    unsigned symbol;
    std::uint64_t extra;  // its extra bits, left-aligned, followed by later bits
  };
  // Needs 16 bits and the extra bits in the buffer, and consumes both.
  Extended DecodeExtended(BitBuffer& in) const { return Take(in, Look(in)); }

  // DecodeExtended in two steps: the look-up, which consumes nothing and so can be done early, and
  // the consumption.
  std::uint32_t Look(const BitBuffer& in) const {
    return entries[static_cast<std::size_t>(in.Buffer() >> (64 - kPrimaryBits))];
  }
  Extended Take(BitBuffer& in, std::uint32_t entry) const {
    entry = Resolve(in, entry);
    const unsigned symbol = entry >> 16;
    const Extended result{symbol, in.Buffer() << (entry >> 8 & 0x3F)};
    in.Consume(entry & 0xFF);
    return result;
  }

 private:
  // Fields from the lowest byte: bits to consume; the code's part of them, or kIsSecond and the
  // index width of the second table; the symbol, or the start of the second table (16 bits).  In a
  // second table the code's bits are those after the primary index.
  static constexpr std::uint32_t kIsSecond = 0x8000;

  static std::uint32_t SymbolEntry(unsigned symbol, unsigned codeBits) {
    return symbol << 16 | codeBits << 8 | (codeBits + kExtraBits(symbol));
  }

  // Returns the entry, or the one in its second table.
  std::uint32_t Resolve(BitBuffer& in, std::uint32_t entry) const {
    if ((entry & kIsSecond) != 0) [[unlikely]] {
      in.Consume(kPrimaryBits);
      entry = entries[(entry >> 16) + in.Peek(entry >> 8 & 0x3F)];
    }
    return entry;
  }

  static constexpr std::size_t kPrimaryEntries = std::size_t{1} << kPrimaryBits;
  // A second table with an index of b bits serves at least b + 1 symbols, so the largest b needs
  // most entries per symbol.
  static constexpr unsigned kSecondBits = kMaxCodeBits - kPrimaryBits;
  static constexpr std::size_t kEntries =
      kPrimaryEntries + kSymbols * (1U << kSecondBits) / (kSecondBits + 1);

  // Symbols in the order of their codes.
  struct Order {
    std::array<std::uint16_t, kSymbols> symbols;
    std::size_t count = 0;
  };
  static bool SortByCode(std::span<const std::uint8_t> lengths, Order& order);
  std::size_t FillSecond(std::span<const std::uint8_t> lengths, const Order& order,
                         std::size_t first, std::size_t where);

  bool isEmpty = true;
  std::array<std::uint32_t, kEntries> entries;
};

template <unsigned kSymbols, unsigned kPrimaryBits, unsigned (*kExtraBits)(unsigned)>
bool HuffmanTable<kSymbols, kPrimaryBits, kExtraBits>::SortByCode(
    std::span<const std::uint8_t> lengths, Order& order) {
  std::array<std::uint32_t, kMaxCodeBits + 1> counts{};
  for (const std::uint8_t length : lengths) ++counts[length];

  std::array<std::uint32_t, kMaxCodeBits + 1> next{};
  std::uint32_t codeSpace = 0;  // in units of the longest code
  std::uint32_t used = 0;
  for (unsigned length = 1; length <= kMaxCodeBits; ++length) {
    next[length] = used;
    used += counts[length];
    codeSpace += counts[length] << (kMaxCodeBits - length);
  }
  if (codeSpace != 1U << kMaxCodeBits) return used == 0;

  for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
    if (lengths[symbol] != 0) {
      order.symbols[next[lengths[symbol]]++] = static_cast<std::uint16_t>(symbol);
    }
  }
  order.count = used;
  return true;
}

template <unsigned kSymbols, unsigned kPrimaryBits, unsigned (*kExtraBits)(unsigned)>
bool HuffmanTable<kSymbols, kPrimaryBits, kExtraBits>::Build(
    std::span<const std::uint8_t> lengths) {
  Order order;
  if (!SortByCode(lengths, order)) return false;
  isEmpty = order.count == 0;
  if (isEmpty) return true;

  std::size_t filled = 0;
  std::size_t i = 0;
  for (; i < order.count && lengths[order.symbols[i]] <= kPrimaryBits; ++i) {
    const std::uint8_t length = lengths[order.symbols[i]];
    const std::size_t copies = std::size_t{1} << (kPrimaryBits - length);
    std::fill_n(entries.begin() + static_cast<std::ptrdiff_t>(filled), copies,
                SymbolEntry(order.symbols[i], length));
    filled += copies;
  }

  std::size_t secondStart = kPrimaryEntries;
  for (; i < order.count; ++filled) {
    const std::size_t last = FillSecond(lengths, order, i, secondStart);
    const unsigned width = lengths[order.symbols[last - 1]] - kPrimaryBits;
    entries[filled] = static_cast<std::uint32_t>(secondStart) << 16 | kIsSecond | width << 8;
    secondStart += std::size_t{1} << width;
    i = last;
  }
  return true;
}

// Fills the second table that begins with symbol number `first` of the order; returns the index
// after its last symbol.  That symbol has the table's longest code, which determines the width.
template <unsigned kSymbols, unsigned kPrimaryBits, unsigned (*kExtraBits)(unsigned)>
std::size_t HuffmanTable<kSymbols, kPrimaryBits, kExtraBits>::FillSecond(
    std::span<const std::uint8_t> lengths, const Order& order, std::size_t first,
    std::size_t where) {
  std::size_t last = first;
  for (std::uint32_t room = 1U << kSecondBits; room != 0; ++last) {
    room -= 1U << (kMaxCodeBits - lengths[order.symbols[last]]);
  }
  const unsigned longest = lengths[order.symbols[last - 1]];
  for (std::size_t i = first; i < last; ++i) {
    const unsigned length = lengths[order.symbols[i]];
    const std::size_t copies = std::size_t{1} << (longest - length);
    std::fill_n(entries.begin() + static_cast<std::ptrdiff_t>(where), copies,
                SymbolEntry(order.symbols[i], length - kPrimaryBits));
    where += copies;
  }
  return last;
}

}  // namespace kozor::codec
