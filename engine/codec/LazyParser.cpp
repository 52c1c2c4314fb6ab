// LazyParser.cpp - takes the longest match at a position unless one or two bytes later begins a
// better one.
//
// A match hides those that begin inside it.  So before one is taken, the next one or two positions
// are searched: if a match there is clearly better, the bytes before it become literals, and the
// search continues from the later match.
#include <bit>

#include "engine/codec/Parser.h"

namespace kozor::codec {
namespace {

// A match of three bytes at a longer distance costs as much as three literals.
constexpr std::size_t kFarForThree = std::size_t{16} * 1024;

// The estimated gain of a match in bits: the cost of its bytes as literals minus that of the
// distance.
int Worth(const Match& match) {
  constexpr int kBitsPerByte = 3;
  return kBitsPerByte * static_cast<int>(match.length) -
         static_cast<int>(std::bit_width(match.distance));
}

// How much better a later match must be, indexed by the number of bytes to wait.
constexpr int kMargin[] = {0, 2, 6};

class LazyParser final : public Parser {
 public:
  LazyParser(const LazyEffort& lazyEffort, std::size_t windowBytes)
      : effort(lazyEffort), finder(windowBytes) {}
  void Parse(const Segment& segment, std::vector<Item>& items) override;

 private:
  Match Find(std::size_t position, const SearchEffort& search, unsigned longerThan) {
    Match match = finder.Longest(position, longerThan, search);
    if (match.length == kMinMatchLength && match.distance > kFarForThree) match.length = 0;
    return match;
  }

  const LazyEffort effort;
  HashChains finder;
};

void LazyParser::Parse(const Segment& segment, std::vector<Item>& items) {
  finder.Begin(segment.data, segment.end);
  finder.Skip(0, segment.begin);
  items.resize(segment.end - segment.begin);  // the most there can be
  Item* item = items.data();
  for (std::size_t position = segment.begin; position < segment.end;) {
    Match match = Find(position, effort.first, 0);
    std::size_t nextSearch = position + 1;
    if (match.length == 0) {
      *item++ = Item::Literal(segment.data[position++]);
      continue;
    }
    for (unsigned step = 1; step <= effort.steps && match.length < effort.goodLength;) {
      const Match later = Find(nextSearch++, effort.later, match.length - 1);
      if (later.length == 0 || Worth(later) < Worth(match) + kMargin[step]) {
        ++step;
        continue;
      }
      for (; step != 0; --step) *item++ = Item::Literal(segment.data[position++]);
      match = later;
      step = 1;
    }
    *item++ = Item::Match(match.length, match.distance);
    position += match.length;
    finder.Skip(nextSearch, position - nextSearch);
  }
  items.resize(static_cast<std::size_t>(item - items.data()));
}

}  // namespace

std::unique_ptr<Parser> MakeLazyParser(const LazyEffort& effort, std::size_t windowBytes) {
  return std::make_unique<LazyParser>(effort, windowBytes);
}

}  // namespace kozor::codec
