// Parser.h - cuts data into literals and matches.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "engine/codec/Codec.h"
#include "engine/codec/Item.h"
#include "engine/codec/MatchFinder.h"

namespace kozor::codec {

// A part of the encoder's buffer: bytes begin to end, with those before begin as history.
struct Chunk {
  const std::uint8_t* data;
  std::size_t begin;
  std::size_t end;
};

// Parsers differ in how far they look ahead before they settle for an item.
class Parser {
 public:
  virtual ~Parser() = default;
  // Replaces `items` by those that make the chunk.  No match goes beyond its end.
  virtual void Parse(const Chunk& chunk, MatchFinder& finder, std::vector<Item>& items) = 0;
};

std::unique_ptr<Parser> MakeLazyParser(Effort effort);
std::unique_ptr<Parser> MakeOptimalParser();

}  // namespace kozor::codec
