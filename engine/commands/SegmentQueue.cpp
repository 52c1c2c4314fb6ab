// SegmentQueue.cpp - see SegmentQueue.h.
#include "engine/commands/SegmentQueue.h"

#include <algorithm>
#include <system_error>

namespace kozor::commands {

void PackJob::Reserve(std::size_t bytes) {
  if (bytes <= capacity) return;
  auto larger = std::make_unique_for_overwrite<std::uint8_t[]>(bytes);
  std::copy_n(buffer.get(), end, larger.get());
  buffer = std::move(larger);
  capacity = bytes;
}

// The encoder reserves room for the worst case; copying the bits lets a job keep only what it
// needs.
void SegmentPacker::Pack(PackJob& job, codec::Method method, int level) noexcept {
  try {
    if (!encoder || encoderMethod != method || encoderLevel != level) {
      encoder.emplace(method, level);
      encoderMethod = method;
      encoderLevel = level;
    }
    bits.Clear();
    encoder->Encode({job.buffer.get(), job.end}, job.begin, job.place, bits);
    job.packed.Append(bits);
  } catch (...) {
    job.error = std::current_exception();
  }
}

SegmentQueue::~SegmentQueue() {
  {
    const std::lock_guard lock(mutex);
    isStopping = true;
    waiting.clear();
  }
  jobCame.notify_all();
  for (std::thread& worker : workers) worker.join();
}

void SegmentQueue::Put(PackJob& job) {
  bool isThreadMissing = false;
  {
    const std::lock_guard lock(mutex);
    job.state = PackJob::State::Waiting;
    waiting.push_back(&job);
    isThreadMissing = waiting.size() > idle && workers.size() + 1 < threads;
  }
  jobCame.notify_one();
  if (!isThreadMissing) return;
  try {
    workers.emplace_back([this] { Work(); });
  } catch (const std::system_error&) {
    // The system allows no more threads; the existing ones do the work.
  }
}

void SegmentQueue::Work() {
  SegmentPacker packer;
  std::unique_lock lock(mutex);
  for (;;) {
    ++idle;
    jobCame.wait(lock, [&] { return isStopping || !waiting.empty(); });
    --idle;
    if (isStopping) return;
    PackJob& job = *waiting.front();
    waiting.pop_front();
    job.state = PackJob::State::Running;
    lock.unlock();
    packer.Pack(job, method, level);
    lock.lock();
    job.state = PackJob::State::Done;
    jobDone.notify_one();
  }
}

void SegmentQueue::Complete(PackJob& job) {
  std::unique_lock lock(mutex);
  while (job.state != PackJob::State::Done) {
    if (waiting.empty()) {
      jobDone.wait(lock);
      continue;
    }
    PackJob& next = *waiting.front();
    waiting.pop_front();
    next.state = PackJob::State::Running;
    lock.unlock();
    own.Pack(next, method, level);
    lock.lock();
    next.state = PackJob::State::Done;
  }
  if (job.error) std::rethrow_exception(job.error);
}

void SegmentQueue::PackHere(PackJob& job) {
  own.Pack(job, method, level);
  if (job.error) std::rethrow_exception(job.error);
}

}  // namespace kozor::commands
