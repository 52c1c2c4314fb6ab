// Encode.cpp - packs members with the block-Huffman methods, in segments; defines the levels.
//
// A segment is parsed into items, the items are split into blocks, and the blocks are written.  No
// step uses data outside the segment and the window before it.  So memory is bounded, segments can
// be packed by several threads, and the packed data depends neither on the threads nor on the sizes
// of the pieces that an encoder is fed.
#include <algorithm>
#include <array>
#include <cstring>
#include <stdexcept>

#include "engine/codec/BitWriter.h"
#include "engine/codec/Blocks.h"
#include "engine/codec/Codec.h"
#include "engine/codec/Lh1Encoder.h"
#include "engine/codec/LhFormat.h"
#include "engine/codec/Parser.h"

namespace kozor::codec {
namespace {

const LhMethod* FindWritten(Method method) {
  switch (method) {
    case Method::Lh4:
      return &kLh4;
    case Method::Lh5:
      return &kLh5;
    case Method::Lh6:
      return &kLh6;
    case Method::Lh7:
      return &kLh7;
    default:
      return nullptr;
  }
}

const LhMethod& RequireWritten(Method method) {
  const LhMethod* const found = FindWritten(method);
  if (!found) throw std::invalid_argument("no encoder for this method");
  return *found;
}

void RequireLevel(int level) {
  if (level < kFastestLevel || level > kSmallestLevel) throw std::invalid_argument("no such level");
}

// The efforts of the levels from kFastestLevel on: first those of the lazy parser, then those of
// the near-optimal one.  A single pass of that packs best if the costs are updated in small steps.
struct Levels {
  std::array<LazyEffort, 6> lazy;
  std::array<OptimalEffort, 3> optimal;
};
// Windows of up to 8 KiB hold few matches, which are found early.
constexpr Levels kSmallWindowLevels{
    {{{{4, 16}, {0, 16}, 0, 16},
      {{6, 24}, {4, 24}, 1, 16},
      {{10, 32}, {6, 32}, 1, 24},
      {{16, 48}, {8, 48}, 1, 32},
      {{24, 48}, {12, 48}, 1, 32},
      {{128, 192}, {64, 192}, 2, 128}}},
    {{{{16, 48}, 1, 32 << 10}, {{40, 128}, 2, 64 << 10}, {{120, 256}, 3, 128 << 10}}}};
constexpr Levels kLargeWindowLevels{
    {{{{4, 16}, {0, 16}, 0, 16},
      {{6, 24}, {4, 24}, 1, 16},
      {{10, 32}, {6, 32}, 1, 24},
      {{24, 64}, {12, 64}, 1, 32},
      {{48, 96}, {16, 64}, 1, 32},
      {{128, 192}, {64, 192}, 2, 128}}},
    {{{{16, 48}, 1, 32 << 10}, {{40, 128}, 1, 32 << 10}, {{80, 192}, 2, 64 << 10}}}};
static_assert(kSmallWindowLevels.lazy.size() + kSmallWindowLevels.optimal.size() == kSmallestLevel);

std::unique_ptr<Parser> MakeParser(int level, std::size_t windowBytes) {
  constexpr std::size_t kSmallWindow = 8192;
  const Levels& levels = windowBytes <= kSmallWindow ? kSmallWindowLevels : kLargeWindowLevels;
  const auto index = static_cast<std::size_t>(level - kFastestLevel);
  if (index < levels.lazy.size()) return MakeLazyParser(levels.lazy[index], windowBytes);
  return MakeOptimalParser(levels.optimal[index - levels.lazy.size()], windowBytes);
}

// Small stretches allow better block boundaries.  At the fast levels the saving isn't worth the
// time.
std::size_t StretchItems(int level) {
  return level <= kDefaultLevel ? 2048 : 512;
}

}  // namespace

struct SegmentEncoder::State {
  State(Method lhMethod, int level)
      : method(RequireWritten(lhMethod)),
        parser(MakeParser(level, method.windowBytes)),
        splitter(StretchItems(level)) {}

