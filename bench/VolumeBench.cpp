// VolumeBench.cpp - backs up and restores one large file and many small ones, compared with the
// system's own tools.
//
// A backup flushes every write to the medium, so it is compared with dd, which does the same with
// blocks of the same size; restore is compared with cp.  TMPDIR selects the disk: run it once on a
// real one and once in memory.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>

#include "ZorMultiVolume.h"
#include "tests/support/TestFolder.h"

namespace {

using kozor::test::TestFolder;

constexpr std::size_t kLargeBytes = 64U << 20;
constexpr int kSmallFiles = 10'000;
constexpr std::size_t kSmallBytes = 1'000;

class Volumes : public ZorMultiVolume {
 protected:
  int OnAbort(const ONABORTPARAM& param) override { return param.volumeResult; }
  unsigned long OnQueryDiskSpace(const char*) override { return 0xFFFFFFFF; }
};

// The bytes to work on: "source/0", or "source/0" to "source/9999".
struct Work {
  explicit Work(bool large) : bytes(large ? kLargeBytes : kSmallFiles * kSmallBytes) {
    const int files = large ? 1 : kSmallFiles;
    const std::size_t fileBytes = large ? kLargeBytes : kSmallBytes;
    for (int i = 0; i < files; ++i) {
      folder.WriteFile("source/" + std::to_string(i),
                       kozor::test::RandomBytes(fileBytes, static_cast<std::uint32_t>(i)));
    }
  }
  int Backup() {
    ZorFind find;
    find.SetCurrentDirectoryA(folder.Lib("source").c_str());
    find.AddTail("*.*");
    return volumes.Backup(find, folder.Lib("volume").c_str());
  }
  int Restore() {
    return volumes.Restore(folder.Lib("volume").c_str(), folder.Lib("target").c_str());
  }
  int Shell(const std::string& command) const {
    return kozor::test::RunCommand("cd " + folder.Path().string() + " && " + command).status;
  }

  TestFolder folder;
  Volumes volumes;
  std::size_t bytes;
};

// Each iteration starts without the previous output; removing that isn't timed.  `act` returns
// `success` unless it failed.
template <typename Act>
void Measure(benchmark::State& state, Work& work, int success, Act act,
             const std::string& leftOver = "") {
  for (auto _ : state) {
    state.PauseTiming();
    work.Shell("rm -rf target out" + leftOver);
    state.ResumeTiming();
    if (act() != success) {
      state.SkipWithError("failed");
      return;
    }
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(work.bytes));
}

void Backup(benchmark::State& state, bool large) {
  Work work(large);
  Measure(
      state, work, 1, [&] { return work.Backup(); }, " volume");
}

void Restore(benchmark::State& state, bool large) {
  Work work(large);
  work.Backup();
  Measure(state, work, 1, [&] { return work.Restore(); });
}

void Tool(benchmark::State& state, bool large, const std::string& command) {
  Work work(large);
  Measure(state, work, 0, [&] { return work.Shell(command); });
}

constexpr char kCopyBlocks[] =
    "cat source/* | dd of=out bs=64k iflag=fullblock oflag=dsync status=none";

#define BENCH(...) BENCHMARK_CAPTURE(__VA_ARGS__)->UseRealTime()->Unit(benchmark::kMillisecond)
BENCH(Backup, one_file_of_64_MiB, true);
BENCH(Tool, dd_dsync_of_64_MiB, true, "dd if=source/0 of=out bs=64k oflag=dsync status=none");
BENCH(Tool, cp_of_64_MiB, true, "cp source/0 out");
BENCH(Restore, one_file_of_64_MiB, true);
BENCH(Backup, ten_thousand_files, false);
BENCH(Tool, dd_dsync_of_ten_thousand_files, false, kCopyBlocks);
BENCH(Tool, cp_of_ten_thousand_files, false, "cp -r source out");
BENCH(Restore, ten_thousand_files, false);
#undef BENCH

}  // namespace
