// Items.h - the data that the encoder's stages pass on: parsed items, symbol counts, blocks.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "engine/codec/LhFormat.h"

namespace kozor::codec {

// The most distance symbols that a writable method has.
constexpr unsigned kWrittenDistanceSymbols = 17;

// A literal byte or a match.
struct Item {
  std::uint16_t symbol;  // of the item code
  std::uint16_t offset;  // of a match: its distance minus 1

  static Item Literal(std::uint8_t byte) { return {byte, 0}; }
  static Item Match(std::size_t length, std::size_t distance) {
    return {static_cast<std::uint16_t>(length + kLengthToItemSymbol),
            static_cast<std::uint16_t>(distance - 1)};
  }

  bool IsMatch() const { return symbol >= kLiteralSymbols; }
  // Bytes of the original.
  std::size_t Length() const { return IsMatch() ? symbol - kLengthToItemSymbol : 1; }
};

struct SymbolCounts {
  std::array<std::uint32_t, kItemSymbols> items{};
  std::array<std::uint32_t, kWrittenDistanceSymbols> distances{};

  void Add(std::span<const Item> more) {
    for (const Item item : more) {
      ++items[item.symbol];
      if (item.IsMatch()) ++distances[DistanceSymbol(item.offset)];
    }
  }
  void Add(const SymbolCounts& more) {
    for (std::size_t i = 0; i < items.size(); ++i) items[i] += more.items[i];
    for (std::size_t i = 0; i < distances.size(); ++i) distances[i] += more.distances[i];
  }
};

// A run of items for one block, with its symbol counts.
struct Block {
  std::size_t items = 0;  // 1 to kMaxBlockItems
  SymbolCounts counts;
};

}  // namespace kozor::codec
