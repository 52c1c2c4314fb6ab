// MemberPacker.h - packs new members into an archive, in order, on several threads.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "engine/codec/Codec.h"
#include "engine/commands/CommandLine.h"
#include "engine/commands/PackInput.h"
#include "engine/commands/Progress.h"
#include "engine/commands/SegmentQueue.h"
#include "engine/container/ArchiveUpdate.h"
#include "engine/container/HeaderWriter.h"

namespace kozor::commands {

// The largest file that can be added.  Header sizes have 32 bits, and callers that unpack a member
// into a mapped file reserve up to 1 KiB more than its size.
inline constexpr std::uint64_t kMaxMemberBytes = 0xFFFFFFFF - 1024;

// One run over the new members of an archive.  Members are read ahead of those being written, but
// everything visible happens in order on the caller's thread: calls of `begin`, progress, writing,
// failures.  The archive's bytes don't depend on the number of threads.
//
// For each thread at most 2 MiB are read ahead, and its encoder takes up to 20 MiB.  A run of less
// than 1 MiB reads nothing ahead and starts no threads.
class MemberPacker {
 public:
  // Called when it is the member's turn, before any of its progress.
  using Begin = std::function<void()>;

  MemberPacker(const PackSettings& packSettings, container::ArchiveUpdate& archiveUpdate,
               Progress& told, SegmentPacker& callersPacker);

  // Adds a member; `member` holds its name, time and attribute.  `expectedBytes` is the probable
  // length of the input.  If packing doesn't make a member smaller, it is stored instead; a long
  // input is then read a second time.
  //
  // This and Finish throw ResultCode::UnknownKind if an input is longer than kMaxMemberBytes, and
  // what input, output, progress and `begin` throw.
  void Add(container::NewMember member, std::unique_ptr<PackInput> input,
           std::uint64_t expectedBytes, Begin begin);
  // Writes the members that are still pending.
  void Finish();
  // The same for a run that ends with a failure, including one from Add: members read before it are
  // still written, unless writing them was what failed.
  void FinishBeforeFailure();

  // The packed size of the member written last.
  std::uint64_t LastPackedBytes() const { return lastPackedBytes; }

 private:
  struct Member {
    container::NewMember header;
    std::unique_ptr<PackInput> input;
    Begin begin;
    std::uint64_t headerOffset = 0;
    std::uint64_t dataOffset = 0;
    std::uint64_t done = 0;  // bytes of the original written so far
    codec::BitWriter bits;   // bits of an incomplete byte
  };
  // One step of the ordered output: a member begins, or a segment of it is written.
  struct Step {
    std::shared_ptr<Member> member;
    std::unique_ptr<PackJob> job;  // null for the beginning
    std::size_t heldBytes = 0;
  };

  bool IsPackedInSegments() const { return historyBytes != 0; }
  void ReadMember(const std::shared_ptr<Member>& member, std::uint64_t expectedBytes);
  void ReadSegment(Member& member, PackJob& job, std::uint64_t expectedBytes);
  std::unique_ptr<PackJob> TakeJob();
  void GiveBack(std::unique_ptr<PackJob> job);
  void PutStep(std::shared_ptr<Member> member, std::unique_ptr<PackJob> job);

  void DoFirstStep();
  void BeginMember(Member& member);
  void WriteSegment(Member& member, PackJob& job);
  void EndMember(Member& member, const PackJob& lastJob);
  void StoreInstead(Member& member, const PackJob& lastJob);
  void ReportUpTo(Member& member, std::uint64_t done);

  const PackSettings settings;
  const std::size_t historyBytes;  // 0 for methods that are not packed in segments
  const unsigned threads;
  container::ArchiveUpdate& update;
  Progress& progress;

  std::uint64_t bytesRead = 0;
  bool isWide = false;  // reads ahead
  std::size_t heldBytes = 0;
  bool hasFailed = false;
  std::uint64_t lastPackedBytes = 0;
  std::vector<std::uint8_t> packed;
  std::optional<codec::Encoder> serialEncoder;  // of a method that is not packed in segments
  std::vector<std::unique_ptr<PackJob>> idleJobs;
  std::deque<Step> steps;
  SegmentQueue queue;  // declared last: its threads must end before their jobs
};

}  // namespace kozor::commands
