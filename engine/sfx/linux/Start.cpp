// Start.cpp - the entry point of the program.
#include <cstdint>

#include "engine/sfx/Program.h"
#include "engine/sfx/linux/SystemCalls.h"

// The kernel leaves the number of arguments at the top of the stack, followed by pointers to them
// and a null.
asm(R"(
  .text
  .globl _start
  .type _start, @function
_start:
  xor %ebp, %ebp
  mov %rsp, %rdi
  and $-16, %rsp
  call kozorStart
)");

extern "C" [[noreturn, gnu::used]] void kozorStart(const std::uintptr_t* stack) {
  const auto count = static_cast<std::size_t>(stack[0]);
  const auto* words = reinterpret_cast<const char* const*>(stack + 1);
  kozor::sfx::host::Exit(kozor::sfx::RunProgram({words, count}));
}
