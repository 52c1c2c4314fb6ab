// DecodeJob.h - what every decoder is given, and what they share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "engine/codec/Codec.h"

namespace kozor::codec {

// One member on its way from packed to original bytes.  `done` counts the bytes unpacked so far; a
// decoder brings it up to date before it reports and before it returns.
struct DecodeJob {
  std::span<const std::uint8_t> packed;
  std::span<std::uint8_t> target;
  const Progress& progress;
  std::size_t done = 0;

  bool IsFull() const { return done == target.size(); }

  // Where to report next.  Half of what is promised to the caller, since a decoder may run past it
  // by one match.
  static constexpr std::size_t kReportEvery = std::size_t{128} * 1024;
  std::size_t NextReport() const {
    return target.size() - done > kReportEvery ? done + kReportEvery : target.size();
  }
  // False if the caller wants to stop.
  bool Report() const { return !progress || progress(done); }
};

// Unpacks a whole job.  One function per method, or per family of methods; Decode.cpp lists them.
using Decoder = Status (*)(DecodeJob& job);

Status DecodeStored(DecodeJob& job);

}  // namespace kozor::codec
