// Stub.cpp - embeds the program file that precedes the archive in a self-extracting file.
#include "engine/sfx/Stub.h"

#ifdef KOZOR_STUB_FILE

asm(R"(
  .pushsection .rodata
  .global kozorStubBegin
  .hidden kozorStubBegin
  .global kozorStubEnd
  .hidden kozorStubEnd
kozorStubBegin:
  .incbin ")" KOZOR_STUB_FILE R"("
kozorStubEnd:
  .popsection
)");

extern "C" const std::uint8_t kozorStubBegin[];
extern "C" const std::uint8_t kozorStubEnd[];

namespace kozor::sfx {

std::span<const std::uint8_t> Stub() {
  return {kozorStubBegin, kozorStubEnd};
}

}  // namespace kozor::sfx

#else  // There is no stub for this system.

namespace kozor::sfx {

std::span<const std::uint8_t> Stub() {
  return {};
}

}  // namespace kozor::sfx

#endif
