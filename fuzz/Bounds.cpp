// Bounds.cpp - see Bounds.h.
#include "fuzz/Bounds.h"

#include <atomic>
#include <ctime>

#include "fuzz/Fuzz.h"

#if defined(__SANITIZE_ADDRESS__)
#define KOZOR_COUNTS_MEMORY
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KOZOR_COUNTS_MEMORY
#endif
#endif
#ifdef KOZOR_COUNTS_MEMORY
// Of the sanitizer's run-time library; gcc comes without the header.
extern "C" std::size_t __sanitizer_get_allocated_size(const volatile void* block);
extern "C" int __sanitizer_install_malloc_and_free_hooks(
    void (*allocated)(const volatile void* block, std::size_t bytes),
    void (*freed)(const volatile void* block));
#endif

namespace kozor::fuzz {
namespace {

constexpr std::int64_t kMostBytes = 64 << 20;
constexpr std::clock_t kMostTime = 10 * CLOCKS_PER_SEC;

std::atomic<std::int64_t> present = 0;
std::atomic<std::int64_t> peak = 0;

#ifdef KOZOR_COUNTS_MEMORY

void Allocated(const volatile void*, std::size_t bytes) {
  const auto added = static_cast<std::int64_t>(bytes);
  const std::int64_t now = present.fetch_add(added, std::memory_order_relaxed) + added;
  std::int64_t most = peak.load(std::memory_order_relaxed);
  while (most < now && !peak.compare_exchange_weak(most, now)) {
  }
}

void Freed(const volatile void* block) {
  if (block == nullptr) return;
  present -= static_cast<std::int64_t>(__sanitizer_get_allocated_size(block));
}

const int isCounting = __sanitizer_install_malloc_and_free_hooks(Allocated, Freed);

#endif

}  // namespace

void RunWithinBounds(std::span<const std::uint8_t> input) {
  const std::int64_t before = present;
  peak = before;
  const std::clock_t start = std::clock();
  TestInput(Input(input));
  Require(peak - before <= kMostBytes);
  Require(std::clock() - start <= kMostTime);
}

}  // namespace kozor::fuzz
