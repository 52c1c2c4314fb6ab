// HuffmanTable.h - decodes a canonical Huffman code by table look-up.
//
// The next few bits of the input index a primary table, whose entry tells symbol and code length.
// Codes longer than the index lead to a second table, one for all codes that share the first bits.
// So most symbols cost one look-up and none costs more than two.
//
// Where a symbol is followed by bits of its own, an entry knows how many, and they are consumed
// together with the code: the next look-up then waits for one shift instead of two.
//
// In a canonical code, shorter codes come first and codes of one length follow the order of the
// symbols.  Left-aligned, the codes in that order are ever larger numbers that leave no hole:
// building the tables is a single walk from the first entry to the last.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "engine/codec/BitReader.h"
#include "engine/codec/LhFormat.h"

namespace kozor::codec {

// What follows a symbol, for codes whose symbols stand alone.
constexpr unsigned NoExtraBits(unsigned) {
  return 0;
}

template <unsigned kSymbols, unsigned kPrimaryBits, unsigned (*kExtraBits)(unsigned) = NoExtraBits>
class HuffmanTable {
 public:
  // Makes the table for code lengths of 0 (unused) to 16 bits.  Returns false for an incomplete or
  // over-subscribed code: with a complete one, whatever bits come, a look-up ends at a symbol.  No
  // symbol at all is taken too, but then IsEmpty tells not to decode.
  bool Build(std::span<const std::uint8_t> lengths);

  // A code of the one symbol, which takes no bits.
  void BuildSingle(unsigned symbol) {
    entries[0] = entries[1] = SymbolEntry(symbol, 0);
    indexShift = 63;
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
    std::uint64_t extra;  // its extra bits, left-aligned, and others after them
  };
  // Needs 16 bits and the extra ones in the buffer, and consumes both.
  Extended DecodeExtended(BitBuffer& in) const { return Take(in, Look(in)); }

  // DecodeExtended in two steps: the look-up, which consumes nothing and so can be done early, and
  // the rest.
  std::uint32_t Look(const BitBuffer& in) const {
    return entries[static_cast<std::size_t>(in.Buffer() >> indexShift)];
  }
  Extended Take(BitBuffer& in, std::uint32_t entry) const {
    entry = Resolve(in, entry);
    const unsigned symbol = entry >> 16;
    const Extended result{symbol, in.Buffer() << (entry >> 8 & 0x3F)};
    in.Consume(entry & 0xFF);
    return result;
  }

 private:
  // From the lowest byte: bits to consume; of them, those of the code, or kIsSecond and the width
  // of the second table's index; the symbol, or where the second table begins (16 bits).  In a
  // second table the bits of the code are those after the primary index.
  static constexpr std::uint32_t kIsSecond = 0x8000;

  static std::uint32_t SymbolEntry(unsigned symbol, unsigned codeBits) {
    return symbol << 16 | codeBits << 8 | (codeBits + kExtraBits(symbol));
  }

  // The entry itself, or the one in the second table that it leads to.
  std::uint32_t Resolve(BitBuffer& in, std::uint32_t entry) const {
    if ((entry & kIsSecond) != 0) [[unlikely]] {
      in.Consume(kPrimaryBits);
      entry = entries[(entry >> 16) + in.Peek(entry >> 8 & 0x3F)];
    }
    return entry;
  }

  // A second table indexed by b bits serves at least b + 1 symbols, so the entries per symbol are
  // most when b is.
  static constexpr unsigned kSecondBits = kMaxCodeBits - kPrimaryBits;
  static constexpr std::size_t kEntries =
      (1U << kPrimaryBits) + kSymbols * (1U << kSecondBits) / (kSecondBits + 1);

  // Symbols in the order of their codes.
  struct Order {
    std::array<std::uint16_t, kSymbols> symbols;
    std::size_t count = 0;
    unsigned longest = 0;
  };
  static bool SortByCode(std::span<const std::uint8_t> lengths, Order& order);
  std::size_t FillSecond(std::span<const std::uint8_t> lengths, const Order& order,
                         std::size_t first, std::size_t where);

  bool isEmpty = true;
  unsigned indexShift = 63;
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
    if (counts[length] != 0) order.longest = length;
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

  // A code without long codes gets a smaller table, which is made sooner.
  const unsigned primaryBits = std::min(order.longest, kPrimaryBits);
  indexShift = 64 - primaryBits;

  std::size_t filled = 0;
  std::size_t i = 0;
  for (; i < order.count && lengths[order.symbols[i]] <= primaryBits; ++i) {
    const std::uint8_t length = lengths[order.symbols[i]];
    const std::size_t copies = std::size_t{1} << (primaryBits - length);
    std::fill_n(entries.begin() + static_cast<std::ptrdiff_t>(filled), copies,
                SymbolEntry(order.symbols[i], length));
    filled += copies;
  }

  std::size_t secondStart = std::size_t{1} << primaryBits;
  for (; i < order.count; ++filled) {
    const std::size_t last = FillSecond(lengths, order, i, secondStart);
    const unsigned width = lengths[order.symbols[last - 1]] - primaryBits;
    entries[filled] = static_cast<std::uint32_t>(secondStart) << 16 | kIsSecond | width << 8;
    secondStart += std::size_t{1} << width;
    i = last;
  }
  return true;
}

// Fills the second table that begins with the `first` symbol of the order; returns the index behind
// its last one.  That one has the longest code of the table and so decides its width.
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
