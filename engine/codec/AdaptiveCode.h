// AdaptiveCode.h - the adaptive Huffman code of lh1 and lh2.
//
// Encoder and decoder begin with the same tree and count every symbol after coding it, so no code
// lengths are transmitted.  The nodes are kept in slots in the order of descending weight; slot 0
// is the root.  That order makes the tree a Huffman tree.  Counting preserves it: before its weight
// grows, a node is swapped with the first node of equal weight.
//
// What makes it fast: most counts swap nothing, so the path that decoding took down is also the
// path of the counting up, and none of its steps has to wait for the one before.  The first bits of
// a code are decoded by a table.  Swaps near the root, which make it invalid, are rare.
//
// Children are adjacent: those of branch b are in slots 2b (bit 0) and 2b - 1 (bit 1).  Nodes are
// numbered: a branch by its b (from 1), a leaf by its symbol plus kSymbols, so that one table gives
// the slot of either.
//
// A code has at most 22 bits: a deeper leaf would need a total weight above 0x8000, and at that
// total the weights are halved.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <utility>

#include "engine/codec/BitReader.h"

namespace kozor::codec {

template <unsigned kSymbols>
class AdaptiveCode {
 public:
  static constexpr unsigned kLongestBits = 22;

  // Starts with all symbols, each counted once.
  void BeginWithAll();
  // Starts with a single symbol, which takes no bits; Add adds others.
  void BeginWith(unsigned symbol);
  // Adds a new symbol, which splits the leaf in the last slot.
  void Add(unsigned symbol);

  // Decodes a symbol and counts it.  Needs kLongestBits in the reader.
  unsigned Decode(BitReader& in) {
    std::uint64_t bits = in.Buffer();
    const Beginning& beginning = beginnings[static_cast<unsigned>(bits >> (64 - kTableBits))];
    std::array<std::uint16_t, kLongestBits + 1> path;  // the slots below the root
    std::ranges::copy(beginning.path, path.begin());
    unsigned count = beginning.count;
    unsigned node = beginning.node;
    bits <<= count;
    for (; node < kSymbols; ++count, bits <<= 1) {
      const unsigned slot = 2 * node - static_cast<unsigned>(bits >> 63);
      path[count] = static_cast<std::uint16_t>(slot);
      node = nodes[slot];
    }
    in.Consume(count);

    const unsigned symbol = node - kSymbols;
    if (total == kMostTotal) [[unlikely]] {
      Count(symbol);
    } else {
      CountPath(std::span(path).first(count));
    }
    return symbol;
  }

  struct Code {
    std::uint32_t bits;  // right-aligned
    unsigned count;
  };
  Code CodeOf(unsigned symbol) const {
    Code code{0, 0};
    for (unsigned slot = slotOf[kSymbols + symbol]; slot != 0; slot = Parent(slot)) {
      code.bits |= (slot & 1U) << code.count++;
    }
    return code;
  }

  void Count(unsigned symbol) {
    if (total == kMostTotal) Rebuild();
    ++total;
    CountFrom(slotOf[kSymbols + symbol]);
    if (!isTableValid) FillTable();
  }

 private:
  static constexpr unsigned kMostTotal = 0x8000;
  static constexpr std::uint16_t kRootWeight = 0xFFFF;  // equal to no other

  // Where the first bits of a code lead to.
  static constexpr unsigned kTableBits = 5;
  struct alignas(16) Beginning {
    std::array<std::uint16_t, kTableBits> path;
    std::uint16_t count;  // of the slots in `path`, fewer if a leaf ends it
    std::uint16_t node;   // in the last of them
  };

  unsigned Parent(unsigned slot) const { return slotOf[(slot + 1) / 2]; }

  void Place(unsigned node, std::size_t slot) {
    nodes[slot] = static_cast<std::uint16_t>(node);
    slotOf[node] = static_cast<std::uint16_t>(slot);
  }
  void Swap(unsigned slot, unsigned other) {
    const unsigned node = nodes[slot];
    Place(nodes[other], slot);
    Place(node, other);
  }

  // Counts the leaf in the last slot of a path.  After a swap the path goes on elsewhere.
  void CountPath(std::span<const std::uint16_t> path) {
    ++total;
    for (; !path.empty(); path = path.first(path.size() - 1)) {
      const unsigned slot = path.back();
      if (weights[slot - 1] == weights[slot]) [[unlikely]] {
        CountFrom(slot);
        break;
      }
      ++weights[slot];
    }
    if (!isTableValid) FillTable();
  }

  // Adds to the weight of the node in a slot, and to those of the nodes above it.
  void CountFrom(unsigned slot) {
    for (; slot != 0; slot = Parent(slot)) {
      if (weights[slot - 1] == weights[slot]) {
        const unsigned first = FirstOfWeight(slot);
        Swap(first, slot);
        isTableValid = isTableValid && first > lastInTable;
        slot = first;
      }
      ++weights[slot];
    }
  }

