// MemberPacker.cpp - see MemberPacker.h.
#include "engine/commands/MemberPacker.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace kozor::commands {
namespace {

using container::Failure;
using container::NewMember;
using container::ResultCode;

// A smaller run ends before threads would help.
constexpr std::uint64_t kNarrowBytes = std::uint64_t{1} << 20;
// Limits of reading ahead, per thread.
constexpr std::size_t kHeldBytes = std::size_t{2} << 20;
constexpr std::size_t kHeldSteps = 128;
constexpr unsigned kMostThreads = 64;

struct MethodNames {
  codec::Method method;
  container::MethodId id;
};

MethodNames NamesOf(NewMethod method) {
  switch (method) {
    case NewMethod::Lh1:
      return {codec::Method::Lh1, {'-', 'l', 'h', '1', '-'}};
    case NewMethod::Lh5:
      return {codec::Method::Lh5, {'-', 'l', 'h', '5', '-'}};
    case NewMethod::Lh6:
      return {codec::Method::Lh6, {'-', 'l', 'h', '6', '-'}};
    case NewMethod::Lh7:
      return {codec::Method::Lh7, {'-', 'l', 'h', '7', '-'}};
    case NewMethod::Stored:
      break;
  }
  return {codec::Method::Lh0, container::kStoredMethod};
}

unsigned ThreadsFor(const PackSettings& settings, std::size_t historyBytes) {
  if (historyBytes == 0) return 1;
  const unsigned wanted =
      settings.threads != 0 ? settings.threads : std::thread::hardware_concurrency();
  return std::clamp(wanted, 1U, kMostThreads);
}

// Updates size and CRC for bytes that were read.
void Count(NewMember& header, std::span<const std::uint8_t> bytes) {
  header.originalBytes += bytes.size();
  if (header.originalBytes > kMaxMemberBytes) throw Failure(ResultCode::UnknownKind);
  header.crc = codec::Crc16(bytes, header.crc);
}

}  // namespace

MemberPacker::MemberPacker(const PackSettings& packSettings,
                           container::ArchiveUpdate& archiveUpdate, Progress& told,
                           SegmentPacker& callersPacker)
    : settings(packSettings),
      historyBytes(codec::HistoryBytes(NamesOf(settings.method).method)),
      threads(ThreadsFor(settings, historyBytes)),
      update(archiveUpdate),
      progress(told),
      queue(NamesOf(settings.method).method, settings.level, threads, callersPacker) {}

void MemberPacker::Add(NewMember member, std::unique_ptr<PackInput> input,
                       std::uint64_t expectedBytes, Begin begin) {
  isWide = threads > 1 && bytesRead + expectedBytes >= kNarrowBytes;
  auto added = std::make_shared<Member>();
  added->header = std::move(member);
  added->header.originalBytes = 0;
  added->header.crc = 0;
  added->header.method = NamesOf(settings.method).id;
  added->input = std::move(input);
  added->begin = std::move(begin);
  PutStep(added, nullptr);
  ReadMember(added, expectedBytes);
}

// Whether a segment is the last one is known only after the next one has been read.
void MemberPacker::ReadMember(const std::shared_ptr<Member>& member, std::uint64_t expectedBytes) {
  auto job = TakeJob();
  ReadSegment(*member, *job, expectedBytes);
  while (job->end - job->begin == codec::kSegmentBytes) {
    auto next = TakeJob();
    const std::size_t kept = std::min(historyBytes, job->end);
    next->Reserve(kept + codec::kSegmentBytes);
    std::copy_n(job->buffer.get() + job->end - kept, kept, next->buffer.get());
    next->begin = next->end = kept;
    ReadSegment(*member, *next, codec::kSegmentBytes);
    if (next->end == next->begin) {
      GiveBack(std::move(next));
      break;
    }
    PutStep(member, std::exchange(job, std::move(next)));
  }
  job->place = codec::SegmentPlace::Last;
  // A member of one segment stays in memory until it is written.
  if (job->end == member->header.originalBytes) member->input.reset();
  PutStep(member, std::move(job));
}

void MemberPacker::ReadSegment(Member& member, PackJob& job, std::uint64_t expectedBytes) {
  // A file of known size is read up to that size, without a further call for its end; what someone
  // appends meanwhile is left out.  The size 0 may mean that the system doesn't know it.
  const bool isKnown = expectedBytes != 0;
  auto wanted =
      static_cast<std::size_t>(std::clamp<std::uint64_t>(expectedBytes, 1, codec::kSegmentBytes));
  for (;;) {
    job.Reserve(job.begin + wanted);
    const std::span<std::uint8_t> target(job.buffer.get() + job.end, job.begin + wanted - job.end);
    const std::size_t read = member.input->Read(target);
    Count(member.header, target.first(read));
    job.end += read;
    bytesRead += read;
    if (isKnown || read < target.size() || wanted == codec::kSegmentBytes) return;
    wanted = codec::kSegmentBytes;
  }
}

