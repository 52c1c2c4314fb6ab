// SourceSelection.h - which files an `a` line means, and under which names they are stored.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "engine/commands/CommandLine.h"

namespace kozor::commands {

struct Source {
  std::string root;  // base directory, drive or share in front of the name as it was given
  std::string path;  // of the file
  std::string name;  // in the archive; a directory's ends in '\'
  bool isDirectory = false;
};

// In the order of the line.  A file that is given twice comes once.  Throws ResultCode::NoFileName
// when the line names no file, ResultCode::FileNotOpened for a name that no file has or can have,
// ResultCode::UnknownKind for a directory (without -d1) and for files of 4 GiB and more,
// ResultCode::NameTooLong, ResultCode::SameName when two files would get one name,
// ResultCode::NotFound when a directory for -d1 is not there, ResultCode::ResponseFileNotRead.
std::vector<Source> SelectSources(const CommandLine& line);

// Whether `path` names a file of its own, and not the one that `source` names.
bool IsAnotherFile(const std::string& path, const Source& source);

}  // namespace kozor::commands
