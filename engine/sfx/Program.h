// Program.h - the self-extracting program: a stub that stands in front of an archive in one file.
//
// It lists, tests or extracts the members of the archive that it finds behind itself.  Decoders,
// headers and names are the archiver's own sources, compiled a second time for small size.
#pragma once

#include <span>

namespace kozor::sfx {

// Runs with the words of the command line, the program's own name first.  Returns the exit status:
// 0 when all went well, 1 when anything failed, 2 for a command line that makes no sense.
int RunProgram(std::span<const char* const> words);

}  // namespace kozor::sfx
