// MatchFinder.h - finds earlier occurrences of the bytes at a position.
//
// HashChains: positions whose four bytes have the same hash form a chain, newest first.  One table
// holds the newest position of each hash, another the distance to the next position in the chain. A
// search follows the chain until it leaves the window or has seen `depth` candidates.  It goes from
// near to far, so only a longer match than those before is of interest: the four bytes that would
// make it longer are compared first, and most candidates fail there.
//
// BinaryTrees: positions of the same hash form a tree, sorted by the bytes that follow, with the
// newest at the root.  A search descends from the root and makes the position itself the new root
// on its way, so it finds the best candidates in few steps where a chain would be long.  Entering a
// position costs as much as searching it.
//
// In both, matches of three bytes come from a second table that holds only the newest position of
// each hash of three bytes: they save bits only if they are near.
//
// Optimisations:
// - Links are distances in 16 bits, so the links of a window of 8 KiB are half of a first-level
//   cache, and nothing has to be corrected when the window moves on.
// - The tables are no larger than window and data require, so that a small member doesn't pay for
//   clearing a large table.
// - The hash of the next position is computed while the current one is searched, and its table
//   entries are prefetched.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "engine/codec/LhFormat.h"

namespace kozor::codec {

struct Match {
  unsigned length = 0;  // 0: none
  std::size_t distance = 0;
};

// Bounds of one search.
struct SearchEffort {
  unsigned depth;       // candidates examined
  unsigned niceLength;  // a match of this length ends the search
};

// The tables that both finders share.  Every position must be visited exactly once, in ascending
// order.
class MatchFinder {
 protected:
  using Position = std::int32_t;
  static constexpr Position kNone = -0x40000000;
  // Shorter matches come only from the table of newest positions.
  static constexpr unsigned kHashedBytes = 4;
  // A position with fewer bytes left is neither searched nor entered.
  static constexpr std::size_t kBytesNeeded = kHashedBytes + 1;

  explicit MatchFinder(std::size_t windowBytes)
      : window(windowBytes),
        maxDistance(static_cast<Position>(std::min<std::size_t>(windowBytes, kFar))) {}

  // Clears the tables; position 0 is visited next.
  void BeginTables(const std::uint8_t* newData, std::size_t newEnd);

  static std::uint32_t Load4(const std::uint8_t* from) {
    return std::uint32_t{from[0]} | std::uint32_t{from[1]} << 8 | std::uint32_t{from[2]} << 16 |
           std::uint32_t{from[3]} << 24;
  }
  // The first three bytes of a result of Load4.
  static std::uint32_t FirstThree(std::uint32_t bytes) { return bytes << 8; }
  static unsigned CommonLength(const std::uint8_t* a, const std::uint8_t* b, unsigned from,
                               unsigned limit);

  unsigned LengthLimit(std::size_t position) const {
    return static_cast<unsigned>(std::min<std::size_t>(kMaxMatchLength, end - position));
  }
  bool CanVisit(std::size_t position) const { return end - position >= kBytesNeeded; }

  // The previous entries for the bytes at the position that is being entered.
  struct Newest {
    Position of4;
    Position of3;
  };
  Newest Visit(std::size_t position) {
    const Newest found{newest4[hash4], newest3[hash3]};
    newest4[hash4] = newest3[hash3] = static_cast<Position>(position);
    HashNext(data + position + 1);
    return found;
  }
  void HashNext(const std::uint8_t* at) {
    const std::uint32_t bytes = Load4(at);
    hash4 = bytes * 0x9E3779B1U >> shift4;
    hash3 = FirstThree(bytes) * 0x9E3779B1U >> shift3;
#if defined(__GNUC__)
    __builtin_prefetch(&newest4[hash4], 1);
    __builtin_prefetch(&newest3[hash3], 1);
#endif
  }

  // Links are distances back; kFar means "outside the window".
  static constexpr std::size_t kFar = 65535;
  static std::uint16_t Link(Position from, Position to) {
    return static_cast<std::uint16_t>(
        std::min<std::size_t>(kFar, static_cast<std::size_t>(from - to)));
  }

