// MatchFinder.h - finds earlier occurrences of the bytes at a position.
//
// Positions whose four bytes have the same hash form a chain, newest first: a table gives the
// newest position of a hash, another the position before each in its chain.  A search walks the
// chain as far as the window reaches, or until it has seen `depth` candidates.  It goes from near
// to far, so a candidate is of interest only if its match is longer than all before: the four bytes
// that would make it longer are compared first, and most candidates fail there.
//
// Matches of three bytes are worth their bits only when they are near.  For them a second table
// remembers just the newest position of three bytes.
//
// What a search finds depends on the bytes within the window and on nothing else, not on earlier
// searches: every position is entered, also those that a parser skips.  So pieces of a member could
// be searched by several threads, each starting with the window before its piece.
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
  unsigned depth;       // candidates looked at
  unsigned niceLength;  // a match of this length ends the search
};

class MatchFinder {
 public:
  // Matches shorter than this come from the table of newest positions alone.
  static constexpr unsigned kHashedBytes = 4;

  // Searches in `buffer`, which stays the caller's.  Up to kReadAhead bytes behind the data that is
  // searched are read, though they never matter.  The window is a power of two.
  MatchFinder(const std::uint8_t* buffer, std::size_t windowBytes);
  static constexpr std::size_t kReadAhead = 8;

  // Forgets everything; the next position searched is 0.
  void Reset();
  // The caller has moved the contents of the buffer down by `bytes`.
  void Slide(std::size_t bytes);

  // Calls found(Match) for each match at `position` that is longer than all nearer ones and longer
  // than `longerThan`.  `end` is where the data ends; positions are searched in ascending order.
  template <class Found>
  void Search(std::size_t position, std::size_t end, unsigned longerThan,
              const SearchEffort& effort, Found found);

  // The longest match, the nearest of its length.
  Match Longest(std::size_t position, std::size_t end, unsigned longerThan,
                const SearchEffort& effort) {
    Match longest;
    Search(position, end, longerThan, effort, [&](const Match& match) { longest = match; });
    return longest;
  }

 private:
  using Position = std::int32_t;
  static constexpr Position kNone = INT32_MIN / 2;

  static std::uint32_t Load4(const std::uint8_t* from) {
    return std::uint32_t{from[0]} | std::uint32_t{from[1]} << 8 | std::uint32_t{from[2]} << 16 |
           std::uint32_t{from[3]} << 24;
  }
  static unsigned CommonLength(const std::uint8_t* a, const std::uint8_t* b, unsigned from,
                               unsigned limit);
  Position& Newest4(std::uint32_t bytes) { return newest4[bytes * 0x9E3779B1U >> hashShift]; }
  Position& Newest3(std::uint32_t bytes) {
    return newest3[(bytes << 8) * 0x9E3779B1U >> hashShift];
  }
  void Enter(std::size_t position, Position& at4, Position& at3);
  void EnterUpTo(std::size_t position, std::size_t end);

  const std::uint8_t* data;
  std::size_t window;
  unsigned hashShift;
  std::size_t entered = 0;         // positions below this are in the tables
  std::vector<Position> newest4;   // by hash of four bytes
  std::vector<Position> newest3;   // by hash of three bytes
  std::vector<Position> previous;  // by position modulo the window: the one before it in its chain
};

// Length of what two places have in common, given that `from` bytes are the same.
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

inline void MatchFinder::Enter(std::size_t position, Position& at4, Position& at3) {
  previous[position & (window - 1)] = at4;
  at4 = at3 = static_cast<Position>(position);
  entered = position + 1;
}

// The last three positions before `end` have no four bytes yet and wait for more data.
inline void MatchFinder::EnterUpTo(std::size_t position, std::size_t end) {
  while (entered < position && entered + kHashedBytes <= end) {
    const std::uint32_t bytes = Load4(data + entered);
    Enter(entered, Newest4(bytes), Newest3(bytes));
  }
}

template <class Found>
void MatchFinder::Search(std::size_t position, std::size_t end, unsigned longerThan,
                         const SearchEffort& effort, Found found) {
  EnterUpTo(position, end);
  const auto limit = static_cast<unsigned>(std::min<std::size_t>(kMaxMatchLength, end - position));
  if (limit < kHashedBytes) return;

  const std::uint8_t* here = data + position;
  const std::uint32_t bytes = Load4(here);
  Position& at4 = Newest4(bytes);
  Position& at3 = Newest3(bytes);
  const auto oldest = static_cast<Position>(position - std::min(position, window));

  const auto foundAt = [&](Position candidate, unsigned length) {
    found(Match{length, position - static_cast<std::size_t>(candidate)});
  };
  unsigned best = std::max(longerThan, kMinMatchLength - 1);
  if (best < kMinMatchLength) {
    if (at3 >= oldest && ((Load4(data + at3) ^ bytes) << 8) == 0) foundAt(at3, kMinMatchLength);
    best = kMinMatchLength;
  }

  const unsigned enough = std::min(limit, effort.niceLength);
  Position candidate = at4;
  for (unsigned left = effort.depth; best < enough && candidate >= oldest && left != 0; --left) {
    const std::uint8_t* there = data + candidate;
    if (Load4(there + best - 3) == Load4(here + best - 3) && Load4(there) == bytes) {
      const unsigned length = CommonLength(here, there, kHashedBytes, limit);
      if (length > best) {
        best = length;
        foundAt(candidate, length);
      }
    }
    candidate = previous[static_cast<std::size_t>(candidate) & (window - 1)];
  }
  // Only now: the oldest candidate shares its place in the chain with this position.
  Enter(position, at4, at3);
}

}  // namespace kozor::codec
