// SegmentQueue.h - packs segments of members on several threads.
//
// The threads touch nothing but the memory of their segments: reading, writing and progress stay on
// the caller's thread, which packs segments, too, whenever it would have to wait.
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

// A segment of a member: its original bytes after those that its matches may refer to, and its
// packed bits once it is done.
struct PackJob {
  std::unique_ptr<std::uint8_t[]> buffer;
  std::size_t capacity = 0;
  std::size_t begin = 0;  // of the segment in the buffer
  std::size_t end = 0;
  codec::SegmentPlace place = codec::SegmentPlace::Inside;

  codec::BitWriter packed;
  std::exception_ptr error;

  enum class State { Waiting, Running, Done };
  State state = State::Waiting;  // guarded by the queue once the job is in one

  std::span<const std::uint8_t> Original() const { return {buffer.get() + begin, end - begin}; }
  // Makes room for that many bytes and keeps the first `end`.
  void Reserve(std::size_t bytes);
};

// An encoder and what it takes besides; one for each thread.
class SegmentPacker {
 public:
  // Sets `packed` or `error`.
  void Pack(PackJob& job, codec::Method method, int level) noexcept;

 private:
  std::optional<codec::SegmentEncoder> encoder;
  codec::Method encoderMethod{};
  int encoderLevel = 0;
  codec::BitWriter bits;
};

class SegmentQueue {
 public:
  // `callersPacker` serves the caller's thread; it is kept from run to run.
  SegmentQueue(codec::Method packedMethod, int packedLevel, unsigned threadCount,
               SegmentPacker& callersPacker)
      : method(packedMethod), level(packedLevel), threads(threadCount), own(callersPacker) {}
  // Forgets jobs that wait and returns when no thread is left.
  ~SegmentQueue();
  SegmentQueue(const SegmentQueue&) = delete;
  SegmentQueue& operator=(const SegmentQueue&) = delete;

  // Hands a job to the threads, of which one more is started if all are busy.
  void Put(PackJob& job);
  // Returns when the job, the oldest one that was put and not yet completed, is done.  Packs others
  // meanwhile.  Throws what the packing threw.
  void Complete(PackJob& job);
  // Packs a job that was not put.
  void PackHere(PackJob& job);

 private:
  void Work();

  const codec::Method method;
  const int level;
  const unsigned threads;  // the caller's among them
  SegmentPacker& own;

  std::mutex mutex;
  std::condition_variable jobCame;
  std::condition_variable jobDone;
  std::deque<PackJob*> waiting;
  unsigned idle = 0;  // threads that wait for a job
  bool isStopping = false;
  std::vector<std::thread> workers;
};

}  // namespace kozor::commands
