// Progress.h - what a running command tells its caller, and how the caller stops it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "engine/container/Failure.h"

namespace kozor::commands {

// How much is done at most between two reports, in bytes.
inline constexpr std::size_t kProgressStep = 256 << 10;

struct ProgressEvent {
  enum class State { FileBegins, UnderWay, FileEnds };
  State state;
  std::string_view name;  // in the working code page; holds good during the call
  std::uint64_t size;     // of the file, in bytes
  std::uint64_t done;
};

// Returns false to stop the command.  May be empty.
using ProgressListener = std::function<bool(const ProgressEvent&)>;

// The reports of one file after the other.  All of them throw ResultCode::Cancelled as soon as the
// listener asks to stop.
class Progress {
 public:
  explicit Progress(const ProgressListener& told) : listener(told) {}

  // Also tells that nothing is done yet.
  void Begin(std::string_view fileName, std::uint64_t fileSize) {
    name = fileName;
    size = fileSize;
    Tell(ProgressEvent::State::FileBegins, 0);
    Report(0);
  }

  void Report(std::uint64_t done) { Tell(ProgressEvent::State::UnderWay, done); }

  // `finalSize` counts what was really read, which may differ from what the file had at first.
  void End(std::uint64_t finalSize) {
    size = finalSize;
    Tell(ProgressEvent::State::FileEnds, finalSize);
  }

 private:
  void Tell(ProgressEvent::State state, std::uint64_t done) {
    if (listener && !listener({state, name, size, done})) {
      throw container::Failure(container::ResultCode::Cancelled);
    }
  }

  const ProgressListener& listener;
  std::string name;
  std::uint64_t size = 0;
};

}  // namespace kozor::commands
