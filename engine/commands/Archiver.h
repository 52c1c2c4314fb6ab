// Archiver.h - what the archiver does: the commands, the two memory calls, and opening for
// searches.
//
// One object serves a process.  It remembers the archives used last and keeps its encoder; an
// archive is open only while a call works on it.  Every operation throws a container::Failure where
// it cannot go on, and leaves the archive as it was then.  Command lines and codes:
// docs/archiver.md.
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

// What a memory extraction delivers besides the bytes.
struct ExtractedMember {
  std::int32_t unixTime = 0;    // last write, seconds since 1970 in UTC, 0 to 0x7FFFFFFF
  std::uint16_t attribute = 0;  // DOS bits
  std::uint32_t written = 0;    // bytes in the buffer
};

// What a memory compression is told besides the name.
struct MemoryMember {
  std::span<const std::uint8_t> data;
  std::optional<std::int32_t> unixTime;    // the present moment without it
  std::optional<std::uint16_t> attribute;  // archive without it
};

// The index of an archive may be asked for on several threads; all else is for one at a time.
class Archiver {
 public:
  // Carries a command line out: `a`, `d` or `s -gw4`.  Throws ResultCode::UnknownCommand for
  // others.
  void Run(std::string_view text, const ProgressListener& listener);

  // Unpacks the member that the line names.  What has been delivered stands in `result` also when
  // this throws: ResultCode::NotFound, ResultCode::NotEnoughMemory when the buffer is too small for
  // the member, ResultCode::CrcMismatch, ResultCode::PackedDataDamaged,
  // ResultCode::MethodNotSupported, ResultCode::Cancelled, and what the reading of the archive
  // throws.
  void ExtractToMemory(std::string_view text, std::span<std::uint8_t> buffer,
                       const ProgressListener& listener, ExtractedMember& result);

  // Adds a member, or replaces the one of that name.  Returns its packed size.
  std::uint32_t CompressFromMemory(std::string_view text, const MemoryMember& memory,
                                   const ProgressListener& listener);

  std::shared_ptr<const container::ArchiveIndex> IndexOf(const std::string& archive) {
    return indexes.Get(archive);
  }

 private:
  void Add(const CommandLine& line, const ProgressListener& listener);
  void Delete(const CommandLine& line, const ProgressListener& listener);
  void Convert(const CommandLine& line, const ProgressListener& listener);

  container::IndexCache indexes;
  SegmentPacker segmentPacker;
};

}  // namespace kozor::commands
