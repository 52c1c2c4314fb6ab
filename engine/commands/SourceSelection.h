// SourceSelection.h - the files that an `a` line selects, and their names in the archive.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/commands/CommandLine.h"
#include "engine/container/Failure.h"

namespace kozor::commands {

enum class SourceKind {
  File,
  Directory,
  Link,  // the link itself, not its target; with -unix
};

struct Source {
  std::string path;
  std::string name;  // in the archive; a directory's ends in '\'
  SourceKind kind = SourceKind::File;
};

// Selects sources in the order of the command line.  A file named twice is returned once, the
// archive itself never, whether its file still exists or not.  So the result may be empty.
//
// A name that ends in a separator means only that directory, without its contents.
//
// The list of -with comes last.  In it the full path of a folder is the base directory of the names
// that follow.
//
// Text in quotes, or in a response file, is a name: one with a wild-card can't be opened.  Searches
// return such names for files that the code page can't express.
//
// Throws
//   ResultCode::NoFileName           no file is named
//   ResultCode::NotFound             a file, or a directory for -d1, doesn't exist
//   ResultCode::FileNotOpened        not a valid file name, or not accessible
//   ResultCode::UnknownKind          a directory without -d1, a file that is too large
//   ResultCode::NameTooLong
//   ResultCode::SameName             two files would get the same name
//   ResultCode::CannotRead           a directory cannot be listed
//   ResultCode::ResponseFileNotRead
std::vector<Source> SelectSources(const CommandLine& line);

// The code for a source that can't be opened, from GetLastError.
container::ResultCode SourceFailureCode();

}  // namespace kozor::commands
