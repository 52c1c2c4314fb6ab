// BlockSplitter.h - decides where blocks end.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/codec/Item.h"

namespace kozor::codec {

// A run of items that goes into one block, and how often its symbols occur.
struct Block {
  std::size_t items = 0;
  SymbolCounts counts;
};

// Keeps its memory from one call to the next.
class BlockSplitter {
 public:
  // Cuts `items` where a new block saves more than its head costs.  Blocks hold 1 to 65535 items
  // and are valid until the next call.
  std::span<const Block> Split(std::span<const Item> items);

 private:
  // What is known of the block that begins at a segment, and its neighbours among the blocks.
  struct Neighbours {
    std::size_t previous;
    std::size_t next;
    std::int64_t cost;
    std::int64_t saving;  // by joining this block with the next; negative if they stay apart
  };

  void CutIntoSegments(std::span<const Item> items);
  void UpdateSaving(std::size_t index);
  std::size_t FindBestSaving() const;
  void JoinWithNext(std::size_t index);

  std::vector<Block> blocks;
  std::vector<Neighbours> list;  // by segment, linked from 0; joined ones are no longer in reach
};

}  // namespace kozor::codec
