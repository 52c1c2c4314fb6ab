// Parser.h - cuts data into literals and matches.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "engine/codec/Items.h"
#include "engine/codec/MatchFinder.h"

namespace kozor::codec {

// Bytes begin to end of `data` are to be parsed; those before begin are history.
struct Segment {
  const std::uint8_t* data;
  std::size_t begin;
  std::size_t end;
};

// Parsers differ in how far they look ahead before they settle for an item.  What they find depends
// on the segment and its history alone.
class Parser {
 public:
  virtual ~Parser() = default;
  // Replaces `items` by those that make the segment.  No match goes beyond its end.
  virtual void Parse(const Segment& segment, std::vector<Item>& items) = 0;
};

struct LazyEffort {
  SearchEffort first;
  SearchEffort later;   // for searches that only try to beat a match at hand
  unsigned steps;       // how many positions to look ahead, at most 2
  unsigned goodLength;  // a match of this length is taken at once
};
std::unique_ptr<Parser> MakeLazyParser(const LazyEffort& effort, std::size_t windowBytes);

struct OptimalEffort {
  SearchEffort search;
  unsigned passes;           // over each stretch of the data
  std::size_t stretchBytes;  // what is parsed at once
};
std::unique_ptr<Parser> MakeOptimalParser(const OptimalEffort& effort, std::size_t windowBytes);

}  // namespace kozor::codec
