// ProgramEnd.h - the end of a program according to its own headers, where a self-extracting archive
// begins.
#pragma once

#include "engine/container/ByteSource.h"

namespace kozor::container {

// The offset after the program at the start of the source (MZ, PE, 64-bit ELF).  0 if it isn't one,
// if its end is unknown, or if nothing follows it.
std::uint64_t EndOfProgram(ByteSource& source);

}  // namespace kozor::container
