// Lh1Encoder.cpp - see Lh1Encoder.h.
//
// The window is small, so plain hash chains find the longest match in few steps.  Lazy parsing: a
// match is dropped for a literal if a longer one begins at the next byte.
#include "engine/codec/Lh1Encoder.h"

#include <algorithm>
#include <cstring>

#include "engine/codec/HuffmanLengths.h"

namespace kozor::codec {
namespace {

constexpr std::size_t kChunkBytes = std::size_t{64} * 1024;
// The bytes that a decision needs: a match, or one that begins a byte later.
constexpr std::size_t kLookAhead = kLh1LongestMatch + 1;
constexpr std::size_t kShortestMatch = 3;
// A match of three bytes at a longer distance takes more bits than three literals.
constexpr std::size_t kFarForShortest = 512;
constexpr unsigned kMostCandidates = 128;
constexpr unsigned kHashBits = 13;

std::size_t HashOf(const std::uint8_t* at) {
  const std::uint32_t bytes =
      std::uint32_t{at[0]} | std::uint32_t{at[1]} << 8 | std::uint32_t{at[2]} << 16;
  return bytes * 0x9E3779B1U >> (32 - kHashBits);
}

}  // namespace

Lh1Encoder::Lh1Encoder()
    : buffer(kLh1WindowBytes + kChunkBytes),
      newest(std::size_t{1} << kHashBits),
      older(kLh1WindowBytes) {
  FillLh1DistanceLengths(distanceLengths);
  AssignCodes(distanceLengths, distanceCodes);
  Begin();
}

void Lh1Encoder::Begin() {
  next = end = 0;
  std::ranges::fill(newest, 0U);
  itemCode.BeginWithAll();
}

void Lh1Encoder::Append(std::span<const std::uint8_t> data, std::vector<std::uint8_t>& packed) {
  while (!data.empty()) {
    if (end == buffer.size()) {
      Pack(end - kLookAhead);
      Slide();
      bits.MoveTo(packed);
    }
    const std::size_t piece = std::min(buffer.size() - end, data.size());
    std::memcpy(buffer.data() + end, data.data(), piece);
    end += piece;
    data = data.subspan(piece);
  }
}

void Lh1Encoder::Finish(std::vector<std::uint8_t>& packed) {
  Pack(end);
  bits.Pad();
  bits.MoveTo(packed);
  Begin();
}

// Packs items that begin before `stop`; the last one may end after it.
void Lh1Encoder::Pack(std::size_t stop) {
  if (next >= stop) return;
  constexpr std::size_t kMostItemBits = AdaptiveCode<kLh1Symbols>::kLongestBits + 8 + kLh1LowBits;
  bits.Reserve((stop - next) * kMostItemBits);
  Match match = Longest(next);
  while (next < stop) {
    Enter(next);
    const Match later = next + 1 < end ? Longest(next + 1) : Match{};
    if (match.length == 0 || later.length > match.length) {
      PutSymbol(buffer[next++]);
      match = later;
      continue;
    }
    PutMatch(match);
    for (std::size_t at = next + 1; at < next + match.length; ++at) Enter(at);
    next += match.length;
    match = next < end ? Longest(next) : Match{};
  }
}

// Moves the data down, keeping the window before the next byte, and drops positions outside it.
void Lh1Encoder::Slide() {
  const std::size_t gone = (next - kLh1WindowBytes) / kLh1WindowBytes * kLh1WindowBytes;
  std::memmove(buffer.data(), buffer.data() + gone, end - gone);
  next -= gone;
  end -= gone;
  const auto slide = [&](std::uint32_t& position) {
    position = position > gone ? static_cast<std::uint32_t>(position - gone) : 0;
  };
  std::ranges::for_each(newest, slide);
  std::ranges::for_each(older, slide);
}

// The longest match, at the smallest distance.
Lh1Encoder::Match Lh1Encoder::Longest(std::size_t at) const {
  const std::size_t most = std::min(kLh1LongestMatch, end - at);
  Match longest;
  if (most < kShortestMatch) return longest;
  const std::uint8_t* const data = buffer.data() + at;
  std::size_t candidate = newest[HashOf(data)];
  for (unsigned left = kMostCandidates; candidate != 0 && left != 0; --left) {
    const std::size_t distance = at - (candidate - 1);
    if (distance > kLh1WindowBytes) break;
    const std::uint8_t* const earlier = data - distance;
    // This byte rules out most candidates that aren't longer.
    if (earlier[longest.length] == data[longest.length]) {
      const auto length =
          static_cast<std::size_t>(std::mismatch(data, data + most, earlier).first - data);
      if (length > longest.length) longest = {length, distance};
      if (length == most) break;
    }
    candidate = older[(candidate - 1) % kLh1WindowBytes];
  }
  const bool isWorthless = longest.length < kShortestMatch ||
                           (longest.length == kShortestMatch && longest.distance > kFarForShortest);
  return isWorthless ? Match{} : longest;
}

void Lh1Encoder::Enter(std::size_t at) {
  if (end - at < kShortestMatch) return;
  std::uint32_t& first = newest[HashOf(buffer.data() + at)];
  older[at % kLh1WindowBytes] = first;
  first = static_cast<std::uint32_t>(at + 1);
}

void Lh1Encoder::PutSymbol(unsigned symbol) {
  const auto code = itemCode.CodeOf(symbol);
  bits.Put(code.bits, code.count);
  itemCode.Count(symbol);
}

void Lh1Encoder::PutMatch(const Match& match) {
  const std::size_t offset = match.distance - 1;
  const std::size_t upper = offset >> kLh1LowBits;
  PutSymbol(static_cast<unsigned>(match.length) + kLh1SymbolOfLength);
  bits.Put(distanceCodes[upper], distanceLengths[upper]);
  bits.Put(offset & ((1U << kLh1LowBits) - 1), kLh1LowBits);
}

}  // namespace kozor::codec
