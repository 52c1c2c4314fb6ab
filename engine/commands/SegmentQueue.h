// SegmentQueue.h - packs segments of members on several threads.
//
// The threads use only the memory of their segments.  Reading, writing and progress stay on the
// caller's thread, which also packs segments instead of waiting.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <thread>
#include <vector>

#include "engine/codec/BitWriter.h"
#include "engine/codec/Codec.h"

namespace kozor::commands {

// A segment of a member: its history, its original bytes, and its packed bits when it is done.
struct PackJob {
  std::unique_ptr<std::uint8_t[]> buffer;
  std::size_t capacity = 0;
  std::size_t begin = 0;  // of the segment in the buffer
  std::size_t end = 0;
  codec::SegmentPlace place = codec::SegmentPlace::Inside;

  codec::BitWriter packed;
  std::exception_ptr error;

  enum class State { Waiting, Running, Done };
  State state = State::Waiting;  // guarded by the queue's mutex while queued

  std::span<const std::uint8_t> Original() const { return {buffer.get() + begin, end - begin}; }
  // Makes room for that many bytes; keeps the first `end` bytes.
  void Reserve(std::size_t bytes);
};

// An encoder with its buffer; one per thread.
class SegmentPacker {
 public:
  // Sets the job's `packed` or `error`.
  void Pack(PackJob& job, codec::Method method, int level) noexcept;

 private:
  std::optional<codec::SegmentEncoder> encoder;
  codec::Method encoderMethod{};
  int encoderLevel = 0;
  codec::BitWriter bits;
};

class SegmentQueue {
 public:
  // `callersPacker` serves the caller's thread; the caller keeps it from run to run.
  SegmentQueue(codec::Method packedMethod, int packedLevel, unsigned threadCount,
               SegmentPacker& callersPacker)
      : method(packedMethod), level(packedLevel), threads(threadCount), own(callersPacker) {}
  // Drops waiting jobs and joins all threads.
  ~SegmentQueue();
  SegmentQueue(const SegmentQueue&) = delete;
  SegmentQueue& operator=(const SegmentQueue&) = delete;

  // Queues a job; starts another thread if all are busy and the limit allows it.
  void Put(PackJob& job);
  // Returns when the job is done; it must be the oldest one not yet completed.  Packs others
  // meanwhile.  Rethrows what packing threw.
  void Complete(PackJob& job);
  // Packs a job that isn't queued.
  void PackHere(PackJob& job);

 private:
  void Work();

  const codec::Method method;
  const int level;
  const unsigned threads;  // including the caller's
  SegmentPacker& own;

  std::mutex mutex;
  std::condition_variable jobCame;
  std::condition_variable jobDone;
  std::deque<PackJob*> waiting;
  unsigned idle = 0;  // threads waiting for a job
  bool isStopping = false;
  std::vector<std::thread> workers;
};

}  // namespace kozor::commands
