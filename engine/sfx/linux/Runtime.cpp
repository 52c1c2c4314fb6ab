// Runtime.cpp - the parts of the C and C++ run-time libraries that the program needs.
//
// There are no exceptions: where the C++ library would throw, the program ends with a message.
// Objects with static storage must be constant or initialised on first use, and are never
// destroyed.
#include <bit>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <new>
#include <span>
#include <string_view>

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

// The compiler generates calls of these.  The string instructions are fast on long runs and small;
// memmove copies backwards only if it has to.
extern "C" {

void* memcpy(void* to, const void* from, std::size_t count) {
  void* const result = to;
  asm volatile("rep movsb" : "+D"(to), "+S"(from), "+c"(count) : : "memory");
  return result;
}

void* memmove(void* to, const void* from, std::size_t count) {
  auto* target = static_cast<std::uint8_t*>(to);
  const auto* source = static_cast<const std::uint8_t*>(from);
  if (target <= source || target >= source + count) return memcpy(to, from, count);
  while (count-- != 0) {
    target[count] = source[count];
    asm volatile("" : : : "memory");  // keeps the compiler from turning this into a call of memmove
  }
  return to;
}

void* memset(void* to, int value, std::size_t count) {
  void* const result = to;
  asm volatile("rep stosb" : "+D"(to), "+c"(count) : "a"(value) : "memory");
  return result;
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
    asm volatile("" : : : "memory");  // as above, for strlen
  }
  return length;
}

void abort() {
  kozor::sfx::Die("this should never happen");
}

[[noreturn]] void __cxa_pure_virtual() {
  abort();
}

// Registers destructors for the end of the program, which are never run.
void* __dso_handle = nullptr;
int __cxa_atexit(void (*)(void*), void*, void*) {
  return 0;
}
}

namespace std {

// The containers call these for an invalid size or position.
void __throw_length_error(const char*) {
  kozor::sfx::Die("not enough memory");
}
void __throw_bad_alloc() {
  kozor::sfx::Die("not enough memory");
}
void __throw_bad_array_new_length() {
  kozor::sfx::Die("not enough memory");
}
void __throw_logic_error(const char*) {
  abort();
}
void __throw_out_of_range_fmt(const char*, ...) {
  abort();
}
void __throw_bad_function_call() {
  abort();
}

}  // namespace std
