// CodecBench.cpp - measures packing, unpacking and checksums.
//
// Bytes per second count original bytes.  Packing also reports `ratio`, packed size by original
// size.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <utility>
#include <vector>

#include "engine/codec/Codec.h"
#include "tests/codec/SampleData.h"

namespace kozor::codec {
namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

std::vector<Bytes> ReadFolder(const fs::path& folder) {
  std::vector<Bytes> files;
  for (const auto& entry : fs::directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    std::ifstream file(entry.path(), std::ios::binary);
    files.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }
  return files;
}

// The files in the folder named by KOZOR_CORPUS, else generated data.
const std::vector<Bytes>& Corpus() {
  static const std::vector<Bytes> corpus = [] {
    const char* folder = std::getenv("KOZOR_CORPUS");
    if (folder) return ReadFolder(folder);
    return std::vector<Bytes>{TextData(4 << 20), MixedData(4 << 20)};
  }();
  return corpus;
}

std::size_t TotalSize(const std::vector<Bytes>& files) {
  std::size_t total = 0;
  for (const Bytes& file : files) total += file.size();
  return total;
}

void CountBytes(benchmark::State& state, std::size_t perIteration) {
  state.SetBytesProcessed(static_cast<std::int64_t>(perIteration) *
                          static_cast<std::int64_t>(state.iterations()));
}

void BM_Encode(benchmark::State& state, Method method, int level) {
  std::size_t packedSize = 0;
  for (auto _ : state) {
    packedSize = 0;
    for (const Bytes& file : Corpus()) packedSize += Encode(method, file, level).size();
  }
  const std::size_t size = TotalSize(Corpus());
  CountBytes(state, size);
  state.counters["ratio"] = static_cast<double>(packedSize) / static_cast<double>(size);
}

void BM_Decode(benchmark::State& state, Method method) {
  std::vector<std::pair<Bytes, Bytes>> jobs;  // packed data and target
  for (const Bytes& file : Corpus()) jobs.emplace_back(Encode(method, file), Bytes(file.size()));
  for (auto _ : state) {
    for (auto& [packed, target] : jobs) {
      if (Decode(method, packed, target) != Status::Ok) state.SkipWithError("does not decode");
    }
  }
  CountBytes(state, TotalSize(Corpus()));
}

// Many small members in sequence, as in an archive of source files.
void BM_EncodeSmallMembers(benchmark::State& state) {
  constexpr int kMembers = 1000;
  const auto memberSize = static_cast<std::size_t>(state.range(0));
  const Bytes data = TextData(kMembers + memberSize);
  Encoder encoder(Method::Lh5);
  Bytes packed;
  for (auto _ : state) {
    for (std::size_t i = 0; i < std::size_t{kMembers}; ++i) {
      packed.clear();
      encoder.Append(std::span(data).subspan(i, memberSize), packed);
      encoder.Finish(packed);
    }
  }
  state.SetItemsProcessed(kMembers * state.iterations());
}

void BM_Crc16(benchmark::State& state) {
  const Bytes data = RandomData(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(Crc16(data));
  CountBytes(state, data.size());
}

#define ENCODE(method, level)                                                 \
  BENCHMARK_CAPTURE(BM_Encode, method##_level_##level, Method::method, level) \
      ->Unit(benchmark::kMillisecond)
#define DECODE(method) \
  BENCHMARK_CAPTURE(BM_Decode, method, Method::method)->Unit(benchmark::kMillisecond)

ENCODE(Lh4, 5);
ENCODE(Lh5, 1);
ENCODE(Lh5, 2);
ENCODE(Lh5, 3);
ENCODE(Lh5, 4);
ENCODE(Lh5, 5);
ENCODE(Lh5, 6);
ENCODE(Lh5, 7);
ENCODE(Lh5, 8);
ENCODE(Lh5, 9);
ENCODE(Lh6, 5);
ENCODE(Lh7, 1);
ENCODE(Lh7, 5);
ENCODE(Lh7, 7);
ENCODE(Lh7, 9);
DECODE(Lh1);
DECODE(Lh4);
DECODE(Lh5);
DECODE(Lh6);
DECODE(Lh7);
BENCHMARK(BM_EncodeSmallMembers)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Crc16)->Arg(64)->Arg(1 << 16)->Arg(16 << 20);

}  // namespace
}  // namespace kozor::codec