  const LhMethod& method;
  const std::unique_ptr<Parser> parser;
  std::vector<Item> items;
  BlockSplitter splitter;
};

SegmentEncoder::SegmentEncoder(Method method, int level) {
  RequireLevel(level);
  state = std::make_unique<State>(method, level);
}
SegmentEncoder::~SegmentEncoder() = default;

void SegmentEncoder::Encode(std::span<const std::uint8_t> data, std::size_t begin,
                            SegmentPlace place, BitWriter& packed) {
  if (begin == data.size()) return;
  const std::size_t history = std::min(begin, state->method.windowBytes);
  data = data.subspan(begin - history);
  state->parser->Parse({data.data(), history, data.size()}, state->items);
  std::span<const Item> left = state->items;
  for (const Block& block : state->splitter.Split(left)) {
    const bool isLast = place == SegmentPlace::Last && block.items == left.size();
    WriteBlock(state->method, left.first(block.items), block.counts,
               isLast ? BlockPlace::Last : BlockPlace::Inside, packed);
    left = left.subspan(block.items);
  }
}

struct Encoder::State {
  State(Method lhMethod, int level)
      : historyBytes(HistoryBytes(lhMethod)), segments(lhMethod, level) {}

  void EncodeSegment(SegmentPlace place, std::vector<std::uint8_t>& packed);
  void KeepHistory();

  const std::size_t historyBytes;
  SegmentEncoder segments;
  // The history of the next segment, then the segment collected so far.
  std::vector<std::uint8_t> buffer;
  std::size_t begin = 0;  // of the segment
  BitWriter bits;
};

void Encoder::State::EncodeSegment(SegmentPlace place, std::vector<std::uint8_t>& packed) {
  segments.Encode(buffer, begin, place, bits);
  if (place == SegmentPlace::Last) bits.Pad();
  bits.MoveTo(packed);
}

void Encoder::State::KeepHistory() {
  const std::size_t kept = std::min(historyBytes, buffer.size());
  buffer.erase(buffer.begin(), buffer.end() - static_cast<std::ptrdiff_t>(kept));
  begin = kept;
}

Encoder::Encoder(Method method, int level) {
  if (method == Method::Lh1) {
    RequireLevel(level);
    lh1 = std::make_unique<Lh1Encoder>();
  } else {
    state = std::make_unique<State>(method, level);
  }
}
Encoder::~Encoder() = default;

// A full segment is packed only when more data comes, because the last one is treated differently.
void Encoder::Append(std::span<const std::uint8_t> data, std::vector<std::uint8_t>& packed) {
  if (lh1) return lh1->Append(data, packed);
  while (!data.empty()) {
    if (state->buffer.size() - state->begin == kSegmentBytes) {
      state->EncodeSegment(SegmentPlace::Inside, packed);
      state->KeepHistory();
    }
    const std::size_t room = kSegmentBytes - (state->buffer.size() - state->begin);
    const auto piece = data.first(std::min(room, data.size()));
    state->buffer.insert(state->buffer.end(), piece.begin(), piece.end());
    data = data.subspan(piece.size());
  }
}

void Encoder::Finish(std::vector<std::uint8_t>& packed) {
  if (lh1) return lh1->Finish(packed);
  state->EncodeSegment(SegmentPlace::Last, packed);
  state->buffer.clear();
  state->begin = 0;
}

std::size_t HistoryBytes(Method method) {
  const LhMethod* const written = FindWritten(method);
  return written ? written->windowBytes : 0;
}

std::vector<std::uint8_t> Encode(Method method, std::span<const std::uint8_t> data, int level) {
  Encoder encoder(method, level);
  std::vector<std::uint8_t> packed;
  encoder.Append(data, packed);
  encoder.Finish(packed);
  return packed;
}

}  // namespace kozor::codec
