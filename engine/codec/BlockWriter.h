// BlockWriter.h - writes one block: its head with the three codes, then its items.
#pragma once

#include <span>

#include "engine/codec/BitWriter.h"
#include "engine/codec/BlockSplitter.h"
#include "engine/codec/Item.h"

namespace kozor::codec {

// The items of a stream's last block must take bits.  With a single item symbol, and at most a
// single distance symbol without extra bits, they would take none, and there are readers that
// refuse a stream which ends so.
enum class BlockPlace { inside, last };

void WriteBlock(const LhMethod& method, std::span<const Item> items, const SymbolCounts& counts,
                BlockPlace place, BitWriter& out);

}  // namespace kozor::codec