std::unique_ptr<PackJob> MemberPacker::TakeJob() {
  if (idleJobs.empty()) return std::make_unique<PackJob>();
  auto job = std::move(idleJobs.back());
  idleJobs.pop_back();
  return job;
}

// Keeps buffers for later segments, but no more than are read ahead.
void MemberPacker::GiveBack(std::unique_ptr<PackJob> job) {
  if (idleJobs.size() * codec::kSegmentBytes >= kHeldBytes * threads) return;
  job->begin = job->end = 0;
  job->place = codec::SegmentPlace::Inside;
  job->packed.Clear();
  idleJobs.push_back(std::move(job));
}

void MemberPacker::PutStep(std::shared_ptr<Member> member, std::unique_ptr<PackJob> job) {
  steps.push_back({std::move(member), std::move(job)});
  Step& step = steps.back();
  if (step.job && IsPackedInSegments()) {
    step.heldBytes = step.job->capacity;
    heldBytes += step.heldBytes;
    if (isWide) {
      queue.Put(*step.job);
    } else {
      step.job->state = PackJob::State::Done;  // packed here, not by a thread
      queue.PackHere(*step.job);
    }
  }
  while (!steps.empty() &&
         (!isWide || heldBytes > kHeldBytes * threads || steps.size() > kHeldSteps * threads)) {
    DoFirstStep();
  }
}

void MemberPacker::Finish() {
  while (!steps.empty()) DoFirstStep();
}

void MemberPacker::FinishBeforeFailure() {
  if (!hasFailed) Finish();
}

void MemberPacker::DoFirstStep() {
  Step step = std::move(steps.front());
  steps.pop_front();
  heldBytes -= step.heldBytes;
  hasFailed = true;
  if (step.job) {
    if (IsPackedInSegments()) queue.Complete(*step.job);
    WriteSegment(*step.member, *step.job);
    GiveBack(std::move(step.job));
  } else {
    BeginMember(*step.member);
  }
  hasFailed = false;
}

void MemberPacker::BeginMember(Member& member) {
  member.begin();
  member.headerOffset = update.Output().Position();
  update.Output().Write(container::BuildHeader(member.header));  // reserves its space
  member.dataOffset = update.Output().Position();
}

void MemberPacker::WriteSegment(Member& member, PackJob& job) {
  const bool isLast = job.place == codec::SegmentPlace::Last;
  packed.clear();
  if (IsPackedInSegments()) {
    member.bits.Append(job.packed);
    if (isLast) member.bits.Pad();
    member.bits.MoveTo(packed);
    update.Output().Write(packed);
  } else if (settings.method == NewMethod::Stored) {
    update.Output().Write(job.Original());
  } else {
    if (!serialEncoder) serialEncoder.emplace(NamesOf(settings.method).method, settings.level);
    serialEncoder->Append(job.Original(), packed);
    if (isLast) serialEncoder->Finish(packed);
    update.Output().Write(packed);
  }
  ReportUpTo(member, member.done + job.Original().size());
  if (isLast) EndMember(member, job);
}

void MemberPacker::EndMember(Member& member, const PackJob& lastJob) {
  const bool isStored = settings.method == NewMethod::Stored;
  if (!isStored && update.Output().Position() - member.dataOffset >= member.header.originalBytes) {
    StoreInstead(member, lastJob);
  }
  lastPackedBytes = member.header.packedBytes = update.Output().Position() - member.dataOffset;
  update.Output().Overwrite(member.headerOffset, container::BuildHeader(member.header));
  progress.End(member.header.originalBytes);
}

void MemberPacker::StoreInstead(Member& member, const PackJob& lastJob) {
  update.Output().TakeBack(member.dataOffset);
  member.header.method = container::kStoredMethod;
  if (!member.input) {
    update.Output().Write(lastJob.Original());
    return;
  }
  member.input->Rewind();
  member.header.originalBytes = 0;
  member.header.crc = 0;
  member.done = 0;
  packed.resize(kProgressStep);
  for (std::size_t read = packed.size(); read == packed.size();) {
    read = member.input->Read(packed);
    const std::span bytes = std::span(packed).first(read);
    Count(member.header, bytes);
    update.Output().Write(bytes);
    ReportUpTo(member, member.header.originalBytes);
  }
}

void MemberPacker::ReportUpTo(Member& member, std::uint64_t done) {
  while (member.done < done) {
    member.done += std::min<std::uint64_t>(kProgressStep, done - member.done);
    progress.Report(member.done);
  }
}

}  // namespace kozor::commands
