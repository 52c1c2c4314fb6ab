// Archiver.h - the archiver's operations: the commands, the two memory calls, and opening for
// searches.
//
// One object serves a process.  It caches the indexes of the archives used last and its encoder.
// Every operation throws a container::Failure if it fails, and then leaves the archive unchanged.
// Command lines and codes: docs/archiver.md.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "engine/commands/CommandLine.h"
#include "engine/commands/Progress.h"
#include "engine/commands/SegmentQueue.h"
#include "engine/container/IndexCache.h"

namespace kozor::commands {

// The results of a memory extraction besides the bytes.
struct ExtractedMember {
  std::int32_t unixTime = 0;    // last write, seconds since 1970 in UTC, 0 to 0x7FFFFFFF
  std::uint16_t attribute = 0;  // DOS bits
  std::uint32_t written = 0;    // bytes in the buffer
};

// The arguments of a memory compression besides the name.
struct MemoryMember {
  std::span<const std::uint8_t> data;
  std::optional<std::int32_t> unixTime;    // default: the current time
  std::optional<std::uint16_t> attribute;  // default: archive
};

// Open may be called on several threads; everything else on one at a time.
class Archiver {
 public:
  // Runs a command line: `a`, `d` or `s -gw4`.  Throws ResultCode::UnknownCommand for others.
  void Run(std::string_view text, const ProgressListener& listener);

  // Unpacks the member that the line names.  Throws ResultCode::NotFound,
  // ResultCode::NotEnoughMemory if the buffer is too small for the member, ResultCode::CrcMismatch,
  // ResultCode::PackedDataDamaged, ResultCode::MethodNotSupported, ResultCode::Cancelled, and what
  // reading the archive throws.  `result` describes the bytes delivered even if this throws.
  void ExtractToMemory(std::string_view text, std::span<std::uint8_t> buffer,
                       const ProgressListener& listener, ExtractedMember& result);

  // Adds a member, or replaces the one of the same name.  Returns its packed size.
  std::uint32_t CompressFromMemory(std::string_view text, const MemoryMember& memory,
                                   const ProgressListener& listener);

  // Opens an archive for searches.  It stays open as long as the result, so reading its members
  // doesn't open it again.
  container::ReadArchive Open(const std::string& archive) { return indexes.Open(archive); }

  // An operation of several calls: between them, the archive read last stays open.
  void BeginOperation() { indexes.KeepOpen(true); }
  void EndOperation() { indexes.KeepOpen(false); }

 private:
  void Add(const CommandLine& line, const ProgressListener& listener);
  void Delete(const CommandLine& line, const ProgressListener& listener);
  void Convert(const CommandLine& line, const ProgressListener& listener);

  container::IndexCache indexes;
  SegmentPacker segmentPacker;
};

}  // namespace kozor::commands
