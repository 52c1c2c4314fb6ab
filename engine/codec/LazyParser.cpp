// LazyParser.cpp - takes the longest match at hand, unless waiting a byte or two brings a better
// one.
//
// A match hides those that begin inside it.  So before one is taken, the next position is searched,
// and the one after it: if a match there is worth clearly more, the bytes before it go out as
// literals, and the later match becomes the one to beat.
#include <bit>

#include "engine/codec/Parser.h"

namespace kozor::codec {
namespace {

struct LazyEffort {
  SearchEffort first;
  SearchEffort later;       // for searches that only try to beat a match at hand
  unsigned steps;           // how many positions to look ahead
  std::size_t farForThree;  // matches of three bytes from farther away cost more than literals
};

constexpr LazyEffort kFast{{8, 32}, {4, 32}, 1, 1024};
constexpr LazyEffort kNormal{{64, 128}, {32, 128}, 2, 4096};

// What a match is worth, in bits: what a byte costs otherwise, less what the distance takes.
int Worth(const Match& match) {
  constexpr int kBitsPerByte = 3;
  return kBitsPerByte * static_cast<int>(match.length) -
         static_cast<int>(std::bit_width(match.distance));
}

// How much more a match must be worth to be waited for, by the number of bytes to wait.
constexpr int kMargin[] = {0, 2, 6};

class LazyParser final : public Parser {
 public:
  explicit LazyParser(const LazyEffort& lazyEffort) : effort(lazyEffort) {}
  void Parse(const Chunk& chunk, MatchFinder& finder, std::vector<Item>& items) override;

 private:
  Match Find(std::size_t position, const SearchEffort& search, unsigned longerThan) {
    Match match = finder->Longest(position, chunk.end, longerThan, search);
    if (match.length == kMinMatchLength && match.distance > effort.farForThree) match.length = 0;
    return match;
  }
  bool Improve(std::size_t& position, Match& match, std::vector<Item>& items);

  LazyEffort effort;
  Chunk chunk{};
  MatchFinder* finder = nullptr;
};

void LazyParser::Parse(const Chunk& newChunk, MatchFinder& matchFinder, std::vector<Item>& items) {
  chunk = newChunk;
  finder = &matchFinder;
  items.clear();
  for (std::size_t position = chunk.begin; position < chunk.end;) {
    Match match = Find(position, effort.first, 0);
    if (match.length == 0) {
      items.push_back(Item::Literal(chunk.data[position++]));
      continue;
    }
    while (Improve(position, match, items)) {
    }
    items.push_back(Item::Match(match.length, match.distance));
    position += match.length;
  }
}

// Looks for a match that is worth waiting for; moves on to it if there is one.
bool LazyParser::Improve(std::size_t& position, Match& match, std::vector<Item>& items) {
  if (match.length >= effort.first.niceLength) return false;
  for (std::size_t step = 1; step <= effort.steps; ++step) {
    const Match later = Find(position + step, effort.later, match.length - 1);
    if (later.length == 0 || Worth(later) < Worth(match) + kMargin[step]) continue;
    for (; step != 0; --step) items.push_back(Item::Literal(chunk.data[position++]));
    match = later;
    return true;
  }
  return false;
}

}  // namespace

std::unique_ptr<Parser> MakeLazyParser(Effort effort) {
  return std::make_unique<LazyParser>(effort == Effort::fast ? kFast : kNormal);
}

}  // namespace kozor::codec
