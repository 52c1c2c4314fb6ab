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

// The largest file that can be added.  The sizes of a header have 32 bits, and those who unpack a
// member into a mapped file reserve up to 1 KiB more than its size.
inline constexpr std::uint64_t kMaxMemberBytes = 0xFFFFFFFF - 1024;

// One run over the new members of an archive.  Members are read ahead of those that are written,
// but whatever can be seen from outside happens in their order and on the caller's thread: what
// `begin` does, progress, writing, and failures.  The archive's bytes do not depend on the number
// of threads.
//
// For each thread, at most 2 MiB are read ahead and 20 MiB serve an encoder.  A run of less than
// 1 MiB reads nothing ahead and starts no thread.
class MemberPacker {
 public:
  // Called when it is the member's turn, before any of its progress.
  using Begin = std::function<void()>;

  MemberPacker(const PackSettings& packSettings, container::ArchiveUpdate& archiveUpdate,
               Progress& told, SegmentPacker& callersPacker);

  // Adds a member; `member` holds its name, time and attribute.  `expectedBytes` is how long the
  // input probably is.  Packed data that came out no smaller than the original is replaced by the
  // original, for which a long input is read a second time.
  //
  // This and Finish throw ResultCode::UnknownKind when an input turns out to be longer than
  // kMaxMemberBytes, and what input, output, progress and `begin` throw.
  void Add(container::NewMember member, std::unique_ptr<PackInput> input,
           std::uint64_t expectedBytes, Begin begin);
  // Writes the members that are still under way.
  void Finish();
  // The same for a run that ends with a failure, also one that came out of Add: what was read
  // before it comes first, unless that was what failed.
  void FinishBeforeFailure();

  // Packed bytes of the member written last.
  std::uint64_t LastPackedBytes() const { return lastPackedBytes; }

 private:
  struct Member {
    container::NewMember header;
    std::unique_ptr<PackInput> input;
    Begin begin;
    std::uint64_t headerOffset = 0;
    std::uint64_t dataOffset = 0;
    std::uint64_t done = 0;  // bytes of the original that are written
    codec::BitWriter bits;   // those that don't make a whole byte yet
  };
  // What happens in order: a member begins, or a segment of it is written.
  struct Step {
    std::shared_ptr<Member> member;
    std::unique_ptr<PackJob> job;  // none at the beginning
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
  SegmentQueue queue;  // the last, so that its threads end before their jobs do
};

}  // namespace kozor::commands
