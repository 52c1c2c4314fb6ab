// Start.cpp - the entry point of the program.
#include <cstdint>

#include "engine/sfx/Program.h"
#include "engine/sfx/System.h"

// The kernel leaves the number of arguments at the top of the stack, followed by pointers to them
// and a null.
#if defined(__x86_64__)
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
#elif defined(__aarch64__)
asm(R"(
  .text
  .globl _start
  .type _start, %function
_start:
  mov x29, #0
  mov x30, #0
  mov x0, sp
  bl kozorStart
)");
#endif

extern "C" [[noreturn, gnu::used]] void kozorStart(const std::uintptr_t* stack) {
  const auto count = static_cast<std::size_t>(stack[0]);
  const auto* words = reinterpret_cast<const char* const*>(stack + 1);
  kozor::sfx::host::Exit(kozor::sfx::RunProgram({words, count}));
}
