// Parser.h - divides data into literals and matches.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "engine/codec/Items.h"
#include "engine/codec/MatchFinder.h"

namespace kozor::codec {

// The bytes of `data` from `begin` to `end`; those before `begin` are history.
struct Segment {
  const std::uint8_t* data;
  std::size_t begin;
  std::size_t end;
};

// Parsers differ in how far they look ahead before they choose an item.  The result depends only on
// the segment and its history.
class Parser {
 public:
  virtual ~Parser() = default;
  // Replaces `items` by the items of the segment.  No match extends past its end.
  virtual void Parse(const Segment& segment, std::vector<Item>& items) = 0;
};

struct LazyEffort {
  SearchEffort first;
  SearchEffort later;   // for searches that try to beat a match
  unsigned steps;       // positions to look ahead, at most 2
  unsigned goodLength;  // a match of this length is taken immediately
};
std::unique_ptr<Parser> MakeLazyParser(const LazyEffort& effort, std::size_t windowBytes);

struct OptimalEffort {
  SearchEffort search;
  unsigned passes;           // over each stretch of the data
  std::size_t stretchBytes;  // bytes parsed at once
};
std::unique_ptr<Parser> MakeOptimalParser(const OptimalEffort& effort, std::size_t windowBytes);

}  // namespace kozor::codec
