// Memory.cpp - the heap, and the functions for blocks of memory that a C library would offer.
#include <bit>
#include <cstddef>
#include <cstdint>
#include <new>

#include "engine/sfx/Console.h"
#include "engine/sfx/linux/SystemCalls.h"

namespace {

// Without any initialised variable, the linker gives the zero-initialised ones an offset beyond the
// end of the file.  Programs that look for an archive after the program would then skip its
// beginning.
[[gnu::used, gnu::retain]] std::uint32_t initialised = 1;

using kozor::sfx::host::Map;

// A block begins with its size class, so that freeing needs no search.  Block sizes are powers of
// two; freed blocks are kept in one list per class.
constexpr std::size_t kHeadBytes = 16;
constexpr unsigned kSmallestClass = 6;
constexpr unsigned kClasses = 48;
constexpr std::size_t kPoolBytes = std::size_t{256} << 10;

struct Block {
  std::size_t sizeClass;
  Block* next;
};
static_assert(sizeof(Block) == kHeadBytes);

Block* freeBlocks[kClasses];
std::uint8_t* pool;
std::size_t poolLeft;

std::uint8_t* MapMemory(std::size_t bytes) {
  const long address = Map(bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1);
  if (address < 0) kozor::sfx::Die("not enough memory");
  return reinterpret_cast<std::uint8_t*>(address);
}

std::uint8_t* TakeFromPool(std::size_t bytes) {
  if (bytes >= kPoolBytes) return MapMemory(bytes);
  if (poolLeft < bytes) {
    pool = MapMemory(kPoolBytes);
    poolLeft = kPoolBytes;
  }
  poolLeft -= bytes;
  return pool + poolLeft;
}

void* Allocate(std::size_t bytes) {
  if (bytes > std::size_t{1} << (kClasses - 2)) kozor::sfx::Die("not enough memory");
  const auto wanted = static_cast<unsigned>(std::bit_width(bytes + kHeadBytes - 1));
  const unsigned sizeClass = wanted < kSmallestClass ? kSmallestClass : wanted;
  Block* block = freeBlocks[sizeClass];
  if (block != nullptr) {
    freeBlocks[sizeClass] = block->next;
  } else {
    block = reinterpret_cast<Block*>(TakeFromPool(std::size_t{1} << sizeClass));
    block->sizeClass = sizeClass;
  }
  return block + 1;
}

void Release(void* memory) {
  if (memory == nullptr) return;
  Block* block = static_cast<Block*>(memory) - 1;
  block->next = freeBlocks[block->sizeClass];
  freeBlocks[block->sizeClass] = block;
}

}  // namespace

void* operator new(std::size_t bytes) {
  return Allocate(bytes);
}
void operator delete(void* memory) noexcept {
  Release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  Release(memory);
}

// The compiler generates calls of these.  memmove copies backwards only if it has to.  In the loops
// an empty asm keeps the compiler from turning them into calls of the function that they are in.
extern "C" {

#if defined(__x86_64__)
// The string instructions are fast on long runs and small.
void* memcpy(void* to, const void* from, std::size_t count) {
  void* const result = to;
  asm volatile("rep movsb" : "+D"(to), "+S"(from), "+c"(count) : : "memory");
  return result;
}

void* memset(void* to, int value, std::size_t count) {
  void* const result = to;
  asm volatile("rep stosb" : "+D"(to), "+c"(count) : "a"(value) : "memory");
  return result;
}
#else
void* memcpy(void* to, const void* from, std::size_t count) {
  auto* target = static_cast<std::uint8_t*>(to);
  const auto* source = static_cast<const std::uint8_t*>(from);
  for (; count >= sizeof(std::uint64_t); count -= sizeof(std::uint64_t)) {
    std::uint64_t word;
    __builtin_memcpy(&word, source, sizeof word);
    __builtin_memcpy(target, &word, sizeof word);
    source += sizeof word;
    target += sizeof word;
    asm volatile("" : : : "memory");
  }
  for (; count != 0; --count) {
    *target++ = *source++;
    asm volatile("" : : : "memory");
  }
  return to;
}

void* memset(void* to, int value, std::size_t count) {
  for (auto* target = static_cast<std::uint8_t*>(to); count != 0; --count) {
    *target++ = static_cast<std::uint8_t>(value);
    asm volatile("" : : : "memory");
  }
  return to;
}
#endif

void* memmove(void* to, const void* from, std::size_t count) {
  auto* target = static_cast<std::uint8_t*>(to);
  const auto* source = static_cast<const std::uint8_t*>(from);
  if (target <= source || target >= source + count) return memcpy(to, from, count);
  while (count-- != 0) {
    target[count] = source[count];
    asm volatile("" : : : "memory");
  }
  return to;
}

int memcmp(const void* a, const void* b, std::size_t count) {
  const auto* left = static_cast<const std::uint8_t*>(a);
  const auto* right = static_cast<const std::uint8_t*>(b);
  for (; count != 0; --count, ++left, ++right) {
    if (*left != *right) return *left < *right ? -1 : 1;
  }
  return 0;
}

// Compilers call this for a memcmp that only tests for equality.
int bcmp(const void* a, const void* b, std::size_t count) {
  return memcmp(a, b, count);
}

void* memchr(const void* bytes, int value, std::size_t count) {
  const auto* next = static_cast<const std::uint8_t*>(bytes);
  for (; count != 0; --count, ++next) {
    if (*next == static_cast<std::uint8_t>(value)) return const_cast<std::uint8_t*>(next);
  }
  return nullptr;
}

std::size_t strlen(const char* text) {
  std::size_t length = 0;
  while (text[length] != '\0') {
    ++length;
    asm volatile("" : : : "memory");
  }
  return length;
}

}  // extern "C"