  // The first slot with the weight of this one: four slots are compared at a time.
  unsigned FirstOfWeight(unsigned slot) const {
    const std::uint16_t weight = weights[slot];
    for (; slot >= 4; slot -= 4) {
      std::uint64_t four;
      std::memcpy(&four, &weights[slot - 4], sizeof four);
      four ^= weight * std::uint64_t{0x0001000100010001};
      if (four == 0) continue;
      const int sameBits = std::endian::native == std::endian::little ? std::countl_zero(four)
                                                                      : std::countr_zero(four);
      return slot - static_cast<unsigned>(sameBits) / 16;
    }
    while (weights[slot - 1] == weight) --slot;
    return slot;
  }

  void Lengthen(Beginning& beginning, unsigned depth, unsigned slot) {
    beginning.path[depth] = static_cast<std::uint16_t>(slot);
    beginning.count = static_cast<std::uint16_t>(depth + 1);
    beginning.node = nodes[slot];
  }

  void Rebuild();
  void FinishTree();
  void FillTable();

  unsigned last = 0;   // slot in use
  unsigned total = 0;  // of all counts, as the format defines it
  std::array<std::uint16_t, 2 * kSymbols - 1> nodes;
  std::array<std::uint16_t, 2 * kSymbols - 1> weights;
  std::array<std::uint16_t, std::size_t{2} * kSymbols> slotOf;  // by node
  std::array<Beginning, 1U << kTableBits> beginnings{};         // by the first bits
  unsigned lastInTable = 0;                                     // slot
  bool isTableValid = false;
};

template <unsigned kSymbols>
void AdaptiveCode<kSymbols>::BeginWithAll() {
  last = 2 * kSymbols - 2;
  for (unsigned symbol = 0; symbol < kSymbols; ++symbol) {
    Place(kSymbols + symbol, last - symbol);
    weights[last - symbol] = 1;
  }
  for (unsigned branch = kSymbols - 1; branch > 0; --branch) {
    Place(branch, branch - 1);
    weights[branch - 1] = static_cast<std::uint16_t>(weights[2 * branch] + weights[2 * branch - 1]);
  }
  FinishTree();
}

template <unsigned kSymbols>
void AdaptiveCode<kSymbols>::BeginWith(unsigned symbol) {
  last = 0;
  total = 0;
  Place(kSymbols + symbol, 0);
  weights[0] = 1;
  FillTable();
}

template <unsigned kSymbols>
void AdaptiveCode<kSymbols>::Add(unsigned symbol) {
  const unsigned branch = last / 2 + 1;
  const std::uint16_t weight = weights[last];
  Place(nodes[last], last + 1);
  weights[last + 1] = weight;
  Place(kSymbols + symbol, last + 2);
  weights[last + 2] = 0;
  Place(branch, last);
  if (last == 0) weights[0] = kRootWeight;
  last += 2;
  isTableValid = false;
  Count(symbol);
}

// Halves all counts, rounding up, and rebuilds the tree from the light end.
template <unsigned kSymbols>
void AdaptiveCode<kSymbols>::Rebuild() {
  struct Leaf {
    std::uint16_t node;
    std::uint16_t weight;
  };
  std::array<Leaf, kSymbols> leaves;
  std::size_t left = 0;
  for (unsigned slot = 0; slot <= last; ++slot) {
    if (nodes[slot] < kSymbols) continue;
    leaves[left++] = {nodes[slot], static_cast<std::uint16_t>((weights[slot] + 1) / 2)};
  }

  unsigned free = last + 1;  // slots from here on are in use
  const auto placeLeaf = [&] {
    --free;
    --left;
    Place(leaves[left].node, free);
    weights[free] = leaves[left].weight;
  };
  for (unsigned branch = last / 2; branch > 0; --branch) {
    const unsigned heavier = 2 * branch - 1;
    while (free > heavier) placeLeaf();  // NOLINT(bugprone-infinite-loop): it lowers `free`
    const auto weight = static_cast<std::uint16_t>(weights[heavier] + weights[heavier + 1]);
    while (left > 0 && leaves[left - 1].weight <= weight) placeLeaf();
    --free;
    Place(branch, free);
    weights[free] = weight;
  }
  FinishTree();
}

// Reads the total from the root.
template <unsigned kSymbols>
void AdaptiveCode<kSymbols>::FinishTree() {
  total = weights[0];
  weights[0] = kRootWeight;
  FillTable();
}

template <unsigned kSymbols>
void AdaptiveCode<kSymbols>::FillTable() {
  isTableValid = true;
  lastInTable = 0;
  beginnings[0] = {{}, 0, nodes[0]};
  for (unsigned depth = 0; depth < kTableBits; ++depth) {
    for (unsigned i = 1U << depth; i-- != 0;) {  // the last first, as each makes room for two
      Beginning& shorter = beginnings[i];
      Beginning& longer = beginnings[2 * i + 1];
      longer = shorter;
      beginnings[2 * i] = shorter;
      if (longer.node >= kSymbols) continue;
      lastInTable = std::max(lastInTable, 2U * longer.node);
      Lengthen(beginnings[2 * i], depth, 2U * longer.node);
      Lengthen(longer, depth, 2U * longer.node - 1);
    }
  }
}

}  // namespace kozor::codec
