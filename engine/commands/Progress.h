// Progress.h - the progress reports of a command, through which the caller can stop it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "engine/container/Failure.h"

namespace kozor::commands {

// The most bytes between two reports.
inline constexpr std::size_t kProgressStep = 256 << 10;

struct ProgressEvent {
  enum class State { FileBegins, UnderWay, FileEnds };
  State state;
  std::string_view name;  // in the working code page; valid during the call
  std::uint64_t size;     // of the file, in bytes
  std::uint64_t done;
};

// Returns false to stop the command.  May be empty.
using ProgressListener = std::function<bool(const ProgressEvent&)>;

// Reports one file after the other.  Every report throws ResultCode::Cancelled if the listener asks
// to stop.
class Progress {
 public:
  explicit Progress(const ProgressListener& told) : listener(told) {}

  // Also reports 0 bytes done.
  void Begin(std::string_view fileName, std::uint64_t fileSize) {
    name = fileName;
    size = fileSize;
    Tell(ProgressEvent::State::FileBegins, 0);
    Report(0);
  }

  void Report(std::uint64_t done) { Tell(ProgressEvent::State::UnderWay, done); }

  // `finalSize` is the number of bytes actually read, which may differ from the size given at
  // first.
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
