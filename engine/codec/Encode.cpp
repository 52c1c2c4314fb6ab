// Encode.cpp - packs members with the block-Huffman methods, from pieces of any size.
//
// The data is cut into chunks.  A chunk is parsed into items, the items are split into blocks, and
// the blocks are written; none of these steps looks beyond the chunk and the window before it.  So
// memory is bounded, the packed data does not depend on the sizes of the pieces, and chunks could
// be parsed by several threads, with the bits of their blocks joined in order.
#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "engine/codec/BitWriter.h"
#include "engine/codec/BlockSplitter.h"
#include "engine/codec/BlockWriter.h"
#include "engine/codec/Codec.h"
#include "engine/codec/Lh1Encoder.h"
#include "engine/codec/LhFormat.h"
#include "engine/codec/MatchFinder.h"
#include "engine/codec/Parser.h"

namespace kozor::codec {
namespace {

constexpr std::size_t kChunkBytes = std::size_t{256} * 1024;

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

}  // namespace

struct Encoder::State {
  State(Method lhMethod, Effort effort)
      : method(RequireWritten(lhMethod)),
        buffer(method.windowBytes + kChunkBytes + MatchFinder::kReadAhead),
        finder(buffer.data(), method.windowBytes),
        parser(effort == Effort::best ? MakeOptimalParser() : MakeLazyParser(effort)) {}

  void WriteChunk(BlockPlace lastBlock);
  void SlideWindow();

  const LhMethod& method;
  // The window, then the chunk that is being collected.
  std::vector<std::uint8_t> buffer;
  std::size_t chunkBegin = 0;
  std::size_t chunkEnd = 0;
  MatchFinder finder;
  std::unique_ptr<Parser> parser;
  std::vector<Item> items;
  BlockSplitter splitter;
  BitWriter bits;
};

void Encoder::State::WriteChunk(BlockPlace lastBlock) {
  if (chunkBegin == chunkEnd) return;
  parser->Parse({buffer.data(), chunkBegin, chunkEnd}, finder, items);
  std::span<const Item> left = items;
  for (const Block& block : splitter.Split(items)) {
    const bool isLast = block.items == left.size();
    WriteBlock(method, left.first(block.items), block.counts,
               isLast ? lastBlock : BlockPlace::inside, bits);
    left = left.subspan(block.items);
  }
}

void Encoder::State::SlideWindow() {
  const std::size_t kept = std::min(method.windowBytes, chunkEnd);
  const std::size_t slide = chunkEnd - kept;
  std::memmove(buffer.data(), buffer.data() + slide, kept);
  finder.Slide(slide);
  chunkBegin = chunkEnd = kept;
}

Encoder::Encoder(Method method, Effort effort) {
  if (method == Method::Lh1) {
    lh1 = std::make_unique<Lh1Encoder>();
  } else {
    state = std::make_unique<State>(method, effort);
  }
}
Encoder::~Encoder() = default;
Encoder::Encoder(Encoder&&) noexcept = default;
Encoder& Encoder::operator=(Encoder&&) noexcept = default;

// A full chunk is written when more data comes, not before: the last block is not like the others.
void Encoder::Append(std::span<const std::uint8_t> data, std::vector<std::uint8_t>& packed) {
  if (lh1) return lh1->Append(data, packed);
  while (!data.empty()) {
    if (state->chunkEnd - state->chunkBegin == kChunkBytes) {
      state->WriteChunk(BlockPlace::inside);
      state->SlideWindow();
      state->bits.MoveTo(packed);
    }
    const std::size_t room = kChunkBytes - (state->chunkEnd - state->chunkBegin);
    const std::size_t piece = std::min(room, data.size());
    std::memcpy(state->buffer.data() + state->chunkEnd, data.data(), piece);
    state->chunkEnd += piece;
    data = data.subspan(piece);
  }
}

void Encoder::Finish(std::vector<std::uint8_t>& packed) {
  if (lh1) return lh1->Finish(packed);
  state->WriteChunk(BlockPlace::last);
  state->bits.Pad();
  state->bits.MoveTo(packed);
  state->finder.Reset();
  state->chunkBegin = state->chunkEnd = 0;
}

bool CanEncode(Method method) {
  return method == Method::Lh1 || FindWritten(method) != nullptr;
}

std::vector<std::uint8_t> Encode(Method method, std::span<const std::uint8_t> data, Effort effort) {
  Encoder encoder(method, effort);
  std::vector<std::uint8_t> packed;
  encoder.Append(data, packed);
  encoder.Finish(packed);
  return packed;
}

}  // namespace kozor::codec
