// Blocks.h - splits items into blocks and writes blocks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "engine/codec/BitWriter.h"
#include "engine/codec/Items.h"

namespace kozor::codec {

// Reuses its memory from call to call.
class BlockSplitter {
 public:
  // Blocks end only at multiples of `stretch` items: larger values are faster, smaller ones pack
  // better.
  explicit BlockSplitter(std::size_t stretch) : stretchItems(stretch) {}

  // Splits `items` where a new block saves more than its head costs.  The blocks are valid until
  // the next call.
  std::span<const Block> Split(std::span<const Item> items);

 private:
  // The block that begins at a stretch, linked to its neighbours.
  struct Neighbours {
    std::size_t previous;
    std::size_t next;
    std::int64_t cost;
    std::int64_t saving;  // by joining this block with the next; negative if they stay apart
  };

  void CutIntoStretches(std::span<const Item> items);
  void UpdateSaving(std::size_t index);
  std::size_t FindBestSaving() const;
  void JoinWithNext(std::size_t index);

  const std::size_t stretchItems;
  std::vector<Block> blocks;
  std::vector<Neighbours> list;  // by stretch, linked from 0; merged ones are unlinked
};

// The items of a stream's last block must take bits.  With a single item symbol, and at most a
// single distance symbol without extra bits, they would take none, and some readers reject a stream
// that ends that way.
enum class BlockPlace { Inside, Last };

void WriteBlock(const LhMethod& method, std::span<const Item> items, const SymbolCounts& counts,
                BlockPlace place, BitWriter& out);

}  // namespace kozor::codec
