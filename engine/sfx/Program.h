// Program.h - the self-extracting program: a stub followed by an archive in one file.
//
// It lists, tests or extracts the members of that archive.  Decoders, headers and names are the
// archiver's own sources, compiled again for small size.
#pragma once

#include <span>

namespace kozor::sfx {

// Runs with the words of the command line, the program's own name first.  Returns the exit status:
// 0 for success, 1 if anything failed, 2 for an invalid command line.
int RunProgram(std::span<const char* const> words);

}  // namespace kozor::sfx
