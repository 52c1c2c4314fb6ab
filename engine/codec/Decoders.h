// Decoders.h - what every decoder is given, and the list of them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

#include "engine/codec/Codec.h"

namespace kozor::codec {

// One member on its way from packed to original bytes.  `done` counts the bytes unpacked so far; a
// decoder brings it up to date before it reports and before it returns.
struct DecodeJob {
  const PackedPieces& packed;
  std::span<std::uint8_t> target;
  const Progress& progress;
  std::size_t done = 0;

  bool IsFull() const { return done == target.size(); }

  // Unpacks the whole job in stretches, with a report before each.  `decodeUpTo(limit)` unpacks
  // until `done` is at `limit` or, by one item, beyond it.
  template <typename DecodeUpTo>
  Status Run(DecodeUpTo decodeUpTo) {
    // Half of what is promised to the caller, since a decoder may overshoot.
    constexpr std::size_t kReportEvery = std::size_t{128} * 1024;
    do {
      if (progress && !progress(done)) return Status::Cancelled;
      const Status status = decodeUpTo(done + std::min(kReportEvery, target.size() - done));
      if (status != Status::Ok) return status;
    } while (!IsFull());
    return Status::Ok;
  }
};

// A decoder unpacks a whole job.  MethodTable.cpp says which method is whose.
using Decoder = Status (*)(DecodeJob& job);

// StoredDecoder: nothing is packed.
Status DecodeStored(DecodeJob& job);

// BlockDecoder.cpp: items in blocks, each with Huffman codes of its own.
Status DecodeLh3(DecodeJob& job);
Status DecodeLh4(DecodeJob& job);
Status DecodeLh5(DecodeJob& job);
Status DecodeLh6(DecodeJob& job);
Status DecodeLh7(DecodeJob& job);
Status DecodeLhx(DecodeJob& job);
Status DecodeLk7(DecodeJob& job);

// AdaptiveDecoder.cpp: Huffman codes that follow what has been sent.
Status DecodeLh1(DecodeJob& job);
Status DecodeLh2(DecodeJob& job);

// PlainDecoder.cpp: literals and matches without any code.
Status DecodeLzs(DecodeJob& job);
Status DecodeLz5(DecodeJob& job);

// RecencyDecoder.cpp: literals by how recently they were last seen.
Status DecodePm1(DecodeJob& job);
Status DecodePm2(DecodeJob& job);

}  // namespace kozor::codec
