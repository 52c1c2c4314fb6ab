// Stub.cpp - embeds the program files.  The build lists them in StubTable.h, as rows
// KOZOR_STUB(identifier, system, suffix, file).
#include "engine/sfx/Stub.h"

#include <iterator>

#define KOZOR_TEXT_OF(text) #text
#define KOZOR_TEXT(macro) KOZOR_TEXT_OF(macro)
#define KOZOR_SYMBOL(name) KOZOR_TEXT(__USER_LABEL_PREFIX__) "kozorStub" name

#ifdef _WIN32
#define KOZOR_READ_ONLY ".section .rdata,\"dr\"\n"
#define KOZOR_HIDDEN(name)
#else
#define KOZOR_READ_ONLY ".section .rodata\n"
#define KOZOR_HIDDEN(name) ".hidden " KOZOR_SYMBOL(name) "\n"
#endif

#define KOZOR_LABEL(name) \
  ".global " KOZOR_SYMBOL(name) "\n" KOZOR_HIDDEN(name) KOZOR_SYMBOL(name) ":\n"

#define KOZOR_STUB(identifier, system, suffix, file)                                          \
  asm(KOZOR_READ_ONLY KOZOR_LABEL("Begin_" #identifier) ".incbin \"" file "\"\n" KOZOR_LABEL( \
      "End_" #identifier) ".text\n");                                                         \
  extern "C" const std::uint8_t kozorStubBegin_##identifier[];                                \
  extern "C" const std::uint8_t kozorStubEnd_##identifier[];
#include "engine/sfx/StubTable.h"
#undef KOZOR_STUB

namespace kozor::sfx {
namespace {

#define KOZOR_STUB(identifier, system, suffix, file) \
  {system, suffix, {kozorStubBegin_##identifier, kozorStubEnd_##identifier}},
const Stub kStubs[] = {
#include "engine/sfx/StubTable.h"
    {}};

}  // namespace

const Stub* FindStub(std::string_view system) {
  if (system.empty()) system = KOZOR_OWN_SYSTEM;
  for (const Stub& stub : kStubs) {
    if (!stub.program.empty() && stub.system == system) return &stub;
  }
  return nullptr;
}

}  // namespace kozor::sfx
