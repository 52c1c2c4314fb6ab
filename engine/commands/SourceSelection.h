// SourceSelection.h - which files an `a` line means, and under which names they are stored.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/commands/CommandLine.h"
#include "engine/container/Failure.h"

namespace kozor::commands {

struct Source {
  std::string path;
  std::string name;  // in the archive; a directory's ends in '\'
  bool isDirectory = false;
};

// In the order of the line.  A file that is given twice comes once, and the archive itself not at
// all, whether its file is still there or not.  So the result may be empty.
//
// A name in quotes, or in a response file, is a name: with a wild-card in it, it names a file that
// cannot be opened.  Searches give such names to files that the code page cannot express.
//
// Throws
//   ResultCode::NoFileName           the line names no file
//   ResultCode::NotFound             a file, or a directory for -d1, is not there
//   ResultCode::FileNotOpened        no file can have the name
//   ResultCode::UnknownKind          a directory without -d1, a file that is too large
//   ResultCode::NameTooLong
//   ResultCode::SameName             two files would get one name
//   ResultCode::CannotRead           a directory cannot be listed
//   ResultCode::ResponseFileNotRead
std::vector<Source> SelectSources(const CommandLine& line);

// The code for a source that cannot be opened, by GetLastError.
container::ResultCode SourceFailureCode();

}  // namespace kozor::commands
