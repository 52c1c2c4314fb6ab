// VolumeFollower.cpp - see VolumeFollower.h.
#include "VolumeFollower.h"

#include <algorithm>
#include <condition_variable>
#include <fstream>
#include <mutex>
#include <system_error>
#include <utility>

#include "Console.h"
#include "Failure.h"
#include "Host.h"

namespace kozor::program {

namespace fs = std::filesystem;

// What the writer's thread tells the scanner's.
struct VolumeFollower::Growth {
  std::mutex mutex;
  std::condition_variable changed;
  bool isComplete = false;
  bool isGivenUp = false;
};

// The size is read from the file, since the library doesn't tell how much it has written.
class VolumeFollower::GrowingVolume final : public VolumeBytes {
 public:
  GrowingVolume(fs::path volumePath, std::shared_ptr<Growth> growing)
      : path(std::move(volumePath)), growth(std::move(growing)) {
    file.rdbuf()->pubsetbuf(nullptr, 0);  // the reader has a buffer
    file.open(CallPath(path), std::ios::binary);
  }

  bool IsOpen() const { return file.is_open(); }

  // Waits for more than is wanted: two threads that wait for each other at every file would be
  // slower than one.
  std::uint64_t Await(std::uint64_t wanted) override {
    constexpr std::uint64_t kLeastStep = 1 << 20;
    if (wanted <= size) return size;
    const std::uint64_t enough = std::max(wanted, size + kLeastStep);
    std::unique_lock lock(growth->mutex);
    growth->changed.wait(lock, [&] {
      if (growth->isGivenUp) throw Interrupted();
      // The last size is read after the end is known.
      const bool isComplete = growth->isComplete;
      const auto version = VersionOf(path);
      if (!version) throw Failure(Visible(Shown(path)) + ": can't read");
      size = version->size;
      return isComplete || size >= enough;
    });
    return size;
  }

  void Read(std::uint64_t offset, std::span<unsigned char> target) override {
    file.clear();
    file.seekg(static_cast<std::streamoff>(offset));
    file.read(reinterpret_cast<char*>(target.data()), static_cast<std::streamsize>(target.size()));
    if (!file) throw Failure(Visible(path.string()) + ": can't read");
  }

 private:
  const fs::path path;
  const std::shared_ptr<Growth> growth;
  std::ifstream file;
  std::uint64_t size = 0;
};

std::unique_ptr<VolumeFollower> VolumeFollower::Start(SetScanner& scanner, const fs::path& path) {
  auto growth = std::make_shared<Growth>();
  auto volume = std::make_unique<GrowingVolume>(path, growth);
  if (!volume->IsOpen()) return nullptr;
  try {
    return std::unique_ptr<VolumeFollower>(
        new VolumeFollower(scanner, path, std::move(volume), std::move(growth)));
  } catch (const std::system_error&) {  // no further thread is allowed
    return nullptr;
  }
}

VolumeFollower::VolumeFollower(SetScanner& scanner, const fs::path& path,
                               std::unique_ptr<GrowingVolume> volume,
                               std::shared_ptr<Growth> growing)
    : growth(std::move(growing)),
      scan(std::async(std::launch::async, [&scanner, path, bytes = std::move(volume)]() mutable {
        VolumeReader reader(path, std::move(bytes));
        scanner.Scan(path, reader);
      })) {}

VolumeFollower::~VolumeFollower() {
  End(true);
}

// A notice for each file would wake the scanner in vain.
void VolumeFollower::NoteProgress() {
  constexpr unsigned kNoticesPerWakeUp = 64;
  if (++notices % kNoticesPerWakeUp == 0) growth->changed.notify_one();
}

void VolumeFollower::Finish() {
  End(false);
  scan.get();
}

void VolumeFollower::End(bool isGivenUp) {
  {
    const std::lock_guard lock(growth->mutex);
    growth->isComplete = true;
    growth->isGivenUp = isGivenUp;
  }
  growth->changed.notify_one();
  if (scan.valid()) scan.wait();
}

}  // namespace kozor::program