  const std::uint8_t* data = nullptr;
  std::size_t end = 0;
  std::size_t window;    // a power of two
  Position maxDistance;  // the same, limited to what a link can hold

 private:
  unsigned shift4 = 0;
  unsigned shift3 = 0;
  std::uint32_t hash4 = 0;  // of the next position to visit
  std::uint32_t hash3 = 0;
  std::vector<Position> newest4;
  std::vector<Position> newest3;
};

class HashChains : public MatchFinder {
 public:
  explicit HashChains(std::size_t windowBytes) : MatchFinder(windowBytes), links(windowBytes) {}

  // Starts on the bytes from `newData` to `newData + newEnd`; nothing after them is read.
  void Begin(const std::uint8_t* newData, std::size_t newEnd) { BeginTables(newData, newEnd); }

  // Enters positions without a search.
  void Skip(std::size_t position, std::size_t count) {
    for (; count != 0 && CanVisit(position); ++position, --count) Enter(position);
  }

  // The longest match longer than `longerThan`, at the smallest distance.
  Match Longest(std::size_t position, unsigned longerThan, const SearchEffort& effort) {
    Match longest;
    Search(position, longerThan, effort, [&](const Match& match) { longest = match; });
    return longest;
  }

  // Calls found(Match) for each match that is longer than all nearer ones and than `longerThan`.
  template <class Found>
  void Search(std::size_t position, unsigned longerThan, const SearchEffort& effort, Found found);

 private:
  Newest Enter(std::size_t position) {
    const Newest newest = Visit(position);
    links[position & (window - 1)] = Link(static_cast<Position>(position), newest.of4);
    return newest;
  }

  std::vector<std::uint16_t> links;  // by position modulo the window
};

class BinaryTrees : public MatchFinder {
 public:
  explicit BinaryTrees(std::size_t windowBytes) : MatchFinder(windowBytes), nodes(windowBytes) {}

  // As in HashChains.
  void Begin(const std::uint8_t* newData, std::size_t newEnd) { BeginTables(newData, newEnd); }
  template <class Found>
  void Search(std::size_t position, unsigned longerThan, const SearchEffort& effort, Found found);

  // Enters positions without reporting matches, which takes few steps down the tree.  `niceLength`
  // must be the same for all positions of a tree, or its order is lost.
  void Skip(std::size_t position, std::size_t count, unsigned niceLength) {
    for (; count != 0; ++position, --count) {
      Search(position, kMaxMatchLength, {kStepsOfSkip, niceLength}, [](const Match&) {});
    }
  }

 private:
  static constexpr unsigned kStepsOfSkip = 8;

  // Links from a node to the roots of its two subtrees.
  struct Node {
    std::uint16_t below = kFar;  // of the positions whose bytes come before those of the node
    std::uint16_t above = kFar;
  };
  Node& At(Position position) { return nodes[static_cast<std::size_t>(position) & (window - 1)]; }

