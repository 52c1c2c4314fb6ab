// AdaptiveDecoder.cpp - unpacks lh1 and lh2, which use adaptive Huffman codes.
#include <array>
#include <cstddef>
#include <cstdint>

#include "engine/codec/AdaptiveCode.h"
#include "engine/codec/BitReader.h"
#include "engine/codec/Decoders.h"
#include "engine/codec/HuffmanTable.h"
#include "engine/codec/Lh1Format.h"
#include "engine/codec/MatchCopy.h"

namespace kozor::codec {
namespace {

constexpr unsigned kLowBits = kLh1LowBits;  // of an offset, sent uncoded

// lh1: 58 match lengths, and 12-bit offsets whose upper half has a fixed code.
class Lh1Scheme {
 public:
  static constexpr unsigned kSymbols = kLh1Symbols;

  Lh1Scheme() {
    std::array<std::uint8_t, kLh1DistanceSymbols> lengths;
    FillLh1DistanceLengths(lengths);
    distanceCode.Build(lengths);
  }

  static std::size_t TakeLength(BitReader&, unsigned symbol) { return symbol - kLh1SymbolOfLength; }
  unsigned TakeUpperOffset(BitReader& in, std::size_t) { return distanceCode.Decode(in); }

 private:
  HuffmanTable<kLh1DistanceSymbols, 8> distanceCode;
};

#ifndef KOZOR_SMALL_CODEC

// lh2: longer matches, and 13-bit offsets.  Their upper part has an adaptive code too, which gains
// a symbol for every 64 bytes unpacked.
class Lh2Scheme {
 public:
  static constexpr unsigned kSymbols = 286;

  Lh2Scheme() { distanceCode.BeginWith(0); }

  static std::size_t TakeLength(BitReader& in, unsigned symbol) {
    constexpr unsigned kLongSymbol = 285;
    return symbol == kLongSymbol ? 32 + in.Take(8) : symbol - kLh1SymbolOfLength;
  }

  unsigned TakeUpperOffset(BitReader& in, std::size_t done) {
    for (; known < kDistanceSymbols && done > std::size_t{known} << kLowBits; ++known) {
      distanceCode.Add(known);
    }
    return distanceCode.Decode(in);
  }

 private:
  static constexpr unsigned kDistanceSymbols = 128;
  AdaptiveCode<kDistanceSymbols> distanceCode;
  unsigned known = 1;  // symbols in the code
};

#endif

template <typename Scheme>
Status DecodeAdaptive(DecodeJob& job) {
  AdaptiveCode<Scheme::kSymbols> itemCode;
  itemCode.BeginWithAll();
  Scheme scheme;
  BitReader in(job.packed);
  return job.Run([&](std::size_t limit) {
    while (job.done < limit) {
      in.Refill();
      const unsigned symbol = itemCode.Decode(in);
      if (symbol < kLiteralSymbols) {
        job.target[job.done++] = static_cast<std::uint8_t>(symbol);
      } else {
        const std::size_t length = Scheme::TakeLength(in, symbol);
        in.Refill();
        const std::size_t upper = scheme.TakeUpperOffset(in, job.done);
        const std::size_t offset = upper << kLowBits | in.Take(kLowBits);
        job.done = CopyMatch(job.target, job.done, offset + 1, length);
      }
      if (in.IsFarPastEnd()) return Status::Truncated;
    }
    return Status::Ok;
  });
}

}  // namespace

Status DecodeLh1(DecodeJob& job) {
  return DecodeAdaptive<Lh1Scheme>(job);
}

#ifndef KOZOR_SMALL_CODEC
Status DecodeLh2(DecodeJob& job) {
  return DecodeAdaptive<Lh2Scheme>(job);
}
#endif

}  // namespace kozor::codec
