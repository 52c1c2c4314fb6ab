// Decoders.h - the decoders and their common argument.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

#include "engine/codec/Codec.h"

namespace kozor::codec {

// One member being unpacked.  `done` counts the bytes unpacked so far; a decoder updates it before
// it reports and before it returns.
struct DecodeJob {
  const PackedPieces& packed;
  std::span<std::uint8_t> target;
  const Progress& progress;
  std::size_t done = 0;

  bool IsFull() const { return done == target.size(); }

  // Unpacks the whole job in stretches, with a report before each.  `decodeUpTo(limit)` unpacks
  // until `done` reaches `limit` or exceeds it by less than one item.
  template <typename DecodeUpTo>
  Status Run(DecodeUpTo decodeUpTo) {
    // Half of the documented interval, because a decoder may overshoot.
    constexpr std::size_t kReportEvery = std::size_t{128} * 1024;
    do {
      if (progress && !progress(done)) return Status::Cancelled;
      const Status status = decodeUpTo(done + std::min(kReportEvery, target.size() - done));
      if (status != Status::Ok) return status;
    } while (!IsFull());
    return Status::Ok;
  }
};

// Unpacks a whole job.  The table in Decode.cpp assigns decoders to methods.
using Decoder = Status (*)(DecodeJob& job);

// Decode.cpp: copies data that isn't packed.
Status DecodeStored(DecodeJob& job);

// BlockDecoder.cpp: blocks of items, each with its own Huffman codes.
Status DecodeLh3(DecodeJob& job);
Status DecodeLh4(DecodeJob& job);
Status DecodeLh5(DecodeJob& job);
Status DecodeLh6(DecodeJob& job);
Status DecodeLh7(DecodeJob& job);
Status DecodeLhx(DecodeJob& job);
Status DecodeLk7(DecodeJob& job);

// AdaptiveDecoder.cpp: adaptive Huffman codes.
Status DecodeLh1(DecodeJob& job);
Status DecodeLh2(DecodeJob& job);

// PlainDecoder.cpp: uncoded literals and matches.
Status DecodeLzs(DecodeJob& job);
Status DecodeLz5(DecodeJob& job);

// RecencyDecoder.cpp: literals as positions in a move-to-front list.
Status DecodePm1(DecodeJob& job);
Status DecodePm2(DecodeJob& job);

}  // namespace kozor::codec