  std::vector<Node> nodes;  // by position modulo the window
};

// The length of the common prefix of `a` and `b`, of which `from` bytes are known to be equal.
inline unsigned MatchFinder::CommonLength(const std::uint8_t* a, const std::uint8_t* b,
                                          unsigned from, unsigned limit) {
  unsigned length = from;
  for (; length + 8 <= limit; length += 8) {
    std::uint64_t wordA;
    std::uint64_t wordB;
    std::memcpy(&wordA, a + length, 8);
    std::memcpy(&wordB, b + length, 8);
    if (const std::uint64_t difference = wordA ^ wordB; difference != 0) {
      const int sameBits = std::endian::native == std::endian::little
                               ? std::countr_zero(difference)
                               : std::countl_zero(difference);
      return length + static_cast<unsigned>(sameBits) / 8;
    }
  }
  while (length < limit && a[length] == b[length]) ++length;
  return length;
}

template <class Found>
inline void HashChains::Search(std::size_t position, unsigned longerThan,
                               const SearchEffort& effort, Found found) {
  if (!CanVisit(position)) return;
  const unsigned limit = LengthLimit(position);
  const std::uint8_t* const here = data + position;
  const std::uint32_t bytes = Load4(here);
  const auto at = static_cast<Position>(position);
  // An empty entry or a position outside the window ends a chain.
  const Position last = std::max(at - maxDistance, Position{0});
  const Newest newest = Enter(position);

  const auto foundAt = [&](Position candidate, unsigned length) {
    found(Match{length, static_cast<std::size_t>(at - candidate)});
  };
  unsigned best = longerThan;
  if (best < kMinMatchLength) {
    best = kMinMatchLength;
    if (newest.of3 >= last && FirstThree(Load4(data + newest.of3)) == FirstThree(bytes)) {
      foundAt(newest.of3, best);
    }
  }
  const unsigned enough = std::min(limit, effort.niceLength);
  if (best >= enough) return;

  const std::uint16_t* const link = links.data();
  const std::size_t mask = window - 1;
  Position candidate = newest.of4;
  std::uint32_t wanted = Load4(here + best - 3);
  for (unsigned left = effort.depth; candidate >= last && left != 0; --left) {
    const std::uint8_t* const there = data + candidate;
    if (Load4(there + best - 3) == wanted && Load4(there) == bytes) {
      const unsigned length = CommonLength(here, there, kHashedBytes, limit);
      if (length > best) {
        foundAt(candidate, length);
        if (length >= enough) return;
        best = length;
        wanted = Load4(here + best - 3);
      }
    }
    candidate -= link[static_cast<std::size_t>(candidate) & mask];
  }
}

template <class Found>
inline void BinaryTrees::Search(std::size_t position, unsigned longerThan,
                                const SearchEffort& effort, Found found) {
  if (!CanVisit(position)) return;
  const unsigned limit = LengthLimit(position);
  const unsigned enough = std::min(limit, effort.niceLength);
  const std::uint8_t* const here = data + position;
  const auto at = static_cast<Position>(position);
  // An empty entry or a position outside the window ends a branch.
  const Position last = std::max(at - maxDistance, Position{0});
  const Newest newest = Visit(position);

  const auto foundAt = [&](Position candidate, unsigned length) {
    found(Match{length, static_cast<std::size_t>(at - candidate)});
  };
  unsigned best = longerThan;
  if (best < kMinMatchLength && newest.of3 >= last &&
      FirstThree(Load4(data + newest.of3)) == FirstThree(Load4(here))) {
    best = kMinMatchLength;
    foundAt(newest.of3, best);
  }

  // The links in which to store the next smaller and the next greater node, and their owners.
  Position belowOwner = at;
  Position aboveOwner = at;
  std::uint16_t* below = &At(at).below;
  std::uint16_t* above = &At(at).above;
  // Bytes that the position has in common with the last node on either side.  Every later node
  // shares at least the smaller number with it.
  unsigned commonBelow = 0;
  unsigned commonAbove = 0;
  Position candidate = newest.of4;
  for (unsigned left = effort.depth; candidate >= last && left != 0; --left) {
    const std::uint8_t* const there = data + candidate;
    Node& node = At(candidate);
    const unsigned length = CommonLength(here, there, std::min(commonBelow, commonAbove), limit);
    if (length > best) {
      best = length;
      foundAt(candidate, length);
    }
    if (length >= enough) {
      // Treated as equal: the position replaces the node.
      *below = Link(belowOwner, candidate - node.below);
      *above = Link(aboveOwner, candidate - node.above);
      return;
    }
    if (there[length] < here[length]) {
      *below = Link(belowOwner, candidate);
      belowOwner = candidate;
      below = &node.above;
      commonBelow = length;
      candidate -= node.above;
    } else {
      *above = Link(aboveOwner, candidate);
      aboveOwner = candidate;
      above = &node.below;
      commonAbove = length;
      candidate -= node.below;
    }
  }
  *below = *above = kFar;
}

}  // namespace kozor::codec
