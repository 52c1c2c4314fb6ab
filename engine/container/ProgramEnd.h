// ProgramEnd.h - where a program ends by what its own headers say.  A self-extracting archive
// begins there.
#pragma once

#include "engine/container/ByteSource.h"

namespace kozor::container {

// The offset behind the program that the source begins with (MZ, PE, 64-bit ELF); 0 when it is
// none, does not say, or when nothing stands behind it.
std::uint64_t EndOfProgram(ByteSource& source);

}  // namespace kozor::container
